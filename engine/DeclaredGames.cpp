// SPDX-License-Identifier: MIT
#include "engine/DeclaredGames.h"

#include "engine/ProcessQueries.h"

#include <algorithm>
#include <utility>

namespace vantle {

void DeclaredGames::start(std::function<void()> changed) {
  m_changed = std::move(changed);
  m_setting = m_settings.detectGameMode.observe([this] { follow(); });
  follow();
}

void DeclaredGames::follow() {
  const bool isWanted = m_settings.detectGameMode.get();
  if (isWanted == (m_source != nullptr)) return;
  m_games.clear();
  m_source = isWanted ? m_registry.watch([this] { refresh(); }) : nullptr;
}

void DeclaredGames::refresh() {
  std::vector<Game> games;
  for (const ProcessIdentity& process : m_source->processes()) {
    const auto known = std::find_if(m_games.begin(), m_games.end(),
                                    [&](const Game& game) { return game.process == process; });
    games.push_back(known == m_games.end() ? Game{process, appAbove(process)} : *known);
  }
  m_games = std::move(games);
  m_changed();
}

bool DeclaredGames::has(const RunningApplication& app) const {
  if (m_games.empty()) return false;
  const Pid main = app.processIdentifier();
  const Chain chain = chainOf(main);
  return std::any_of(chain.processes.begin(), chain.processes.end(),
                     [this](const ProcessIdentity& process) { return isRegistered(process); }) ||
         std::any_of(m_games.begin(), m_games.end(), [&](const Game& game) {
           return game.startedBy != main && appAbove(game.process) == main;
         });
}

// Not the desktop, nor what it stands on: all that runs would be a game with it.
DeclaredGames::Chain DeclaredGames::chainOf(Pid pid) const {
  Chain chain;
  const auto isKnown = [&chain](const ProcessIdentity& process) {
    return std::find(chain.processes.begin(), chain.processes.end(), process) != chain.processes.end();
  };
  for (Pid current = pid; current >= firstAppPid;) {
    const std::optional<ProcessRecord> record = m_processes.record(current);
    if (!record || record->role == ProcessRole::system || isKnown(identityOf(*record))) return chain;
    if (current != pid && isApp(current)) {
      chain.app = current;
      return chain;
    }
    chain.processes.push_back(identityOf(*record));
    current = record->parent;
  }
  return chain;
}

bool DeclaredGames::isRegistered(const ProcessIdentity& process) const {
  return std::any_of(m_games.begin(), m_games.end(),
                     [&](const Game& game) { return game.process == process; });
}

// 0 for a process that has ended, and for one that is an app itself.
Pid DeclaredGames::appAbove(const ProcessIdentity& process) const {
  if (isApp(process.pid) || !isSameLiveProcess(m_processes, process)) return 0;
  return chainOf(process.pid).app;
}

} // namespace vantle
