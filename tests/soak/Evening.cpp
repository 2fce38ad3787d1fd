// SPDX-License-Identifier: MIT
#include "tests/soak/Evening.h"
#include "tests/support/Props.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sched.h>
#include <sstream>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <time.h>
#include <unistd.h>

namespace vantle::soak {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using desktop::isAlive;
using desktop::Program;
using desktop::waitUntil;

constexpr std::size_t mostApps = 10;
constexpr std::size_t mostGames = 2;
constexpr std::size_t historyLength = 25;
constexpr auto longestSettling = 30s;
constexpr uid_t stranger = 65533;
constexpr int bestEffort2 = 2 << 13 | 2;
constexpr int idleIo = 3 << 13 | 7; // as ionice has it

std::string desktopFile(const std::string& name, bool isGame) {
  return "[Desktop Entry]\nType=Application\nExec=true\n" + std::string(isGame ? "Categories=Game;\n" : "") +
         "Name=" + name + "\nStartupWMClass=" + name + "\n";
}

double bootSeconds() {
  timespec now{};
  ::clock_gettime(CLOCK_BOOTTIME, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

long numberIn(const std::string& file, const std::string& name) {
  std::ifstream lines(file);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(name)) return std::stol(line.substr(name.size()));
  }
  return -1;
}

template <class Choices> auto& weighted(Choices& choices, std::uint64_t number) {
  std::uint64_t sum = 0;
  for (const auto& choice : choices) sum += choice.weight;
  number %= sum;
  for (auto& choice : choices) {
    if (number < choice.weight) return choice;
    number -= choice.weight;
  }
  return choices.back();
}

} // namespace

Evening::Evening(Options options)
    : m_options(std::move(options)), m_random(m_options.seed), m_plain(settingsOfThisThread()),
      m_groups(controlGroupsOfThisProcess()) {
  m_beganTicks = bootSeconds() * static_cast<double>(::sysconf(_SC_CLK_TCK));
}

// --- The evening
// -------------------------------------------------------------------------------------------------------

void Evening::run() {
  prepare();
  const auto end = m_began + m_options.length;
  auto said = m_began;
  while (Clock::now() < end && pause(600)) {
    step();
    if (Clock::now() - said < 60s) continue;
    said = Clock::now();
    report();
  }
  quiet();
  endVantle();
}

void Evening::prepare() {
  desktop::VirtualDesktop::Options options;
  options.user = m_options.user;
  m_desktop = std::make_unique<desktop::VirtualDesktop>(options);
  m_marker = "VANTLE_TEST_DESKTOP=" + m_desktop->folder().path().string();
  m_desktop->setEnvironment("QT_QPA_PLATFORM", "xcb");
  m_desktop->installDesktopFile("org.example.Game", desktopFile("Game", true));
  m_desktop->installDesktopFile("org.example.App", desktopFile("App", false));
  // What is built meanwhile must not be what runs.
  m_program = m_desktop->folder().path() / "vantle";
  const fs::path built(VANTLE_PROGRAM);
  const fs::path folder = m_desktop->folder().path();
  fs::create_directory(folder / "libexec");
  for (const char* file : {"vantle", "libexec/vantle"}) { // the command, and the program that it starts
    const fs::path copy = folder / file;
    fs::copy_file(built.parent_path() / file, copy);
    fs::permissions(copy, fs::perms(0755));
  }
  m_sound = std::make_unique<desktop::SoundServer>(*m_desktop);
  m_flood = std::make_unique<Flood>(m_desktop->display());
  makeKinds();
  // Nobody has slowed anything yet: what the desktop's own parts chose for themselves is theirs.
  for (const ProcessSettings& process : lookAtMachine(m_marker)) {
    for (const auto& [id, thread] : process.threads) m_parts[process.name].insert(text(thread));
  }
  launch({"sleep", "infinity"}, "stranger");
  if (::geteuid() == 0) {
    launch({desktop::testWindow(), "--class", "App", "--title", "Stranger", "--background"}, "stranger",
           stranger);
  }
  // Without what tells one bus from the next at the same place.
  m_watch = std::make_unique<MainLoopWatch>("unix:path=" + (m_desktop->runtimeDir() / "bus").string());
  startVantle();
  launchApp();
  launchGame();
}

void Evening::makeKinds() {
  const auto kind = [this](const char* name, const std::string& worker,
                           std::size_t most = mostApps) -> Kind& {
    return m_kinds.emplace_back(Kind{name, worker, {}, m_plain, most});
  };
  kind("plain", "");
  kind("forks", "forks 2 10", 2);
  kind("heavyforks", "forks 400 20", 1);
  kind("orphans", "orphans", 2);
  kind("sessions", "sessions", 2);
  kind("threads", "threads", 1);
  Kind& nice = kind("nice", "sessions", 1);
  nice.prefix = {"nice", "-n", "5"};
  nice.settings.nice = m_plain.nice + 5;
  Kind& io = kind("io", "forks 1 2", 1);
  io.prefix = {"ionice", "-c", "2", "-n", "2"};
  io.settings.ioPriority = bestEffort2;
  Kind& idle = kind("idleio", "", 1);
  idle.prefix = {"ionice", "-c", "3"};
  idle.settings.ioPriority = idleIo;
  Kind& batch = kind("batch", "threads", 1);
  batch.prefix = {"chrt", "-b", "0"};
  batch.settings.policy = SCHED_BATCH;
  Kind& pinned = kind("pinned", "forks 1 5", 1);
  pinned.prefix = {"taskset", "1"};
  std::string& mask = pinned.settings.affinity;
  std::replace_if(
      mask.begin(), mask.end(), [](char letter) { return letter != ',' && letter != '0'; }, '0');
  mask.back() = '1';
}

bool Evening::play(const std::vector<Event>& events) {
  const Event& event = weighted(events, m_random());
  if (!(this->*event.play)()) return false;
  ++m_events;
  ++m_played[event.name];
  return true;
}

void Evening::step() {
  static const std::vector<Event> events{
      {"launch app", 14, &Evening::launchApp},
      {"launch game", 16, &Evening::launchGame},
      {"end app", 8, &Evening::endApp},
      {"end game", 6, &Evening::endGame},
      {"game to front", 20, &Evening::bringGameToFront},
      {"app to front", 16, &Evening::bringAppToFront},
      {"stop app", 3, &Evening::stopApp},
      {"continue apps", 4, &Evening::continueApps},
      {"quiet", 6, &Evening::quiet},
      {"start Vantle", 30, &Evening::startVantle},
      {"end Vantle", 4, &Evening::endVantle},
      {"kill Vantle", 6, &Evening::killVantle},
      {"kill during start", 8, &Evening::killDuringStart},
      {"stop Vantle", 3, &Evening::stopVantle},
      {"second copy", 2, &Evening::startSecondCopy},
      {"self-test", 1, &Evening::startSelfTest},
      {"end self-test", 1, &Evening::endSelfTest},
      {"stop a part", 4, &Evening::stopPart},
      {"restart bus", 1, &Evening::restartBus},
      {"restart sound", 1, &Evening::restartSound},
      {"restart window manager", 1, &Evening::restartWindowManager},
      {"flood properties", 1, &Evening::floodProperties},
      {"flood front", 2, &Evening::floodFront},
      {"flood trays", 1, &Evening::floodTrays},
      {"flood bus", 1, &Evening::floodBus},
  };
  while (!play(events)) {
  }
  reapOrphans();
  if (m_vantle != nullptr && !m_vantle->isRunning()) {
    violation(m_wrongEnds, "Vantle ended by itself, with status " + std::to_string(*m_vantle->exitStatus()));
    m_watch->watch(0, 0);
    m_vantle = nullptr;
  }
  tellOfStalls();
  checkForeign();
  sample();
}

// With what happened before, which is what there is to find the reason by.
void Evening::tellOfStalls() {
  const MainLoopWatch::Counts counts = m_watch->counts();
  if (counts.stalls == m_stallsTold) return;
  m_stallsTold = counts.stalls;
  std::cout << "\nSTALL (seed " << m_options.seed << ", event " << m_events << ", " << seconds()
            << " s), the longest so far " << counts.longest << " ms; what happened last:\n";
  for (const std::string& line : m_history) std::cout << "    " << line << '\n';
  std::cout.flush();
}

double Evening::seconds() const { return std::chrono::duration<double>(Clock::now() - m_began).count(); }

void Evening::say(const std::string& what) {
  char time[32];
  std::snprintf(time, sizeof time, "%9.3f s  ", seconds());
  m_history.push_back(time + what);
  if (m_history.size() > historyLength) m_history.pop_front();
}

bool Evening::pause(std::size_t atMost, std::size_t atLeast) {
  return m_options.pause(std::chrono::milliseconds(atLeast + below(atMost - atLeast)));
}

// --- Apps
// -------------------------------------------------------------------------------------------------------

Program& Evening::launch(std::vector<std::string> command, const std::string& role,
                         std::optional<uid_t> user) {
  Program& program =
      m_desktop->launchAs(user ? user : m_options.user, std::move(command), {{"SOAK_ROLE", role}});
  m_started.insert(program.pid());
  return program;
}

bool Evening::launchApp() {
  std::vector<const Kind*> open;
  std::size_t apps = 0;
  for (const App& app : m_apps) apps += app.isGame ? 0 : 1;
  if (apps >= mostApps) return false;
  for (const Kind& kind : m_kinds) {
    const auto same = [&](const App& app) { return !app.isGame && app.kind == kind.name; };
    if (static_cast<std::size_t>(std::count_if(m_apps.begin(), m_apps.end(), same)) < kind.most)
      open.push_back(&kind);
  }
  return this->open(*open[below(open.size())], false);
}

bool Evening::launchGame() {
  const auto isGame = [](const App& app) { return app.isGame; };
  if (static_cast<std::size_t>(std::count_if(m_apps.begin(), m_apps.end(), isGame)) >= mostGames)
    return false;
  return open(m_kinds[below(2)], true);
}

bool Evening::open(const Kind& kind, bool isGame) {
  App app{++m_lastNumber, kind.name, isGame};
  std::vector<std::string> command = kind.prefix;
  const std::string name = isGame ? "Game" : "App";
  std::string script = kind.worker.empty() ? "" : std::string("'" SOAK_WORKER "' ") + kind.worker + " & ";
  script += "exec '" + desktop::testWindow() + "' --class " + name + " --title " + name +
            std::to_string(app.number);
  if (chance(50)) script += " --background";
  if (chance(30)) script += " --threads 3";
  if (chance(30)) script += " --children 2";
  for (const char* word : {"/bin/sh", "-c", script.c_str()}) command.emplace_back(word);
  m_gameInFront = 0;
  app.program = &launch(command, app.role());
  say("launch " + name + " " + std::to_string(app.number) + " (" + app.kind + "), pid " +
      std::to_string(app.program->pid()));
  app.window = m_desktop->waitForWindow(app.program->pid()).id;
  m_apps.push_back(app);
  return true;
}

Evening::App* Evening::anyOf(bool isGame) {
  std::vector<App*> found;
  for (App& app : m_apps) {
    if (app.isGame == isGame) found.push_back(&app);
  }
  return found.empty() ? nullptr : found[below(found.size())];
}

bool Evening::endOne(bool isGame) {
  App* app = anyOf(isGame);
  if (app == nullptr) return false;
  end(*app, chance(50) ? SIGKILL : SIGTERM);
  return true;
}

void Evening::end(App& app, int signal) {
  say("end " + app.role() + " by signal " + std::to_string(signal));
  Program* program = app.program;
  m_gameInFront = 0;
  std::erase(m_stopped, program);
  program->signal(SIGCONT);
  program->signal(signal);
  program->waitForEnd();
  std::erase_if(m_apps, [program](const App& one) { return one.program == program; });
}

bool Evening::bringToFront(bool isGame) {
  App* app = anyOf(isGame);
  if (app == nullptr) return false;
  say("to the front: " + app->role());
  m_gameInFront = 0;
  m_desktop->windows().activate(app->window);
  // Another window may open and take the front.
  waitUntil([&] { return front() == app->window; }, 2s);
  return true;
}

bool Evening::stopApp() {
  App* app = anyOf(false);
  if (app == nullptr) return false;
  say("stop " + app->role());
  app->program->signal(SIGSTOP);
  m_stopped.push_back(app->program);
  return true;
}

bool Evening::continueApps() {
  if (m_stopped.empty()) return false;
  say("continue the stopped apps");
  for (Program* program : m_stopped) program->signal(SIGCONT);
  m_stopped.clear();
  return true;
}

// --- The program
// -------------------------------------------------------------------------------------------------------

bool Evening::startVantle() {
  if (m_vantle != nullptr) return false;
  say("start Vantle");
  m_gameInFront = 0;
  m_vantle = &launch({m_program}, "vantle");
  desktop::require("Vantle",
                   [&] { return m_desktop->hasBusName("com.halvo.vantle") || !m_vantle->isRunning(); });
  m_hasBusName = true;
  m_watch->watch(m_vantle->pid(), m_desktop->sessionBus().pid());
  return true;
}

// When it has ended in order, nothing is left, and at once.
bool Evening::endVantle() {
  if (m_vantle == nullptr) return false;
  const int number = std::array{SIGTERM, SIGINT, SIGHUP}.at(below(3));
  say("end Vantle by signal " + std::to_string(number));
  m_watch->watch(0, 0);
  m_gameInFront = 0;
  m_vantle->signal(number);
  const auto status = m_vantle->exitStatus();
  if (status != 0) {
    violation(m_wrongEnds,
              "Vantle did not end in order: " + (status ? std::to_string(*status) : "it runs on"));
    m_vantle->kill();
  }
  m_vantle = nullptr;
  ++m_ends;
  if (status == 0 && m_selfTest == nullptr) expectAllBack("after Vantle ended in order", 0ms);
  return true;
}

bool Evening::killVantle() {
  if (m_vantle == nullptr) return false;
  const int number = chance(80) ? SIGKILL : SIGQUIT;
  say("kill Vantle by signal " + std::to_string(number));
  m_watch->watch(0, 0);
  m_gameInFront = 0;
  m_vantle->signal(number);
  m_vantle->waitForEnd();
  m_vantle = nullptr;
  ++m_kills;
  return true;
}

bool Evening::killDuringStart() {
  if (m_vantle != nullptr) return false;
  Program& program = launch({m_program}, "vantle");
  const std::size_t after = below(400);
  say("start Vantle and kill it " + std::to_string(after) + " ms later");
  m_options.pause(std::chrono::milliseconds(after));
  program.kill();
  ++m_kills;
  return true;
}

bool Evening::startSecondCopy() {
  if (m_vantle == nullptr) return false;
  say("start a second copy");
  m_gameInFront = 0; // the first one shows its panel
  const auto status = launch({m_program}, "vantle").exitStatus();
  if (status != 0) violation(m_wrongEnds, "the second copy did not end with status 0");
  return true;
}

bool Evening::startSelfTest() {
  if (m_selfTest != nullptr) return false;
  say("start the self-test");
  m_selfTest = &launch({m_program, "--test"}, "selftest");
  ++m_selfTests;
  return true;
}

bool Evening::endSelfTest() {
  if (m_selfTest == nullptr) return false;
  const int number = std::array{SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGKILL}.at(below(5));
  say("end the self-test by signal " + std::to_string(number));
  m_selfTest->signal(number);
  awaitSelfTest();
  return true;
}

// It takes everything along that it started.
void Evening::awaitSelfTest() {
  if (m_selfTest == nullptr) return;
  m_selfTest->waitForEnd();
  m_selfTest = nullptr;
  Machine machine;
  const auto isOne = [](const ProcessSettings& process) { return process.role == "selftest"; };
  waitUntil([&] {
    machine = look();
    return std::none_of(machine.begin(), machine.end(), isOne);
  });
  const auto found = std::find_if(machine.begin(), machine.end(), isOne);
  if (found == machine.end()) return;
  violation(m_left, "a process of the self-test lives on", &*found);
  killRole("selftest");
}

bool Evening::stopVantle() {
  static const std::vector<Event> events{{"app to front", 3, &Evening::bringAppToFront},
                                         {"game to front", 3, &Evening::bringGameToFront},
                                         {"end game", 2, &Evening::endGame},
                                         {"end app", 2, &Evening::endApp},
                                         {"launch app", 1, &Evening::launchApp}};
  if (m_vantle == nullptr) return false;
  during("Vantle", *m_vantle, events);
  return true;
}

void Evening::Figure::note(long value) {
  if (value < 0) return;
  if (first < 0) first = value;
  last = value;
  most = std::max(most, value);
}

void Evening::sample() {
  if (m_vantle == nullptr || Clock::now() - m_sampled < 2s) return;
  m_sampled = Clock::now();
  const std::string folder = "/proc/" + std::to_string(m_vantle->pid());
  m_rss.note(numberIn(folder + "/status", "VmRSS:"));
  m_pss.note(numberIn(folder + "/smaps_rollup", "Pss:"));
  std::error_code error;
  const fs::directory_iterator open(folder + "/fd", error);
  if (!error) m_descriptors.note(std::distance(fs::begin(open), fs::end(open)));
}

// --- The desktop's parts
// -------------------------------------------------------------------------------------------------------

// Nothing that would wait for who is stopped.
void Evening::during(const std::string& what, Program& stopped, const std::vector<Event>& events) {
  say("stop " + what);
  const Disturbance disturbance(*m_watch);
  m_gameInFront = 0;
  stopped.signal(SIGSTOP);
  pause(500);
  if (chance(60)) play(events);
  pause(500);
  stopped.signal(SIGCONT);
  say("continue " + what);
}

bool Evening::stopPart() {
  static const std::vector<Event> events{{"end game", 3, &Evening::endGame},
                                         {"end app", 3, &Evening::endApp},
                                         {"kill Vantle", 1, &Evening::killVantle}};
  switch (below(4)) {
  case 0:
    during("the X server", m_desktop->xServer(), events);
    break;
  case 1:
    during("the session bus", m_desktop->sessionBus(), events);
    break;
  case 2:
    during("the sound server", m_sound->pulse(), events);
    break;
  default:
    during("the window manager", m_desktop->windowManager(), events);
    break;
  }
  return true;
}

// The program has no name on a new bus; it gets one when it starts again.
bool Evening::restartBus() {
  if (!m_hasBusName) return false;
  say("kill the session bus and start it again");
  m_hasBusName = false;
  m_watch->watch(0, 0);
  m_desktop->sessionBus().kill();
  pause(1000);
  m_desktop->startSessionBus();
  m_started.insert(m_desktop->sessionBus().pid());
  return true;
}

bool Evening::restartSound() {
  say("kill the sound server and start it again");
  const Disturbance disturbance(*m_watch);
  m_sound->pulse().kill();
  pause(1000);
  m_sound->startPulse();
  m_started.insert(m_sound->pulse().pid());
  return true;
}

bool Evening::restartWindowManager() {
  say("kill the window manager and start it again");
  const Disturbance disturbance(*m_watch);
  m_gameInFront = 0;
  m_desktop->windowManager().kill();
  pause(1000);
  m_desktop->startWindowManager();
  m_started.insert(m_desktop->windowManager().pid());
  return true;
}

bool Evening::floodProperties() {
  say("flood of properties");
  const Disturbance disturbance(*m_watch);
  m_flood->changeProperties(20'000);
  return true;
}

bool Evening::floodFront() {
  const App* app = anyOf(false);
  const App* game = anyOf(true);
  const std::uint32_t now = front();
  if (app == nullptr || game == nullptr) return false;
  say("flood of fronts: " + app->role() + " and " + game->role());
  const Disturbance disturbance(*m_watch);
  m_gameInFront = 0;
  m_flood->claimFront(app->window, game->window, 500);
  m_flood->claimFront(now, now, 0);
  return true;
}

bool Evening::floodTrays() {
  say("flood of trays");
  const Disturbance disturbance(*m_watch);
  m_flood->announceTrays(500);
  return true;
}

bool Evening::floodBus() {
  if (m_vantle == nullptr || !m_hasBusName) return false;
  say("flood of the bus");
  const Disturbance disturbance(*m_watch);
  m_gameInFront = 0; // the panel comes to the front
  sd_bus* bus = nullptr;
  sd_bus_new(&bus);
  sd_bus_set_address(bus, m_desktop->busAddress().c_str());
  sd_bus_set_bus_client(bus, 1);
  if (sd_bus_start(bus) >= 0) {
    for (int count = 0; count < 200; ++count) {
      sd_bus_message* call = nullptr;
      sd_bus_message_new_method_call(bus, &call, "com.halvo.vantle", "/com/halvo/vantle",
                                     "org.freedesktop.Application", "Activate");
      sd_bus_message_append(call, "a{sv}", 0);
      sd_bus_message_set_expect_reply(call, 0);
      sd_bus_send(bus, call, nullptr);
      sd_bus_message_unref(call);
    }
  }
  sd_bus_flush_close_unref(bus);
  return true;
}

// --- What is true
// -------------------------------------------------------------------------------------------------------

// No game runs and nobody is stopped: whatever was slowed has to come back.
bool Evening::quiet() {
  say("quiet");
  continueApps();
  while (App* game = anyOf(true)) end(*game, chance(50) ? SIGKILL : SIGTERM);
  startVantle();
  pause(1500, 300);
  awaitSelfTest();
  holdWorkers(true);
  expectAllBack("in quiet", longestSettling);
  holdWorkers(false);
  // Who has lost its app has shown what it could.
  for (const ProcessSettings& process : look()) {
    const auto isItsApp = [&](const App& app) { return app.role() == process.role; };
    if (isOfAnApp(process) && std::none_of(m_apps.begin(), m_apps.end(), isItsApp))
      ::kill(process.pid, SIGKILL);
  }
  if (!m_hasBusName) endVantle();
  return true;
}

Machine Evening::look() {
  Machine machine = lookAtMachine(m_marker);
  const bool isSlowed = !deviations(machine, true).empty();
  if (isSlowed && !m_isSlowed && m_vantle != nullptr) ++m_boosts;
  m_isSlowed = isSlowed;
  return machine;
}

ThreadSettings Evening::expected(const ProcessSettings& process) const {
  const std::size_t at = process.role.rfind(':');
  for (const Kind& kind : m_kinds) {
    if (at != std::string::npos && process.role.substr(at + 1) == kind.name) return kind.settings;
  }
  return m_plain;
}

std::string Evening::deviation(const ProcessSettings& process) const {
  if (process.role == "selftest") return {};
  std::ostringstream found;
  const ThreadSettings born = expected(process);
  const auto own = process.role.empty() ? m_parts.find(process.name) : m_parts.end();
  if (process.sessionNice != 0) found << "session nice " << process.sessionNice << "; ";
  if (process.groups != m_groups) found << "control groups " << process.groups << "; ";
  for (const auto& [id, thread] : process.threads) {
    if (thread == born || (own != m_parts.end() && own->second.contains(text(thread)))) continue;
    found << "thread " << id << ": " << text(thread) << "; ";
  }
  return found.str();
}

std::map<Pid, std::string> Evening::deviations(const Machine& machine, bool ofApps) const {
  std::map<Pid, std::string> found;
  for (const ProcessSettings& process : machine) {
    if (isOfAnApp(process) != ofApps) continue;
    if (std::string what = deviation(process); !what.empty()) found[process.pid] = std::move(what);
  }
  return found;
}

// Between fork and exec a process can look like another one for a moment, so it has to be seen twice.
void Evening::checkForeign() {
  const std::uint32_t inFront = front();
  Machine machine = look();
  checkGameInFront(machine, inFront);
  if (deviations(machine, false).empty()) return;
  const auto before = deviations(machine, false);
  machine = look();
  const auto now = deviations(machine, false);
  for (const ProcessSettings& process : machine) {
    if (!before.contains(process.pid) || !now.contains(process.pid)) continue;
    violation(m_foreign, "a process that is none of the apps is not as it was born", &process);
    // Told once.
    for (const auto& [id, thread] : process.threads) m_parts[process.name].insert(text(thread));
  }
}

// Once the game in front has its speed, it keeps it until something else comes to the front.
void Evening::checkGameInFront(const Machine& machine, std::uint32_t inFront) {
  const auto game = std::find_if(m_apps.begin(), m_apps.end(),
                                 [&](const App& app) { return app.isGame && app.window == inFront; });
  if (game == m_apps.end() || m_vantle == nullptr) {
    m_gameInFront = 0;
    return;
  }
  const auto slowed = [&](const Machine& seen) {
    return std::find_if(seen.begin(), seen.end(), [&](const ProcessSettings& process) {
      return process.role == game->role() && !deviation(process).empty();
    });
  };
  const auto found = slowed(machine);
  if (found == machine.end()) {
    m_gameInFront = game->number;
    return;
  }
  if (m_gameInFront == game->number && front() == inFront) {
    violation(m_foreign, "the game in front was slowed", &*found);
    return;
  }
  Machine later;
  const bool isBack = waitUntil(
      [&] {
        later = look();
        return front() != inFront || !m_vantle->isRunning() || slowed(later) == later.end();
      },
      longestSettling);
  if (!isBack) violation(m_foreign, "the game in front stays slowed", &*slowed(later));
}

void Evening::expectAllBack(const std::string& when, std::chrono::milliseconds limit) {
  const auto began = Clock::now();
  Machine machine;
  std::map<Pid, std::string> left;
  waitUntil([&] { return (left = deviations(machine = look(), true)).empty(); }, limit);
  m_longestSettling =
      std::max(m_longestSettling, std::chrono::duration<double>(Clock::now() - began).count());
  m_compared += static_cast<long>(machine.size());
  if (left.empty()) return;
  const auto before = left;
  m_options.pause(300ms);
  machine = look();
  std::map<std::string, std::vector<const ProcessSettings*>> found;
  for (const ProcessSettings& process : machine) {
    if (isOfAnApp(process) && before.contains(process.pid) && !deviation(process).empty())
      found[process.role].push_back(&process);
  }
  for (const auto& [role, processes] : found) {
    m_left += static_cast<long>(processes.size()) - 1;
    std::ostringstream what;
    what << processes.size() << " of \"" << role << "\" left slowed " << when;
    violation(m_left, what.str(), processes.front());
  }
  // So that each is told once.
  for (const auto& [role, processes] : found) killRole(role);
}

void Evening::violation(long& count, const std::string& what, const ProcessSettings* process) {
  ++count;
  std::cout << "\nVIOLATION (seed " << m_options.seed << ", event " << m_events << ", " << seconds()
            << " s): " << what << '\n';
  if (process != nullptr) {
    const auto ticks = static_cast<double>(::sysconf(_SC_CLK_TCK));
    std::cout << "  " << process->name << ' ' << process->pid << ", child of " << process->parent << ", \""
              << process->role << "\", state " << process->state << ", born at "
              << (static_cast<double>(process->start) - m_beganTicks) / ticks
              << " s\n  is:   " << deviation(*process) << "\n  born: " << text(expected(*process)) << '\n';
  }
  if (!m_history.empty()) std::cout << "  what happened last:\n";
  for (const std::string& line : m_history) std::cout << "    " << line << '\n';
  std::cout.flush();
  m_history.clear();
}

void Evening::holdWorkers(bool hold) {
  for (const ProcessSettings& process : lookAtMachine(m_marker)) {
    if (process.name == "soak_worker") ::kill(process.pid, hold ? SIGUSR2 : SIGUSR1);
  }
}

void Evening::killRole(const std::string& role) {
  const auto app =
      std::find_if(m_apps.begin(), m_apps.end(), [&](const App& one) { return one.role() == role; });
  if (app != m_apps.end()) end(*app, SIGKILL);
  waitUntil([&] {
    bool isGone = true;
    for (const ProcessSettings& process : lookAtMachine(m_marker)) {
      if (process.role == role) isGone = ::kill(process.pid, SIGKILL) != 0;
    }
    return isGone;
  });
}

// Who has lost its parent comes to this process.
void Evening::reapOrphans() {
  const Pid self = ::getpid();
  std::ifstream children("/proc/self/task/" + std::to_string(self) + "/children");
  for (Pid child = 0; children >> child;) {
    if (!m_started.contains(child) && child != m_desktop->windowManager().pid() &&
        child != m_desktop->sessionBus().pid() && child != m_desktop->xServer().pid() &&
        child != m_sound->pulse().pid() && !isAlive(child)) {
      ::waitpid(child, nullptr, WNOHANG);
    }
  }
}

bool Evening::holds() const { return m_left == 0 && m_foreign == 0 && m_wrongEnds == 0 && m_boosts > 0; }

void Evening::report() const {
  const MainLoopWatch::Counts loop = m_watch ? m_watch->counts() : MainLoopWatch::Counts{};
  std::ostringstream events;
  for (const auto& [name, count] : m_played) events << ' ' << name << ' ' << count << ';';
  const auto figure = [](const char* name, const Figure& value) {
    return std::string(" ") + name + "_first=" + std::to_string(value.first) + ' ' + name +
           "_last=" + std::to_string(value.last) + ' ' + name + "_max=" + std::to_string(value.most);
  };
  std::cout << "events:" << events.str() << "\nsoak: seed=" << m_options.seed
            << " seconds=" << std::lround(seconds()) << " events=" << m_events << " boosts=" << m_boosts
            << " kills=" << m_kills << " ends=" << m_ends << " self_tests=" << m_selfTests
            << " compared=" << m_compared << " left_slowed=" << m_left << " foreign_touched=" << m_foreign
            << " wrong_ends=" << m_wrongEnds
            << " longest_settling_ms=" << std::lround(m_longestSettling * 1000) << figure("rss_kb", m_rss)
            << figure("pss_kb", m_pss) << figure("descriptors", m_descriptors) << " answers=" << loop.answers
            << " stalls=" << loop.stalls << " longest_answer_ms=" << loop.longest
            << " disturbed_stalls=" << loop.disturbedStalls
            << " longest_disturbed_answer_ms=" << loop.longestDisturbed << std::endl;
}

} // namespace vantle::soak
