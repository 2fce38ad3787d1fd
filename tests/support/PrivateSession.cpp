// SPDX-License-Identifier: MIT
#include "tests/support/PrivateSession.h"

#include "tests/support/PrivateBus.h"

#include <set>

namespace vantle::desktop {

namespace fs = std::filesystem;

PrivateSession::PrivateSession(std::optional<uid_t> user, const Environment& added)
    : m_user(user), m_folder(user) {
  makeFolders();
  for (const auto& [name, value] : added) m_environment[name] = value;
}

PrivateSession::~PrivateSession() { endAll(); }

void PrivateSession::endAll() {
  std::set<Pid> roots;
  for (const auto& program : m_programs) roots.insert(program->pid());
  endProcessesOf(roots, m_marker);
}

void PrivateSession::makeFolders() {
  for (const char* name : {"home/.local/share/applications", "home/.local/state", "home/.config",
                           "home/.cache", "run", "log", "tmp"}) {
    m_folder.folder(name);
  }
  m_marker = "VANTLE_TEST_DESKTOP=" + m_folder.path().string();
  m_environment = {{"PATH", "/usr/local/bin:/usr/bin:/bin:/usr/games"},
                   {"LANG", "C.UTF-8"},
                   {"HOME", home()},
                   {"USER", "tester"},
                   {"SHELL", "/bin/sh"},
                   {"TMPDIR", m_folder.path() / "tmp"},
                   {"XDG_DATA_HOME", dataHome()},
                   {"XDG_CONFIG_HOME", configHome()},
                   {"XDG_STATE_HOME", home() / ".local/state"},
                   {"XDG_CACHE_HOME", home() / ".cache"},
                   {"XDG_RUNTIME_DIR", m_folder.path() / "run"},
                   {"XDG_DATA_DIRS", "/usr/local/share:/usr/share"},
                   {"XDG_CONFIG_DIRS", "/etc/xdg"},
                   {"GSETTINGS_BACKEND", "memory"},
                   {"GTK_A11Y", "none"},
                   {"NO_AT_BRIDGE", "1"},
                   {"LIBGL_ALWAYS_SOFTWARE", "1"},
                   {"SDL_AUDIODRIVER", "dummy"},
                   {"VANTLE_TEST_DESKTOP", m_folder.path()}};
}

Start PrivateSession::startOf(std::vector<std::string> command, const Environment& added) {
  Start start;
  const std::string name = fs::path(command.at(0)).filename().string();
  start.output = logs() / (std::to_string(m_programs.size()) + "-" + name + ".log");
  start.command = std::move(command);
  start.environment = m_environment;
  for (const auto& [variable, value] : added) start.environment[variable] = value;
  start.workingFolder = home();
  start.user = m_user;
  return start;
}

Program& PrivateSession::started(const Start& start) {
  return *m_programs.emplace_back(std::make_unique<Program>(start));
}

Program& PrivateSession::launch(std::vector<std::string> command, const Environment& added) {
  return started(startOf(std::move(command), added));
}

Program& PrivateSession::launchAs(std::optional<uid_t> user, std::vector<std::string> command,
                                  const Environment& added) {
  Start start = startOf(std::move(command), added);
  start.user = user;
  if (user != m_user) start.workingFolder = "/";
  return started(start);
}

bool PrivateSession::run(std::vector<std::string> command) {
  return launch(std::move(command)).exitStatus() == 0;
}

bool PrivateSession::callApplication(const std::string& method, std::vector<std::string> arguments) {
  const std::vector<std::string> tool{"gdbus",
                                      "call",
                                      "--session",
                                      "--dest",
                                      "com.halvo.vantle",
                                      "--object-path",
                                      "/com/halvo/vantle",
                                      "--method",
                                      "org.freedesktop.Application." + method};
  arguments.insert(arguments.begin(), tool.begin(), tool.end());
  return run(std::move(arguments));
}

fs::path PrivateSession::installDesktopFile(const std::string& id, const std::string& text) const {
  return m_folder.write(fs::path("home/.local/share/applications") / (id + ".desktop"), text);
}

Program& PrivateSession::startSessionBus() {
  const fs::path socket = runtimeDir() / "bus";
  m_sessionBus = &launch(busDaemon(m_folder, socket));
  require("the session bus", [&] { return isServed(socket); });
  m_busAddress = "unix:path=" + socket.string();
  m_environment["DBUS_SESSION_BUS_ADDRESS"] = m_busAddress;
  return *m_sessionBus;
}

bool PrivateSession::hasBusName(const std::string& name) {
  return run({"dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/",
              "org.freedesktop.DBus.GetNameOwner", "string:" + name});
}

void PrivateSession::waitForBusName(const std::string& name) {
  require(name.c_str(), [&] { return hasBusName(name); });
}

bool PrivateSession::takePicture(std::vector<std::string> tool, const fs::path& png) {
  // The picture may be wanted outside the desktop's own folders.
  const fs::path taken = m_folder.path() / "tmp/screenshot.png";
  tool.push_back(taken.string());
  if (!run(std::move(tool))) return false;
  std::error_code error;
  fs::create_directories(png.parent_path(), error);
  return fs::copy_file(taken, png, fs::copy_options::overwrite_existing, error);
}

} // namespace vantle::desktop
