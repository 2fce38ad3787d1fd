// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"
#include "engine/ports/ProcessTable.h"
#include "engine/ports/RegisteredGames.h"
#include "engine/ports/Workspace.h"

#include <functional>
#include <memory>
#include <vector>

namespace vantle {

// The apps whose processes are registered as games, while the person wants that to count.
class DeclaredGames {
 public:
  // All of them outlive it. Follows nothing before it is started.
  DeclaredGames(AppSettings& settings, RegisteredGames& registry, const ProcessTable& processes,
                const Workspace& workspace)
      : m_settings(settings), m_registry(registry), m_processes(processes), m_workspace(workspace) {}

  // From now on as the setting says, whenever that changes; calls back after the registrations have changed.
  void start(std::function<void()> changed);

  // An app counts when its main process is registered, or a process above that up to the next app: a wrapper
  // has done it for the app that it started. So does one with a registered process below it, if it got its
  // first window later than that one was registered: it only shows what the game draws. Who was an app
  // before (a store, a terminal) has just started the game.
  bool has(const RunningApplication& app) const;

 private:
  struct Game {
    ProcessIdentity process;
    Pid startedBy = 0; // the app that it belonged to when it was heard of; 0 for none
  };
  // The processes from one up to the next app, or to the system, without these; and that app, or 0.
  struct Chain {
    std::vector<ProcessIdentity> processes;
    Pid app = 0;
  };

  void follow();
  void refresh();
  bool isApp(Pid pid) const { return m_workspace.runningApplication(pid) != nullptr; }
  Chain chainOf(Pid pid) const;
  bool isRegistered(const ProcessIdentity& process) const;
  Pid appAbove(const ProcessIdentity& process) const;

  AppSettings& m_settings;
  RegisteredGames& m_registry;
  const ProcessTable& m_processes;
  const Workspace& m_workspace;
  std::function<void()> m_changed;
  std::unique_ptr<Registration> m_setting;
  std::unique_ptr<RegisteredGames::Source> m_source; // null while the person does not want it
  std::vector<Game> m_games;
};

} // namespace vantle
