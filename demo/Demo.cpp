// SPDX-License-Identifier: MIT
#include "demo/Demo.h"

#include "demo/Report.h"
#include "demo/Scheduling.h"
#include "demo/Stage.h"
#include "engine/AppUsage.h"
#include "platform/linux/process/ProcfsProcessTable.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <numeric>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace vantle::demo {

namespace {

using namespace std::chrono_literals;
using desktop::waitUntil;
using Shares = std::map<std::string, double>;

constexpr const char* hog = "CPU hog";
constexpr const char* visitor = "Mousepad"; // the app that comes to the front during the Boost
constexpr auto measuring = 4s;

std::string percent(double share) { return std::to_string(std::lround(share * 100)) + " %"; }

std::string times(long count) { return count == 1 ? "once" : std::to_string(count) + " times"; }

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

// What the rest of the machine takes changes from one moment to the next; the parts of what is left do not.
double portionOf(const Shares& shares, const std::string& name) {
  const double all = std::accumulate(shares.begin(), shares.end(), 0.0,
                                     [](double sum, const auto& one) { return sum + one.second; });
  return shares.at(name) / all;
}

class Demo {
 public:
  Demo(const Screen::Kind& kind, const std::filesystem::path& program, const std::filesystem::path& folder)
      : m_program(program), m_report(folder), m_processes(BootEpoch(0)), m_stage(kind) {}

  bool run() {
    showTheDesktop();
    startVantleIdle();
    bringGameToFront();
    visitAnotherApp();
    runShortOfMemory();
    quitGame();
    if (m_stage.screen().hasNativeApps()) playNatively();
    takePicture("5-after.png", "Everything is back");
    quitVantle();
    m_report.heading(m_report.allHeld() ? "All of this was measured, and all of it held."
                                        : "Not everything held: see the lines marked FAILED.");
    return m_report.allHeld();
  }

 private:
  void takePicture(const std::string& file, const std::string& caption) {
    if (!m_whyNoPictures.empty()) return;
    m_report.check(m_stage.screen().screenshot(m_report.pathOf(file)), "picture " + file);
    m_report.picture(file, caption);
  }

  bool everyAppInBand() const {
    const auto& apps = m_stage.apps();
    return std::all_of(apps.begin(), apps.end(),
                       [](const Stage::App& app) { return isWhollyInBand(appState(app.pid())); });
  }

  bool everyAppAsBefore() const {
    const auto states = m_stage.states();
    return std::all_of(states.begin(), states.end(),
                       [this](const auto& app) { return sameAsBefore(m_before.at(app.first), app.second); });
  }

  std::string named(const Stage::App& app) { return app.name + m_stage.screen().wayOf(*app.program); }

  // From the click that brings the game to the front until all others are in the background.
  std::chrono::steady_clock::duration timeToBoost(bool& held) {
    const auto begin = std::chrono::steady_clock::now();
    m_stage.screen().ask(*m_stage.game().program);
    held = waitUntil([this] { return everyAppInBand(); });
    return std::chrono::steady_clock::now() - begin;
  }

  // And how often the tone broke off meanwhile.
  Shares processorShares() {
    const long before = m_stage.soundBreaks();
    Shares shares = m_stage.processorShares(measuring);
    m_breaks = m_stage.soundBreaks() - before;
    return shares;
  }

  // A useful app, or which one this machine cannot show and why.
  void sayWhatIsUseful(const std::string& app, const std::string& missing, const std::string& whyMissing) {
    m_report.say(whyMissing.empty() ? "and " + app : "not shown here: " + missing + " (" + whyMissing + ")");
  }

  void sayHowTheToneWas() {
    if (m_stage.whyNoSound().empty()) m_report.say("the tone broke off " + times(m_breaks) + " meanwhile");
  }

  void checkUsefulApps() {
    for (const Stage::App& app : m_stage.usefulApps()) {
      m_report.check(sameAsBefore(m_before.at(app.name), appState(app.pid())), "left alone: " + app.name);
    }
  }

  void showTheDesktop() {
    m_report.heading("A desktop with a game, apps and a CPU hog; nothing is boosted");
    if (const std::string about = m_stage.screen().about(); !about.empty()) m_report.say(about);
    m_whyNoPictures = m_stage.screen().whyNoPictures();
    if (!m_whyNoPictures.empty()) m_report.say("no pictures: " + m_whyNoPictures);
    m_stage.startGame(false);
    m_stage.screen().activate(*m_stage.game().program);
    m_sharesBefore = processorShares();
    m_before = m_stage.states();
    m_report.say("in front: " + named(m_stage.game()));
    for (const Stage::App& app : m_stage.apps()) m_report.say("beside it: " + named(app));
    sayWhatIsUseful("Music, which plays a tone through a child process", "an app that is heard",
                    m_stage.whyNoSound());
    sayWhatIsUseful("Download, which keeps the machine awake with an inhibitor of logind's",
                    "an app that keeps the machine awake", m_stage.whyNoLoginDaemon());
    m_report.say("processor time, in parts of one processor: the game " +
                 percent(m_sharesBefore.at(m_stage.game().name)) + ", the hog " +
                 percent(m_sharesBefore.at(hog)));
    sayHowTheToneWas();
    takePicture("1-before.png", "The game shares the machine with everything else");
  }

  void takePictureWithPanel(const std::string& file, const std::string& caption) {
    const std::optional<int> asked = m_stage.screen().showPanel(m_stage.vantle());
    m_report.check(asked.has_value(), "the panel opens");
    if (asked > 1) m_report.say("it was asked for " + times(*asked) + ": the desktop is busy");
    takePicture(file, caption);
    if (!m_stage.screen().hidePanel(m_stage.vantle())) m_report.check(false, "the panel closes");
  }

  void startVantleIdle() {
    m_stage.screen().activate(*m_stage.app("XTerm").program);
    m_stage.startVantle(m_program);
    m_report.say("Vantle runs; XTerm is in front, so nothing happens");
    m_report.check(everyAppAsBefore(), "no app was changed by the start");
    takePictureWithPanel("1-panel.png", "The panel offers to boost the app in front");
  }

  void bringGameToFront() {
    m_report.heading("The game comes to the front");
    bool held = false;
    const auto time = timeToBoost(held);
    for (const Stage::App& app : m_stage.apps()) {
      const AppState state = appState(app.pid());
      m_report.check(isWhollyInBand(state), "in the background: " + app.name + " (" +
                                                std::to_string(state.sessionNice.size()) + " processes, " +
                                                std::to_string(state.threads.size()) + " threads)");
    }
    m_report.check(held, "all of them were there " + milliseconds(time) + " after the click");
    const AppState game = appState(m_stage.game().pid());
    m_report.check(isWhollyOutOfBand(game), "the game itself is untouched");
    checkUsefulApps();
    m_report.check(m_stage.journal() != "[]", "the journal names what is slowed");

    checkShares();
    takePicture("2-boost.png", "The Boost: everything but the game is in the background");
    takePictureWithPanel("2-panel.png", "The panel tells what the Boost does");
    // The window manager decides who is in front after the panel: an app other than the game would be spared.
    m_stage.screen().activate(*m_stage.game().program);
    m_report.check(waitUntil([this] { return everyAppInBand(); }),
                   "with the game in front again all of them are in the background");
  }

  void checkShares() {
    const Shares shares = processorShares();
    const std::string gameName = m_stage.game().name;
    m_report.say("processor time: the game " + percent(shares.at(gameName)) + " (was " +
                 percent(m_sharesBefore.at(gameName)) + "), the hog " + percent(shares.at(hog)) + " (was " +
                 percent(m_sharesBefore.at(hog)) + ")");
    m_report.check(portionOf(shares, gameName) > portionOf(m_sharesBefore, gameName),
                   "of what all of them get, the game gets a larger part than before");
    m_report.check(shares.at(hog) < m_sharesBefore.at(hog), "the hog gets less than before");
    sayHowTheToneWas();
  }

  void visitAnotherApp() {
    m_report.heading(std::string(visitor) + " comes to the front for a moment, then the game again");
    const Stage::App& app = m_stage.app(visitor);
    const auto state = [&] { return appState(app.pid()); };
    bool held = false;
    m_stage.screen().activate(*app.program);
    auto time = timeUntil([&] { return sameAsBefore(m_before.at(visitor), state()); }, held);
    m_report.check(held, std::string(visitor) + " runs at full speed, " + milliseconds(time) + " later");
    m_report.check(isWhollyInBand(appState(m_stage.app(hog).pid())), "the others stay in the background");
    takePicture("3-visit.png", "An app in front during the Boost runs at full speed");
    m_stage.screen().activate(*m_stage.game().program);
    time = timeUntil([&] { return isWhollyInBand(state()); }, held);
    m_report.check(held,
                   std::string(visitor) + " is in the background again, " + milliseconds(time) + " later");
  }

  void runShortOfMemory() {
    m_report.heading("The kernel says that memory runs short");
    if (!std::filesystem::exists("/proc/pressure/memory")) {
      m_report.say("not shown here: this kernel measures no memory pressure");
      return;
    }
    m_report.say(
        "what is made up: a program gives the pages of a small file back and waits for the disk, over and "
        "over; the kernel's measure of it, its trigger, the program and the notification daemon are real");
    desktop::Program& staller = m_stage.startMemoryPressure();
    bool held = false;
    const auto time = timeUntil([this] { return m_stage.notices().displayed() >= 1; }, held);
    m_report.check(held, "a notice is on the screen " + milliseconds(time) + " after the shortage began");
    takePicture("4-notice.png", "A notice names what uses the most memory");
    staller.kill();
    checkNotice(m_stage.notices().shown());
    checkUsefulApps();
  }

  // The three that use most, by this program's own count.
  void checkNotice(const std::string& shown) {
    std::vector<std::pair<std::uint64_t, std::string>> apps;
    std::set<Pid> roots;
    for (const Stage::App& app : m_stage.apps()) roots.insert(app.pid());
    const AppTrees trees(m_processes, {.apps = roots, .self = ::getpid(), .members = {}});
    for (const Stage::App& app : m_stage.apps())
      apps.emplace_back(appFootprint(m_processes, trees, app.pid()), app.name);
    std::sort(apps.rbegin(), apps.rend());
    m_report.say("it says: " + shown.substr(0, shown.find('\n')));
    const bool isWarning = shown.starts_with("Vantle|Memory is running low|Using the most memory: ");
    const bool isCritical = shown.starts_with("Vantle|Memory almost full|Using the most memory: ");
    // Whoever uses about as much as another may stand in its place.
    constexpr double likeness = 0.9;
    std::istringstream named(shown.substr(std::min(shown.size(), shown.rfind(": ") + 2)));
    bool inOrder = isWarning || isCritical;
    for (std::size_t place = 0; place < 3 && inOrder; ++place) {
      std::string one;
      std::getline(named >> std::ws, one, ',');
      const auto app = std::find_if(apps.begin(), apps.end(), [&](const auto& candidate) {
        return one.starts_with(candidate.second + " ");
      });
      inOrder = app != apps.end() &&
                static_cast<double>(app->first) >= likeness * static_cast<double>(apps[place].first);
    }
    m_report.check(inOrder, "it names the three apps that use the most, the largest first");
  }

  void quitGame() {
    m_report.heading("The game quits");
    if (!m_stage.game().program->isRunning())
      m_report.check(false, "the game runs until it is asked to quit");
    m_stage.game().program->signal(SIGTERM);
    m_report.check(m_stage.game().program->waitForEnd().has_value(), "the game has ended");
    bool held = false;
    const auto time = timeUntil([this] { return everyAppAsBefore(); }, held);
    m_report.check(held, "every class, nice, I/O priority, affinity and group weight is what it was, " +
                             milliseconds(time) + " after its end");
    m_report.check(waitUntil([this] { return m_stage.journal() == "[]"; }), "the journal is empty");
  }

  void playNatively() {
    m_report.heading("The same game as a native app of this desktop");
    m_stage.startGame(true);
    bool held = false;
    const auto time = timeToBoost(held);
    m_report.say("in front: " + named(m_stage.game()));
    m_report.check(held, "all other apps were in the background " + milliseconds(time) + " after the click");
    m_report.check(isWhollyOutOfBand(appState(m_stage.game().pid())), "the game itself is untouched");
    checkUsefulApps();
    checkShares();
    takePicture("5-native.png", "A Boost of a native game");
    quitGame();
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
  std::string m_whyNoPictures;
  long m_breaks = 0; // of the tone, while the shares were measured last
  std::map<std::string, AppState> m_before;
};

} // namespace

bool runDemo(const Screen::Kind& kind, const std::filesystem::path& program,
             const std::filesystem::path& folder) {
  return Demo(kind, program, folder).run();
}

} // namespace vantle::demo
