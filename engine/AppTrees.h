// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ProcessIdentity.h"
#include "engine/ports/ProcessView.h"

#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vantle {

// One look at the machine that says for every process which app it belongs to:
//
//   - to the nearest running app at or above it, so that an app which another one started (from a terminal,
//     say) is an app of its own, however late its window came;
//   - a wrapper, which has no window and waits for the end of the one app that it was started for, to that
//     app, with what it has started beside it;
//   - an orphan, when no app is above it any more, to the app of the first rule that finds one: the app that
//     it was slowed with; the only one that it came with (from one image, out of one folder); the app that
//     the first process of its session belongs to; the only one in a session without a first process; the
//     only one in the place that the desktop made for it, whoever in another place started it.
//
// This program is an app to itself and never a part of what started it. Where apps are not each other's
// children and nobody has sessions, an app's processes are just its tree.
class AppTrees final : public ProcessView {
 public:
  struct Known {
    std::set<Pid> apps{};                                   // the main processes of all running apps
    std::vector<ProcessIdentity> roots{};                   // further ones, if they still are those
    Pid self = 0;                                           // this program
    std::vector<std::pair<ProcessIdentity, Pid>> members{}; // who was seen in whose tree before
  };

  AppTrees() = default; // sees nothing
  AppTrees(const ProcessTable& table, const Known& known);

  // The main process, always, then all that belongs to it, each once, depth first from a stack: of two
  // siblings the one listed later comes first. Wrappers follow, and orphans as they are listed.
  const std::vector<Pid>& processesOf(Pid app) const;

  // The app of this very process; 0 when it is nobody's or lives no longer.
  Pid ownerOf(const ProcessIdentity& identity) const;

  // Whether the process is this program or stands above it.
  bool isOwnChain(Pid pid) const { return m_ownChain.contains(pid); }

  // Those of a Boost app's ancestors that belong to no app and are neither the desktop nor a shell: a store
  // whose windows are drawn by a process of their own is such a one. What it started beside the Boost app
  // belongs to the launcher as well.
  std::set<Pid> clientsAmong(const std::set<Pid>& gameAncestors, Pid game) const;
  bool isPartOf(Pid app, const std::set<Pid>& clients) const;

 private:
  // The mark was read before the scan: whoever is born during it makes it look old.
  AppTrees(const ProcessTable& table, const Known& known, std::optional<std::uint64_t> birthMark,
           std::shared_ptr<const void> hold);

  void adoptWrappers();
  // `below` is the app, or the wrapper of it that was found last.
  bool isWrapperOf(const ProcessRecord& record, const ProcessRecord& app, Pid below) const;
  bool isSessionWithoutSystem(Pid session) const;
  void adoptOrphans(const Known& known);
  Pid orphanOwner(const ProcessRecord& orphan, const Known& known) const;
  bool isLeftBehind(const ProcessRecord& process) const;
  // The rules for orphans; each answers 0 when it finds no app.
  Pid appSlowedWith(const ProcessRecord& orphan, const Known& known) const;
  Pid appOfOrigin(const ProcessRecord& orphan, const Known& known) const;
  Pid inSamePlace(Pid app, const ProcessRecord& orphan) const; // the app, or 0
  Pid appOfSession(const ProcessRecord& orphan, const Known& known) const;
  Pid appLeftInSession(const ProcessRecord& orphan, const Known& known) const;
  Pid appOfPlace(const ProcessRecord& orphan, const Known& known) const;
  bool standsAboveTheDesktop(Pid pid, const std::set<Pid>& gameAncestors) const;

  const std::string& placeOf(Pid pid) const;

  const ProcessTable* m_table = nullptr; // asked for places only
  std::shared_ptr<const void> m_hold;    // makes further records cheaper while this look is in use
  std::unordered_map<Pid, std::vector<Pid>> m_processes;
  std::set<Pid> m_ownChain;
  std::uint32_t m_ownUser = 0;
  mutable std::map<Pid, std::string> m_places;                 // as far as they were asked for
  mutable std::optional<std::map<std::string, Pid>> m_origins; // the app of each; 0 where there are several
};

} // namespace vantle
