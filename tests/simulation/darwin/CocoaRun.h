// SPDX-License-Identifier: MIT
#pragma once

#include "base/Invariant.h"
#include "platform/darwin/workspace/CocoaWorkspace.h"
#include "tests/simulation/darwin/DarwinRun.h"
#include "tests/simulation/darwin/SimulatedCocoa.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vantle {

// All that macOS's room has of a machine and that leaves nothing on a disk; the rest is the desktop's.
struct CocoaParts {
  explicit CocoaParts(SimulatedMachine& desktop) : system(desktop) {}

  DarwinParts system;
  CocoaWorkspace workspace;

  Machine on(SimulatedMachine& desktop) { return on(desktop, workspace); }
  Machine on(SimulatedMachine& desktop, Workspace& apps) {
    const Machine rest = system.on(desktop);
    return {rest.host,     rest.processes,     rest.band,     apps,       rest.audio, rest.power,
            rest.pressure, rest.notifications, rest.defaults, rest.files, rest.clock, rest.launcher,
            rest.text,     rest.loginItem,     rest.catalog,  rest.hooks, rest.games};
  }
};

// Passes on what the real one tells, until the program dies of it. The Foundation's centre is not made to be
// left by the exception that a death is here: it waits until the centre has returned, and meanwhile the
// program hears of nothing.
class MortalWorkspace final : public Workspace {
 public:
  explicit MortalWorkspace(Workspace& real) : m_real(real) {}

  std::vector<AppRef> runningApplications() const override { return m_real.runningApplications(); }
  AppRef frontmostApplication() const override { return m_real.frontmostApplication(); }
  AppRef runningApplication(Pid pid) const override { return m_real.runningApplication(pid); }
  std::unique_ptr<Registration> observe(WorkspaceEvent event, Handler handler) override {
    return m_real.observe(event, [this, handler = std::move(handler)](const AppRef& app) {
      if (m_death) return;
      try {
        handler(app);
      } catch (const SimulatedCrash& death) {
        m_death = death;
      }
    });
  }
  void dieIfDue() {
    if (m_death) throw *std::exchange(m_death, std::nullopt);
  }

 private:
  Workspace& m_real;
  std::optional<SimulatedCrash> m_death;
};

// Real bundles of games, on a disk, as long as this object: the Foundation reads there what kind an app is.
class GameBundles {
 public:
  GameBundles() {
    std::string folder = (std::filesystem::temp_directory_path() / "vantle-games-XXXXXX").string();
    invariant(::mkdtemp(folder.data()) != nullptr, "no folder for bundles");
    m_folder = folder;
  }
  ~GameBundles() { std::filesystem::remove_all(m_folder); }
  GameBundles(const GameBundles&) = delete;
  GameBundles& operator=(const GameBundles&) = delete;

  std::string named(const std::string& name, const std::string& category) const {
    const std::filesystem::path bundle = m_folder / (name + ".app");
    const std::filesystem::path resources = bundle / "Resources"; // where the free Foundation looks
    if (std::filesystem::create_directories(resources)) {
      std::ofstream(resources / "Info.plist")
          << R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)"
          << "<key>LSApplicationCategoryType</key><string>" << category << "</string></dict></plist>\n";
    }
    return bundle.string();
  }

 private:
  std::filesystem::path m_folder;
};

// An evening on the apps as the system's own classes tell of them.
class CocoaRun final : public DarwinRun {
 public:
  CocoaRun(std::uint64_t seed, RunOptions options) : DarwinRun(seed, std::move(options)) {
    for (const auto event : {WorkspaceEvent::activated, WorkspaceEvent::launched, WorkspaceEvent::terminated})
      m_afterNotices.push_back(m_machine.workspace.observe(event, [this](const AppRef&) { dieIfDue(); }));
  }
  ~CocoaRun() override {
    m_engine.reset();
    programEnded();
  }
  CocoaRun(const CocoaRun&) = delete;
  CocoaRun& operator=(const CocoaRun&) = delete;

 private:
  const std::vector<Choice>& choices() const override {
    static const std::vector<Choice> all = [this] {
      std::vector<Choice> choices = DarwinRun::choices();
      choices.push_back({6, "processes are told to be over", static_cast<Event>(&CocoaRun::tellOfExits)});
      choices.push_back({1, "nobody is told to be in front", static_cast<Event>(&CocoaRun::tellOfNobody)});
      return choices;
    }();
    return all;
  }

  AppSpec randomSpec() override {
    static const GameBundles bundles;
    AppSpec spec = DarwinRun::randomSpec();
    if (spec.category)
      spec.bundlePath = bundles.named(std::filesystem::path(*spec.bundlePath).filename(), *spec.category);
    return spec;
  }

  void arrangeMachine() override {
    constexpr Pid highestPid = 96;
    DarwinRun::arrangeMachine();
    m_cocoa.exitsAreFirst = m_random.oneIn(2);
    m_cocoa.endsAreTold = !m_random.oneIn(4);
    // The system gives out all its numbers before it gives out one again, and tells of an end in less time.
    if (m_isLazy) m_machine.processes.setHighestPid(highestPid);
    m_machine.processes.isReserved = [this](Pid pid) {
      const auto& apps = m_machine.workspace.apps();
      return std::any_of(apps.begin(), apps.end(),
                         [pid](const SimulatedAppRef& app) { return app->processIdentifier() == pid; });
    };
  }
  Machine ports() override {
    programEnded();
    m_parts = std::make_unique<CocoaParts>(m_machine);
    m_workspace.emplace(m_parts->workspace);
    return m_parts->on(m_machine, *m_workspace);
  }
  void programEnded() override {
    m_workspace.reset();
    m_parts.reset();
    DarwinRun::programEnded();
  }

  // Whichever way an end was told, it was heard.
  void eventEnded() override {
    if (!m_engine || m_machine.workspace.queuedEvents() > 0) return;
    const auto isOver = [this](Pid pid) {
      const auto& apps = m_machine.workspace.apps();
      return std::none_of(apps.begin(), apps.end(), [pid](const SimulatedAppRef& app) {
        return !app->isTerminated() && app->processIdentifier() == pid;
      });
    };
    const AppRef game = m_engine->activeGame.get();
    if (game && isOver(game->processIdentifier()))
      m_checker.fail("a Boost of an app that is over", game->processIdentifier());
    for (const auto& [pid, app] : m_engine->managed()) {
      if (isOver(pid)) m_checker.fail("listed although it is over", pid);
    }
  }

  void dieIfDue() {
    if (m_workspace) m_workspace->dieIfDue();
  }
  void tellOfExits() {
    m_kernel.tellOfExits();
    dieIfDue();
  }
  void tellOfNobody() {
    m_cocoa.postActivationOfNobody();
    m_cocoa.postActivationOfSomethingElse();
  }

  const ReleasePool m_pool; // of what a death leaves on its way
  SimulatedCocoa m_cocoa{m_kernel};
  std::vector<std::unique_ptr<Registration>> m_afterNotices;
  std::unique_ptr<CocoaParts> m_parts;
  std::optional<MortalWorkspace> m_workspace;
};

} // namespace vantle
