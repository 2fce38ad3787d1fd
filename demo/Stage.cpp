// SPDX-License-Identifier: MIT
#include "demo/Stage.h"

#include "tests/support/Props.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>
#include <utility>

namespace vantle::demo {

namespace {

using desktop::require;

constexpr const char* gameProgram = "/usr/games/chromium-bsu";

// What an app does that must not be interrupted: sleeping is refused as long as the command runs.
constexpr const char* keepAwake =
    "systemd-inhibit --what=sleep:idle --mode=block --who=Download --why=Downloading";

std::string toneLog(const desktop::PrivateSession& session) { return session.logs() / "tone"; }

} // namespace

Stage::Stage(const Screen::Kind& kind) : m_screen(kind.make()), m_session(m_screen->session()) {
  startSound();
  startLoginDaemon();
  m_apps.push_back(start("XTerm", {20, 60}, {"xterm", "-geometry", "60x14+20+20"}));
  m_apps.push_back(start("Mousepad", {20, 290, 366, 200}, {"mousepad"}));
  m_apps.push_back(start("Galculator", {20, 690}, {"galculator"}));
  // Two busy loops in a terminal window: enough to take half of two processors from anybody.
  m_apps.push_back(
      start("CPU hog", {20, 520, 366, 140},
            m_screen->terminal(
                "CPU hog", "60x8+20+520",
                "echo This window keeps two processors busy.; yes >/dev/null & exec yes >/dev/null")));
  if (m_whyNoSound.empty()) startMusic();
  if (m_whyNoLoginDaemon.empty()) startDownload();
}

// What a machine cannot have is no part of the demo; the rest does not need it.
void Stage::startSound() {
  try {
    m_sound.emplace(m_session);
  } catch (const std::runtime_error& failure) {
    m_whyNoSound = failure.what();
  }
}

void Stage::startMusic() {
  m_usefulApps.push_back(
      start("Music", {400, 1046},
            m_screen->xTerminal("Music", "60x8+20+760",
                                "echo This window plays a quiet tone.; exec '" + desktop::tonePlayer() +
                                    "' >'" + toneLog(m_session) + "'")));
  require("the tone", [this] { return toneSaid("playing") > 0; });
}

void Stage::startDownload() {
  m_usefulApps.push_back(
      start("Download", {800, 1046},
            m_screen->xTerminal("Download", "60x8+20+1000",
                                std::string("echo This window keeps the machine awake.; exec ") + keepAwake +
                                    " sleep 600")));
  require("the inhibitor", [this] {
    return m_session.run({"sh", "-c", "systemd-inhibit --list --no-legend | grep -q Download"});
  });
}

void Stage::startLoginDaemon() {
  if (m_session.run({"sh", "-c", std::string(keepAwake) + " true"})) return;
  try {
    if (!desktop::Logind::isPossible()) throw std::runtime_error("not installed, or not for this user");
    m_logind.emplace();
    m_session.setEnvironment("DBUS_SYSTEM_BUS_ADDRESS", m_logind->bus().address());
  } catch (const std::runtime_error& failure) {
    m_whyNoLoginDaemon = failure.what();
  }
}

Stage::App Stage::start(const std::string& name, const Screen::Place& place,
                        std::vector<std::string> command) {
  desktop::Program& program = m_session.launch(std::move(command));
  m_screen->settle(program, place);
  return {name, &program};
}

long Stage::toneSaid(const std::string& word) const {
  std::ifstream file(toneLog(m_session));
  return std::count(std::istream_iterator<std::string>(file), {}, word);
}

desktop::Program& Stage::startMemoryPressure() { return m_session.launch({desktop::memoryStaller()}); }

void Stage::startGame(bool native) {
  // It would minimise itself when another app comes to the front.
  desktop::Environment added{{"SDL_VIDEO_MINIMIZE_ON_FOCUS_LOSS", "0"}};
  if (m_screen->hasNativeApps()) added["SDL_VIDEODRIVER"] = native ? "wayland" : "x11";
  desktop::Program& program = m_session.launch({gameProgram, "-w", "-v", "4", "-na"}, added);
  m_screen->settle(program, {310, 46});
  m_game = {"Chromium B.S.U.", &program};
}

void Stage::startVantle(const std::string& program) {
  m_vantle = &m_session.launch({program});
  // Its first deed is to restore what an earlier run may have left, which ends with an empty journal.
  require("Vantle is running", [this] { return journal() == "[]"; });
  // It can be asked for its panel a moment later only.
  m_session.waitForBusName("com.halvo.vantle");
}

const Stage::App& Stage::app(const std::string& name) const {
  for (const std::vector<App>* apps : {&m_apps, &m_usefulApps}) {
    const auto found = std::find_if(apps->begin(), apps->end(),
                                    [&](const App& candidate) { return candidate.name == name; });
    if (found != apps->end()) return *found;
  }
  throw std::invalid_argument("no app named " + name);
}

std::string Stage::journal() const {
  std::ifstream file(m_session.dataHome() / "Vantle/journal.json");
  return {std::istreambuf_iterator<char>(file), {}};
}

std::map<std::string, AppState> Stage::states() const {
  std::map<std::string, AppState> all;
  for (const App& one : m_apps) all.emplace(one.name, appState(one.pid()));
  for (const App& one : m_usefulApps) all.emplace(one.name, appState(one.pid()));
  return all;
}

std::map<std::string, double> Stage::processorShares(std::chrono::milliseconds duration) const {
  std::vector<App> measured = m_apps;
  measured.push_back(m_game);
  const auto begin = std::chrono::steady_clock::now();
  std::map<std::string, double> shares;
  for (const App& one : measured) shares[one.name] = -cpuSeconds(one.pid());
  std::this_thread::sleep_for(duration);
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
  for (const App& one : measured) {
    shares[one.name] = (shares[one.name] + cpuSeconds(one.pid())) / elapsed.count();
  }
  return shares;
}

} // namespace vantle::demo
