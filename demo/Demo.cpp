// SPDX-License-Identifier: MIT
#include "demo/Demo.h"

#include "demo/Report.h"
#include "demo/Scheduling.h"
#include "demo/Stage.h"
#include "platform/linux/process/ProcfsProcessTable.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <functional>
#include <string>

namespace vantle::demo {

namespace {

using namespace std::chrono_literals;
using desktop::waitUntil;
using Shares = std::map<std::string, double>;

constexpr const char* hog = "CPU hog";
constexpr const char* visitor = "Mousepad"; // the app that comes to the front during the Boost
constexpr auto measuring = 4s;

std::string percent(double share) { return std::to_string(std::lround(share * 100)) + " %"; }

std::string milliseconds(std::chrono::steady_clock::duration time) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f ms", std::chrono::duration<double, std::milli>(time).count());
  return text.data();
}

// How long it took from now until the condition held; the guard only bounds a demo that would hang.
std::chrono::steady_clock::duration timeUntil(const std::function<bool()>& condition, bool& held) {
  const auto begin = std::chrono::steady_clock::now();
  held = waitUntil(condition);
  return std::chrono::steady_clock::now() - begin;
}

class Demo {
 public:
  Demo(const std::filesystem::path& program, const std::filesystem::path& folder)
      : m_program(program), m_report(folder), m_processes(BootEpoch(0)), m_stage(m_processes) {}

  bool run() {
    showTheDesktop();
    startVantleIdle();
    bringGameToFront();
    visitAnotherApp();
    quitGame();
    quitVantle();
    m_report.heading(m_report.allHeld() ? "All of this was measured, and all of it held."
                                        : "Not everything held: see the lines marked FAILED.");
    return m_report.allHeld();
  }

 private:
  void takePicture(const std::string& file, const std::string& caption) {
    m_report.check(m_stage.screen().screenshot(m_report.pathOf(file)), "picture " + file);
    m_report.picture(file, caption);
  }

  bool everyAppInBand() const {
    const auto states = m_stage.states();
    return std::all_of(states.begin(), states.end(),
                       [](const auto& app) { return isWhollyInBand(app.second); });
  }

  bool everyAppAsBefore() const {
    const auto states = m_stage.states();
    return std::all_of(states.begin(), states.end(),
                       [this](const auto& app) { return sameAsBefore(m_before.at(app.first), app.second); });
  }

  void showTheDesktop() {
    m_report.heading("A desktop with a game, apps and a CPU hog; nothing is boosted");
    m_stage.startGame();
    m_stage.screen().activate(*m_stage.game().program);
    m_sharesBefore = m_stage.processorShares(measuring);
    m_before = m_stage.states();
    m_report.say("in front: " + m_stage.game().name);
    for (const Stage::App& app : m_stage.apps()) m_report.say("beside it: " + app.name);
    m_report.say("processor time, in parts of one processor: the game " +
                 percent(m_sharesBefore.at(m_stage.game().name)) + ", the hog " +
                 percent(m_sharesBefore.at(hog)));
    takePicture("1-before.png", "The game shares the machine with everything else");
  }

  void startVantleIdle() {
    m_stage.screen().activate(*m_stage.app("XTerm").program);
    m_stage.startVantle(m_program);
    m_report.say("Vantle runs; XTerm is in front, so nothing happens");
    m_report.check(everyAppAsBefore(), "no app was changed by the start");
  }

  void bringGameToFront() {
    m_report.heading("The game comes to the front");
    const auto window = m_stage.screen().waitForWindow(m_stage.game().pid()).id;
    m_stage.screen().windows().activate(window);
    bool held = false;
    const auto time = timeUntil([this] { return everyAppInBand(); }, held);
    for (const auto& [name, state] : m_stage.states()) {
      m_report.check(isWhollyInBand(state), "in the background: " + name + " (" +
                                                std::to_string(state.groupWeights.size()) + " processes, " +
                                                std::to_string(state.threads.size()) + " threads)");
    }
    m_report.check(held, "all of them were there " + milliseconds(time) + " after the click");
    const AppState game = appState(m_processes, m_stage.game().pid());
    m_report.check(isWhollyOutOfBand(game), "the game itself is untouched");
    m_report.check(m_stage.journal() != "[]", "the journal names what is slowed");

    const Shares shares = m_stage.processorShares(measuring);
    const std::string gameName = m_stage.game().name;
    m_report.say("processor time: the game " + percent(shares.at(gameName)) + " (was " +
                 percent(m_sharesBefore.at(gameName)) + "), the hog " + percent(shares.at(hog)) + " (was " +
                 percent(m_sharesBefore.at(hog)) + ")");
    m_report.check(shares.at(gameName) > m_sharesBefore.at(gameName), "the game gets more than before");
    m_report.check(shares.at(hog) < m_sharesBefore.at(hog), "the hog gets less than before");
    takePicture("2-boost.png", "The Boost: everything but the game is in the background");
  }

  void visitAnotherApp() {
    m_report.heading(std::string(visitor) + " comes to the front for a moment, then the game again");
    const Stage::App& app = m_stage.app(visitor);
    const auto state = [&] { return appState(m_processes, app.pid()); };
    bool held = false;
    m_stage.screen().activate(*app.program);
    auto time = timeUntil([&] { return sameAsBefore(m_before.at(visitor), state()); }, held);
    m_report.check(held, std::string(visitor) + " runs at full speed, " + milliseconds(time) + " later");
    m_report.check(isWhollyInBand(appState(m_processes, m_stage.app(hog).pid())),
                   "the others stay in the background");
    takePicture("3-visit.png", "An app in front during the Boost runs at full speed");
    m_stage.screen().activate(*m_stage.game().program);
    time = timeUntil([&] { return isWhollyInBand(state()); }, held);
    m_report.check(held,
                   std::string(visitor) + " is in the background again, " + milliseconds(time) + " later");
  }

  void quitGame() {
    m_report.heading("The game quits");
    m_stage.game().program->signal(SIGTERM);
    m_report.check(m_stage.game().program->waitForEnd().has_value(), "the game has ended");
    bool held = false;
    const auto time = timeUntil([this] { return everyAppAsBefore(); }, held);
    m_report.check(held, "every class, nice, I/O priority, affinity and group weight is what it was, " +
                             milliseconds(time) + " after its end");
    m_report.check(waitUntil([this] { return m_stage.journal() == "[]"; }), "the journal is empty");
    takePicture("4-after.png", "Everything is back");
  }

  void quitVantle() {
    m_stage.vantle().signal(SIGTERM);
    m_report.check(m_stage.vantle().exitStatus() == 0, "Vantle ends with status 0");
    m_report.check(everyAppAsBefore(), "no app is left slowed");
  }

  std::filesystem::path m_program;
  Report m_report;
  ProcfsProcessTable m_processes;
  Stage m_stage;
  Shares m_sharesBefore;
  std::map<std::string, AppState> m_before;
};

} // namespace

bool runDemo(const std::filesystem::path& program, const std::filesystem::path& folder) {
  return Demo(program, folder).run();
}

} // namespace vantle::demo
