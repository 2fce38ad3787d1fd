// SPDX-License-Identifier: MIT
#include "tests/realapps/Stage.h"

#include "tests/support/Kernel.h"
#include "tests/support/Props.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace vantle::realapps {

namespace {

namespace fs = std::filesystem;
using desktop::require;

constexpr const char* busName = "com.halvo.vantle";
constexpr const char* ownGame = "org.example.StageGame";

std::string contents(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string quoted(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) {
    line += line.empty() ? "" : " ";
    const bool isPlain = word.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                                "0123456789_-./:=,+") == std::string::npos;
    line += isPlain && !word.empty() ? word : "'" + word + "'";
  }
  return line;
}

// "@HOME@" in a command is the stage's own home, which has another name each time.
std::vector<std::string> placed(std::vector<std::string> words, const std::string& home) {
  constexpr std::string_view mark = "@HOME@";
  for (std::string& word : words)
    if (const std::size_t at = word.find(mark); at != std::string::npos) word.replace(at, mark.size(), home);
  return words;
}

std::string inXml(const std::string& text) {
  std::string written;
  for (const char letter : text) {
    if (letter == '&')
      written += "&amp;";
    else if (letter == '<')
      written += "&lt;";
    else
      written += letter;
  }
  return written;
}

// Its place among the control groups.
std::string placeOf(Pid pid) {
  const std::string text = test::procText(pid, "cgroup");
  return text.starts_with("0::") ? text.substr(3, text.find('\n') - 3) : std::string();
}

std::string nameInKernel(const std::string& program) {
  constexpr std::size_t longest = 15;
  return program.substr(0, longest);
}

} // namespace

UnitState unitState(Pid pid) {
  UnitState state;
  bool isInnermost = true;
  for (std::string place = placeOf(pid); place.size() > 1; place.resize(place.rfind('/'))) {
    const std::string folder = "/sys/fs/cgroup" + place;
    if (contents(folder + "/cpu.idle") == "1\n") state.isIdle = true;
    const std::string weight = contents(folder + "/cpu.weight"); // none while nobody has one
    if (std::exchange(isInnermost, false) && !weight.empty())
      state.weight = weight.substr(0, weight.find('\n'));
  }
  return state;
}

desktop::VirtualDesktop::Options Stage::options(Surroundings surroundings) {
  desktop::VirtualDesktop::Options options;
  options.windowManager = false; // its menu is written first
  if (surroundings == Surroundings::none) return options;
  options.sessionBus = false;
  for (const char* name : {"XDG_RUNTIME_DIR", "DBUS_SESSION_BUS_ADDRESS"}) {
    const char* const value = std::getenv(name);
    options.environment[name] = value == nullptr ? "" : value;
  }
  return options;
}

Stage::Stage(const Program& program, const fs::path& vantle, Way way, Surroundings surroundings)
    : m_way(way), m_surroundings(surroundings), m_desktop(options(surroundings)), m_program(vantle),
      m_command(placed(program.command, m_desktop.home().string())) {
  // What the session's bus and manager start belongs on this display.
  if (surroundings == Surroundings::userManager) {
    if (!program.service.empty()) m_activated = nameInKernel(program.service.front());
    m_desktop.run({"dbus-update-activation-environment", "--systemd", "--all"});
  }
  // Java takes the home of the account, whatever the environment says.
  m_desktop.setEnvironment("JAVA_TOOL_OPTIONS", "-Duser.home=" + m_desktop.home().string());
  if (program.isHeard) m_sound.emplace(m_desktop);
  if (program.prepare) program.prepare(m_desktop);
  m_desktop.installDesktopFile(ownGame, "[Desktop Entry]\nType=Application\nName=Stage game\nExec=true\n"
                                        "StartupWMClass=StageGame\n");
  writeMenu();
  m_desktop.startWindowManager();
  m_witness = &launch("witness", {"xterm", "-class", "Witness", "-geometry", "30x4-0-0", "-e", "/bin/sh",
                                  "-c", "sleep 100000; true"});
  m_desktop.waitForWindow(m_witness->pid());
  require("its child", [this] { return desktop::processesOf({m_witness->pid()}).size() == 3; });
  m_furniture = processes();
  if (program.beside) program.beside(m_desktop);
}

desktop::Program& Stage::launch(const std::string& id, std::vector<std::string> command) {
  if (isUnit(m_way)) {
    const std::string unit = "app-gnome-" + id + "-" + std::to_string(::getpid()) + std::to_string(++m_units);
    const std::vector<std::string> inUnit{
        "systemd-run", "--user", "--scope", "--quiet", "--slice=app.slice", "--unit=" + unit + ".scope",
        "--"};
    command.insert(command.begin(), inUnit.begin(), inUnit.end());
  }
  return m_desktop.launch(std::move(command));
}

void Stage::writeMenu() {
  m_desktop.folder().write("home/.config/openbox/menu.xml",
                           "<?xml version=\"1.0\"?>\n"
                           "<openbox_menu xmlns=\"http://openbox.org/3.4/menu\">\n"
                           "<menu id=\"root-menu\" label=\"Menu\"><item label=\"Program\"><action "
                           "name=\"Execute\"><command>" +
                               inXml(quoted(m_command)) +
                               "</command></action></item></menu>\n</openbox_menu>\n");
}

void Stage::chooseFromMenu() {
  for (const auto& window : m_desktop.windows().list()) // a large one leaves nothing to click at
    if (window.pid != m_witness->pid()) m_desktop.windows().minimise(window.id);
  m_desktop.run({"xdotool", "mousemove", "12", "780", "click", "3"});
  ::usleep(500'000); // the menu is no window that could be waited for
  m_desktop.run({"xdotool", "key", "Down", "Return"});
}

void Stage::start(const Program& program) {
  m_starters.clear();
  switch (m_way) {
  case Way::command:
    m_desktop.launch(m_command);
    break;
  case Way::desktopFile:
    if (!program.service.empty() && m_surroundings == Surroundings::none) {
      m_desktop.launch(program.service);
      m_desktop.waitForBusName(program.busName);
    }
    m_desktop.launch({"gtk-launch", program.file});
    break;
  case Way::menu:
    chooseFromMenu();
    break;
  case Way::terminal: {
    const desktop::Program& terminal =
        m_desktop.launch({"xterm", "-class", "Shell", "-geometry", "30x4-0+0", "-e", "/bin/sh", "-c",
                          "exec 3<&0; sleep 1; " + quoted(m_command) + "; exec cat"});
    const auto isShell = [&](Pid pid) { return test::processState(pid)->parent == terminal.pid(); };
    require("a shell in the terminal", [&] {
      m_starters = {terminal.pid()};
      for (const Pid pid : desktop::processesOf({terminal.pid()}))
        if (isShell(pid)) m_starters.insert(pid);
      return m_starters.size() == 2;
    });
    break;
  }
  case Way::scope:
  case Way::service:
    if (!m_desktop.run({UNIT_LAUNCH, textOf(m_way), program.file}))
      throw std::runtime_error("it was not started as a " + std::string(textOf(m_way)));
    break;
  }
}

void Stage::startVantle(bool withRules) {
  const std::string rules =
      withRules ? "{}"
                : "{\"detectCrossOver\":false,\"detectMinecraft\":false,\"detectSteam\":false,"
                  "\"detectGamesCategory\":false,\"userGames\":[\"" +
                      std::string(ownGame) + "\"]}";
  m_desktop.folder().write("home/.config/com.halvo.vantle/defaults.json", rules);
  m_vantle = &launch("com.halvo.vantle", {m_program.string()});
  require("Vantle", [&] { return m_desktop.hasBusName(busName) || !m_vantle->isRunning(); });
}

void Stage::endVantle() {
  if (m_vantle == nullptr) return;
  m_vantle->signal(SIGTERM);
  m_vantle->waitForEnd();
  m_vantle = nullptr;
}

std::string Stage::outputOf(const std::vector<std::string>& command) {
  const fs::path file = m_desktop.folder().path() / "tmp/said";
  std::vector<std::string> whole{"/bin/sh", "-c", R"(said=$1; shift; exec "$@" >"$said" 2>&1)", "sh",
                                 file.string()};
  whole.insert(whole.end(), command.begin(), command.end());
  m_desktop.run(whole);
  return contents(file);
}

std::string Stage::vantle(const std::vector<std::string>& arguments) {
  std::vector<std::string> command{m_program.string()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return outputOf(command);
}

Json Stage::status() { return Json::parse(vantle({"status", "--json"})).value_or(Json()); }

desktop::Program& Stage::startGame() {
  m_game = &launch(ownGame, {desktop::testWindow(), "--class", "StageGame"});
  m_desktop.activate(*m_game);
  return *m_game;
}

// What the manager and the bus have started for this stage does not descend from it.
bool Stage::belongsHere(Pid pid, const std::string& name) const {
  if (m_surroundings == Surroundings::none) return false;
  return placeOf(pid).find("/app.slice/app-") != std::string::npos ||
         (!m_activated.empty() && name == m_activated);
}

std::set<Pid> Stage::processes() {
  // Orphans come to this process, so all of them descend from it. (A program with a group's rights shows
  // nobody its environment.)
  std::set<Pid> all;
  const std::map<Pid, test::ProcessState> living = test::allProcesses();
  for (const auto& [pid, state] : living)
    if (belongsHere(pid, state.name)) all.insert(pid);
  for (bool grew = true; grew;) {
    grew = false;
    for (const auto& [pid, state] : living)
      if (state.parent == ::getpid() || all.contains(state.parent)) grew = all.insert(pid).second || grew;
  }
  const std::set<Pid> own = m_vantle == nullptr ? std::set<Pid>() : desktop::processesOf({m_vantle->pid()});
  if (m_game != nullptr) all.erase(m_game->pid());
  std::erase_if(all, [&](Pid pid) { return own.contains(pid) || !desktop::isAlive(pid); });
  return all;
}

std::string Stage::desktopFileOf(const std::string& id) const {
  for (const fs::path& folder : {m_desktop.dataHome(), fs::path("/usr/share")}) {
    const fs::path file = folder / "applications" / (id + ".desktop");
    if (fs::exists(file)) return file.string();
  }
  return {};
}

} // namespace vantle::realapps
