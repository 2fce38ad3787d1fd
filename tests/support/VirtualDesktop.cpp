// SPDX-License-Identifier: MIT
#include "tests/support/VirtualDesktop.h"

#include "tests/support/PrivateBus.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

namespace vantle::desktop {

namespace fs = std::filesystem;

namespace {

class Pipe {
 public:
  Pipe() {
    if (::pipe2(m_ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  }
  ~Pipe() {
    ::close(m_ends[0]);
    closeWriter();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  int reader() const { return m_ends[0]; }
  int writer() const { return m_ends[1]; }
  // So that the end of the one other writer is noticed.
  void closeWriter() {
    if (m_ends[1] >= 0) ::close(m_ends[1]);
    m_ends[1] = -1;
  }

 private:
  std::array<int, 2> m_ends{-1, -1};
};

} // namespace

VirtualDesktop::VirtualDesktop(Options options) : m_user(options.user), m_folder(options.user) {
  makeFolders();
  for (const auto& [name, value] : options.environment) m_environment[name] = value;
  try {
    startXServer(options.screen);
    if (options.sessionBus) startSessionBus();
    m_windows = std::make_unique<XWindows>(m_display);
    if (options.windowManager) startWindowManager();
  } catch (...) {
    endProcessesOf({}, m_marker);
    throw;
  }
}

VirtualDesktop::~VirtualDesktop() {
  std::set<Pid> roots;
  for (const auto& program : m_programs) roots.insert(program->pid());
  endProcessesOf(roots, m_marker);
}

void VirtualDesktop::makeFolders() {
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
                   {"XDG_RUNTIME_DIR", runtimeDir()},
                   {"XDG_DATA_DIRS", "/usr/local/share:/usr/share"},
                   {"XDG_CONFIG_DIRS", "/etc/xdg"},
                   {"XDG_SESSION_TYPE", "x11"},
                   {"GSETTINGS_BACKEND", "memory"},
                   {"GTK_A11Y", "none"},
                   {"NO_AT_BRIDGE", "1"},
                   {"LIBGL_ALWAYS_SOFTWARE", "1"},
                   {"SDL_AUDIODRIVER", "dummy"},
                   {"VANTLE_TEST_DESKTOP", m_folder.path()}};
}

Start VirtualDesktop::startOf(std::vector<std::string> command, const Environment& added) {
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

Program& VirtualDesktop::started(const Start& start) {
  return *m_programs.emplace_back(std::make_unique<Program>(start));
}

Program& VirtualDesktop::launch(std::vector<std::string> command, const Environment& added) {
  return started(startOf(std::move(command), added));
}

Program& VirtualDesktop::launchAs(std::optional<uid_t> user, std::vector<std::string> command,
                                  const Environment& added) {
  Start start = startOf(std::move(command), added);
  start.user = user;
  if (user != m_user) start.workingFolder = "/";
  return started(start);
}

bool VirtualDesktop::run(std::vector<std::string> command) {
  return launch(std::move(command)).exitStatus() == 0;
}

fs::path VirtualDesktop::installDesktopFile(const std::string& id, const std::string& text) const {
  return m_folder.write(fs::path("home/.local/share/applications") / (id + ".desktop"), text);
}

std::string VirtualDesktop::readLine(int descriptor, const char* what) {
  std::string line;
  pollfd waiting{descriptor, POLLIN, 0};
  const int limit = static_cast<int>(std::chrono::milliseconds(guardLimit).count());
  while (::poll(&waiting, 1, limit) == 1) {
    char letter = 0;
    if (::read(descriptor, &letter, 1) != 1) break;
    if (letter == '\n') return line;
    line += letter;
  }
  throw std::runtime_error(std::string(what) + " did not come up");
}

void VirtualDesktop::startXServer(const std::string& screen) {
  Pipe pipe;
  Start start = startOf({"Xvfb", "-displayfd", std::to_string(pipe.writer()), "-screen", "0", screen,
                         "-nolisten", "tcp", "-noreset", "-ac", "+extension", "GLX"},
                        {});
  start.keptDescriptors = {pipe.writer()};
  m_xServer = &started(start);
  pipe.closeWriter();
  m_display = ":" + readLine(pipe.reader(), "the X server");
  m_environment["DISPLAY"] = m_display;
}

Program& VirtualDesktop::startSessionBus() {
  const fs::path socket = runtimeDir() / "bus";
  m_sessionBus = &launch(busDaemon(m_folder, socket));
  require("the session bus", [&] { return isServed(socket); });
  m_busAddress = "unix:path=" + socket.string();
  m_environment["DBUS_SESSION_BUS_ADDRESS"] = m_busAddress;
  return *m_sessionBus;
}

Program& VirtualDesktop::startWindowManager() {
  m_windowManager = &launch({"openbox", "--sm-disable"});
  require("the window manager", [this] { return m_windows->hasWindowManager(); });
  return *m_windowManager;
}

bool VirtualDesktop::hasBusName(const std::string& name) {
  return run({"dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/",
              "org.freedesktop.DBus.GetNameOwner", "string:" + name});
}

void VirtualDesktop::waitForBusName(const std::string& name) {
  require(name.c_str(), [&] { return hasBusName(name); });
}

XWindows::Window VirtualDesktop::waitForWindow(Pid pid) {
  std::vector<XWindows::Window> found;
  require("a window", [&] { return !(found = m_windows->ofProcess(pid)).empty(); });
  return found.front();
}

XWindows::Window VirtualDesktop::waitForWindowTitled(const std::string& part) {
  XWindows::Window found;
  require(part.c_str(), [&] {
    for (const XWindows::Window& window : m_windows->list()) {
      if (window.title.find(part) == std::string::npos) continue;
      found = window;
      return true;
    }
    return false;
  });
  return found;
}

void VirtualDesktop::activate(std::uint32_t window) {
  // Somebody else may ask for the front at the same moment and win it; whoever wants it asks again.
  require("a window in front", [&] {
    m_windows->activate(window);
    return waitUntil([&] { return m_windows->active() == window; }, std::chrono::seconds(1));
  });
}

bool VirtualDesktop::screenshot(const fs::path& png) {
  // The picture may be wanted outside the desktop's own folders.
  const fs::path taken = m_folder.path() / "tmp/screenshot.png";
  if (!run({"import", "-silent", "-window", "root", taken.string()})) return false;
  std::error_code error;
  fs::create_directories(png.parent_path(), error);
  return fs::copy_file(taken, png, fs::copy_options::overwrite_existing, error);
}

} // namespace vantle::desktop
