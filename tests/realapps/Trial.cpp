// SPDX-License-Identifier: MIT
#include "tests/realapps/Trial.h"

#include "tests/realapps/Evidence.h"
#include "tests/support/KernelState.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <sched.h>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace vantle::realapps {

namespace {

using desktop::KernelState;
using desktop::waitUntil;
using std::chrono::seconds;

// The largest programs' first starts, with a profile to be made, on a machine that is busy otherwise.
constexpr seconds longestStart{120};
constexpr seconds longestEffect{10};
constexpr std::chrono::milliseconds settled{2500};

struct State {
  KernelState kernel;
  UnitState unit;
};

State stateOf(Pid pid) { return {desktop::kernelState(pid), unitState(pid)}; }

// At the band's values, however it got there: the mark of the idle I/O class on each thread, and the weight
// of the unit or the session or the class of every thread.
bool isSlowedWhole(const State& process) {
  constexpr int lowest = 19;
  const KernelState& state = process.kernel;
  return !state.threads.empty() &&
         std::all_of(state.threads.begin(), state.threads.end(), [&](const auto& entry) {
           return test::isIdleClass(entry.second) &&
                  (entry.second.policy == SCHED_IDLE || state.sessionNice == lowest || process.unit.isIdle);
         });
}

bool isUntouched(const State& process) {
  const KernelState& state = process.kernel;
  return !process.unit.isIdle &&
         std::none_of(state.threads.begin(), state.threads.end(), [](const auto& entry) {
           return test::isIdleClass(entry.second) || entry.second.policy == SCHED_IDLE;
         });
}

// What can be changed from outside; a program may choose a nice value of its own for a thread at any time.
bool isAsBefore(const State& then, const State& process) {
  const KernelState& before = then.kernel;
  const KernelState& now = process.kernel;
  return isUntouched(process) && process.unit == then.unit && now.sessionNice == before.sessionNice &&
         std::all_of(now.threads.begin(), now.threads.end(), [&](const auto& entry) {
           const auto known = before.threads.find(entry.first);
           return known == before.threads.end() || (known->second.policy == entry.second.policy &&
                                                    known->second.ioPriority == entry.second.ioPriority &&
                                                    known->second.affinity == entry.second.affinity);
         });
}

std::string count(std::size_t number, const std::string& one, const std::string& many) {
  return std::to_string(number) + " " + (number == 1 ? one : many);
}

class Performance {
 public:
  Performance(const Program& program, Way way, const std::filesystem::path& vantle, Surroundings surroundings)
      : m_program(program), m_stage(program, vantle, way, surroundings) {
    m_row.program = program.key;
    m_row.way = textOf(way);
    m_row.version = m_stage.outputOf({"dpkg-query", "-W", "-f", "${Version}", program.package});
  }

  Row play() {
    try {
      m_stage.startVantle(true);
      m_stage.start(m_program);
      if (waitForWindow()) {
        playInFront();
        m_stage.endVantle();
        playBehind();
      }
    } catch (const std::exception& failure) {
      wrong(std::string("the stage: ") + failure.what());
    }
    endProgram();
    return std::move(m_row);
  }

 private:
  // On an emulated machine a wait that is in vain takes a quarter of an hour: whoever looks on learns for
  // what.
  bool waitFor(const char* what, const std::function<bool()>& condition, seconds limit = longestEffect) {
    const auto begin = std::chrono::steady_clock::now();
    bool isSaid = false;
    return waitUntil(
        [&] {
          if (condition()) return true;
          if (!isSaid && std::chrono::steady_clock::now() - begin > seconds(30)) {
            isSaid = true;
            std::string names;
            for (const Pid pid : own()) names += " " + nameOf(pid);
            std::cout << m_row.program << ", " << m_row.way << ": still waits for " << what << ", with"
                      << (names.empty() ? " nothing of it there" : names) << std::endl;
          }
          return false;
        },
        limit);
  }

  void wrong(const std::string& what) { m_row.wrong += (m_row.wrong.empty() ? "" : "; ") + what; }

  // All that the start has brought and that lives, but for the terminal in which it was typed.
  std::set<Pid> own() {
    std::set<Pid> all = m_stage.processes();
    std::erase_if(
        all, [&](Pid pid) { return m_stage.furniture().contains(pid) || m_stage.starters().contains(pid); });
    return all;
  }

  // Programs show pictures of themselves first, and dialogs: the one that stays is meant.
  bool waitForWindow() {
    auto since = std::chrono::steady_clock::now();
    std::vector<std::uint32_t> known;
    std::size_t asked = 0;
    const bool isThere = waitFor(
        "its window",
        [&] {
          const std::set<Pid> mine = own();
          std::vector<std::uint32_t> now;
          for (const auto& window : m_stage.desktop().windows().list()) {
            if (!mine.contains(window.pid) || window.title.find(m_program.title) == std::string::npos)
              continue;
            now.push_back(window.id);
            m_owners[window.id] = window.pid;
          }
          if (now != known) since = std::chrono::steady_clock::now();
          known = now;
          const auto waited = std::chrono::steady_clock::now() - since;
          if (known.empty()) return mine.empty() && waited > longestStart / 6;
          if (waited < settled) return false;
          m_window = m_stage.desktop().windows().active();
          if (std::find(known.begin(), known.end(), m_window) != known.end()) return true;
          // Not each of them can be brought to the front.
          m_stage.desktop().windows().activate(known[asked++ % known.size()]);
          since = std::chrono::steady_clock::now() - settled + seconds(1);
          return false;
        },
        longestStart);
    if (!isThere || known.empty()) {
      wrong(own().empty() ? "it has ended" : "no window of it came to the front");
      return false;
    }
    m_owner = m_owners.at(m_window);
    m_row.evidence = evidenceOf(m_stage, m_window, m_owner, own());
    return true;
  }

  // The entry of the app in what Vantle says: of the window's process, or of another one of the program.
  std::optional<Json> found(const Json& status) {
    std::optional<Json> other;
    const std::set<Pid> mine = own();
    for (const Json& app : status.arrayAt("apps")) {
      const Pid pid = static_cast<Pid>(app.integerAt("pid").value_or(0));
      if (pid == m_owner) return app;
      if (mine.contains(pid)) other = app;
    }
    return other;
  }

  bool isBoosted(const Json& status) {
    const Json* boost = status.find("boost");
    const Json* app = boost == nullptr ? nullptr : boost->find("app");
    return app != nullptr && own().contains(static_cast<Pid>(app->integerAt("pid").value_or(0)));
  }

  void playInFront() {
    Json status;
    if (m_program.kind == Kind::game) {
      const auto isIt = [&] { return isBoosted(status = m_stage.status()); };
      if (!waitFor("its Boost", isIt)) wrong("no Boost while it is in front");
    } else {
      status = m_stage.status();
      if (isBoosted(status)) wrong("taken for a game");
      const std::string said = m_stage.vantle({"boost"});
      const auto isIt = [&] { return isBoosted(status = m_stage.status()); };
      if (!waitFor("its Boost", isIt)) wrong("no Boost of it when asked for: " + said);
    }
    describe(status);
    m_row.identity = m_row.wrong.empty() ? "right" : "wrong";
    m_row.boost = isBoosted(status) ? m_program.kind == Kind::game ? "by itself" : "asked for" : "no";
    if (m_row.boost == "no") return;
    if (!waitFor("the terminal to be slowed",
                 [&] { return isSlowedWhole(stateOf(m_stage.witness().pid())); }))
      wrong("the terminal beside it keeps its speed");
    for (const Pid pid : own())
      if (!isUntouched(stateOf(pid)) && desktop::isAlive(pid))
        wrong("slowed though it is the Boost's own: " + nameOf(pid));
    if (m_program.beside) turnToTheOther();
  }

  // The process goes on when the game's window is closed, with another one that is no game.
  void turnToTheOther() {
    auto& desktop = m_stage.desktop();
    std::uint32_t game = 0;
    std::uint32_t other = 0;
    for (const auto& window : desktop.windows().list()) {
      if (window.pid != m_owner) continue;
      (window.title.find(m_program.title) != std::string::npos ? game : other) = window.id;
    }
    if (game == 0 || other == 0) return wrong("no other window");
    desktop.activate(other);
    desktop.run({"wmctrl", "-i", "-c", std::to_string(game)});
    if (!waitFor("the end of its Boost", [&] { return !isBoosted(m_stage.status()); }))
      wrong("the Boost goes on without the game's window");
  }

  void describe(const Json& status) {
    const std::optional<Json> app = found(status);
    if (!app) {
      wrong("not among the apps");
      return;
    }
    m_row.name = app->textAt("name").value_or("");
    m_row.foundAs = app->textAt("id").value_or("–");
    const std::string file = m_stage.desktopFileOf(m_row.foundAs);
    const std::string icon = file.empty() ? std::string() : keyOf(file, "Icon");
    m_row.icon = icon.empty() ? "none" : hasPicture(icon) ? icon : icon + " (no picture)";
    const auto& others = m_program.others;
    if (m_row.foundAs != m_program.file &&
        std::find(others.begin(), others.end(), m_row.foundAs) == others.end())
      wrong("found as " + m_row.foundAs + " instead of " + m_program.file);
    const std::string wanted = file.empty() ? m_program.name : keyOf(file, "Name");
    if (!wanted.empty() && m_row.name != wanted) wrong("called " + m_row.name + " instead of " + wanted);
  }

  void playBehind() {
    m_stage.startVantle(false);
    // Its own processes may still come and go.
    std::map<Pid, State> before;
    for (const Pid pid : own()) before[pid] = stateOf(pid);
    desktop::Program& game = m_stage.startGame();
    // A program may well want the front back at that moment.
    desktop::require("a Boost of the stage's own game", [&] {
      if (isSlowedWhole(stateOf(m_stage.witness().pid()))) return true;
      m_stage.desktop().activate(game);
      return false;
    });
    const auto stragglers = [&] {
      std::vector<Pid> left;
      for (const Pid pid : own())
        if (desktop::isAlive(pid) && !isSlowedWhole(stateOf(pid))) left.push_back(pid);
      return left;
    };
    if (m_program.isHeard) {
      std::this_thread::sleep_for(seconds(3));
      const std::set<Pid> mine = own();
      const bool isSpared =
          std::all_of(mine.begin(), mine.end(), [](Pid pid) { return isUntouched(stateOf(pid)); });
      m_row.soundSpared = isSpared ? "yes" : "no";
      m_row.slowedWhole = m_row.backWhole = "spared";
      if (!isSpared) wrong("slowed while it is heard");
    } else {
      const bool isWhole = waitFor("it to be slowed whole", [&] {
        if (stragglers().empty()) return true;
        m_stage.desktop().activate(game); // one that wants the front back is at full speed there, rightly
        return false;
      });
      std::size_t threads = 0;
      const std::set<Pid> mine = own();
      for (const Pid pid : mine) threads += desktop::kernelState(pid).threads.size();
      const std::string size =
          count(mine.size(), "process", "processes") + ", " + count(threads, "thread", "threads");
      m_row.slowedWhole = (isWhole ? "yes: " : "no: ") + size;
      if (!isWhole) {
        std::string names;
        for (const Pid pid : stragglers()) names += (names.empty() ? "" : ", ") + nameOf(pid);
        const std::optional<Json> app = found(m_stage.status());
        wrong(
            "not slowed behind: " + names +
            (app ? " (" + app->textAt("state").value_or("") + ", " + app->textAt("reason").value_or("") + ")"
                 : " (not among the apps)"));
      }
    }
    game.kill();
    const auto changed = [&] {
      std::vector<Pid> left;
      for (const Pid pid : own()) {
        const auto known = before.find(pid);
        const State now = stateOf(pid);
        if (!desktop::isAlive(pid)) continue;
        if (known == before.end() || known->second.kernel.start != now.kernel.start
                ? !isUntouched(now)
                : !isAsBefore(known->second, now))
          left.push_back(pid);
      }
      return left;
    };
    const bool isBack = waitFor("it to be put back", [&] { return changed().empty(); });
    if (!m_program.isHeard) m_row.backWhole = isBack ? "yes" : "no";
    if (!isBack) {
      std::string names;
      for (const Pid pid : changed()) names += (names.empty() ? "" : ", ") + nameOf(pid);
      wrong("not back: " + names);
    }
    m_stage.endVantle();
  }

  static std::string nameOf(Pid pid) {
    const auto state = test::processState(pid);
    return state ? state->name : "?";
  }

  void endProgram() {
    m_stage.endVantle();
    waitUntil([&] {
      std::set<Pid> left = m_stage.processes();
      std::erase_if(left, [&](Pid pid) { return m_stage.furniture().contains(pid); });
      for (const Pid pid : left) ::kill(pid, SIGKILL);
      return left.empty();
    });
  }

  const Program& m_program;
  Stage m_stage;
  Row m_row;
  std::map<std::uint32_t, Pid> m_owners;
  std::uint32_t m_window = 0;
  Pid m_owner = 0;
};

} // namespace

Row Trial::play(Way way) const { return Performance(m_program, way, m_vantle, m_surroundings).play(); }

} // namespace vantle::realapps
