// SPDX-License-Identifier: MIT
#include "platform/linux/windows/toplevels/ToplevelWindows.h"

#include "platform/linux/apps/AppIdMatch.h"
#include "platform/linux/apps/DesktopIdentity.h"

#include <algorithm>
#include <unistd.h>
#include <utility>

namespace vantle {

using SteadyClock = std::chrono::steady_clock;

namespace {

constexpr std::chrono::milliseconds longestTurn{10};
// Of the time that a search took, until the next: whoever opens windows all the time keeps a fifth of a
// processor busy with it at most.
constexpr int pauseFactor = 4;
// From the moment that a look found a client connected, for its first window to come: others' windows have it
// seen before that.
constexpr std::chrono::seconds longestBeginning{30};

std::chrono::milliseconds leftUntil(SteadyClock::time_point end) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - SteadyClock::now());
  return std::max(left, std::chrono::milliseconds(0));
}

// Of the windows without an owner that have come together: whether one client may have opened them all.
bool areOfOneApp(const std::vector<WindowFacts*>& windows) {
  return !windows.empty() && std::all_of(windows.begin(), windows.end(), [&](const WindowFacts* window) {
    return window->applicationId == windows.front()->applicationId;
  });
}

} // namespace

// What each client is, and whom windows of one app id fit: found out once for each of them.
class ToplevelWindows::Matching {
 public:
  Matching(const std::vector<DesktopClient>& clients, const std::vector<DesktopEntry>& entries)
      : m_entries(entries) {
    for (const DesktopClient& client : clients) {
      m_clients.emplace_back(&client, findEntry(client.evidence, entries));
    }
  }

  // Null where none fits, or several do.
  const DesktopClient* onlyOne(const std::string& applicationId) {
    const auto [place, isNew] = m_found.try_emplace(applicationId, nullptr);
    if (isNew) place->second = find(AppIdMatch(applicationId, m_entries));
    return place->second;
  }

 private:
  const DesktopClient* find(const AppIdMatch& match) const {
    const DesktopClient* found = nullptr;
    for (const auto& [client, entry] : m_clients) {
      if (!match.fits(client->evidence, entry)) continue;
      if (found != nullptr) return nullptr;
      found = client;
    }
    return found;
  }

  const std::vector<DesktopEntry>& m_entries;
  std::vector<std::pair<const DesktopClient*, const DesktopEntry*>> m_clients;
  std::map<std::string, const DesktopClient*> m_found;
};

ToplevelWindows::ToplevelWindows(EventLoop& loop, const Kernel& kernel, Descriptor socket, Options options)
    : m_loop(loop), m_kernel(kernel), m_options(std::move(options)),
      m_connection(loop, std::move(socket), {.turnEnded = [this] { follow(); }, .lost = [this] { lose(); }}) {
}

void ToplevelWindows::learnWhetherOffered(SteadyClock::time_point end) {
  m_connection.pump();
  while (m_connection.isOpen() && !isOffered() && SteadyClock::now() < end) {
    m_connection.waitForNews(leftUntil(end));
    m_connection.pump();
  }
}

void ToplevelWindows::follow() {
  const std::map<WindowId, Toplevel>& shown = m_connection.toplevels();
  const auto isGone = [&](const auto& entry) { return !shown.contains(entry.first); };
  // One of two that could not be told apart may be left.
  if (std::erase_if(m_known, isGone) > 0) m_isChanged = m_isStale = true;
  std::erase_if(m_orphans, [&](WindowId id) { return !shown.contains(id); });
  for (const auto& [id, toplevel] : shown) {
    const auto known = m_known.find(id);
    if (known != m_known.end() && known->second.applicationId == toplevel.applicationId) continue;
    m_isStale = true;
    if (known == m_known.end()) continue;
    known->second.applicationId = toplevel.applicationId;
    m_isChanged = true;
  }
  prepareSearch();
  tell();
}

// There is nothing to look for while every window has an owner. But at the start: who is there by then is no
// newcomer.
void ToplevelWindows::prepareSearch() {
  if (!m_isStale || m_turn || !m_connection.isListed()) return;
  m_isStale = false;
  const bool isAnySought = std::any_of(
      m_connection.toplevels().begin(), m_connection.toplevels().end(), [this](const auto& entry) {
        const auto known = m_known.find(entry.first);
        return known == m_known.end() || (!known->second.process && !m_orphans.contains(entry.first));
      });
  if (m_hasLooked && !isAnySought) return;
  const auto pause = pauseFactor * (m_searchEnded - m_searchBegan);
  m_turn = m_loop.after(leftUntil(m_searchEnded + pause), [this] { search(); });
}

void ToplevelWindows::search() {
  if (!m_search) {
    m_sought.clear();
    for (const auto& [id, toplevel] : m_connection.toplevels()) m_sought.insert(id);
    m_searchBegan = SteadyClock::now();
    m_search = std::make_unique<ClientSearch>(m_kernel, m_connection.descriptor(), m_options.display);
  }
  if (!m_search->advance(SteadyClock::now() + longestTurn)) {
    m_turn = m_loop.after(std::chrono::milliseconds(0), [this] { search(); });
    return;
  }
  takeClients(m_search->clients());
  m_search.reset();
  m_turn.reset();
  m_searchEnded = SteadyClock::now();
  prepareSearch();
  tell();
}

void ToplevelWindows::takeClients(const std::vector<DesktopClient>& clients) {
  const std::map<WindowId, WindowFacts> before = m_known;
  meet(clients);
  const std::vector<WindowFacts*> ownerless = takeFitting(clients);
  const Clients newcomers = newcomersAmong(clients);
  if (newcomers.size() == 1 && areOfOneApp(ownerless)) {
    for (WindowFacts* const window : ownerless) own(*window, *newcomers.front());
  }
  const bool areXClientsThere = std::any_of(clients.begin(), clients.end(), [](const DesktopClient& client) {
    return client.isX11 && client.pid != ::getpid();
  });
  for (auto& [id, window] : m_known) {
    if (!window.process) window.isX11 = areXClientsThere && !m_orphans.contains(id);
  }
  if (m_known != before) m_isChanged = true;
}

// Gives each window to the one client that it fits; the new ones without such a client are left.
std::vector<WindowFacts*> ToplevelWindows::takeFitting(const std::vector<DesktopClient>& clients) {
  Matching matching(clients, m_options.installed->all());
  std::vector<WindowFacts*> ownerless;
  for (const WindowId id : m_sought) {
    const auto shown = m_connection.toplevels().find(id);
    if (shown == m_connection.toplevels().end() || m_orphans.contains(id)) continue;
    const auto [place, isNew] = m_known.try_emplace(id);
    WindowFacts& window = place->second;
    if (window.process) continue;
    window.id = id;
    window.applicationId = shown->second.applicationId;
    window.canBeClosed = true;
    const DesktopClient* const client = matching.onlyOne(window.applicationId);
    if (client != nullptr) own(window, *client);
    if (client == nullptr && isNew) ownerless.push_back(&window);
  }
  return ownerless;
}

// Who is there at the first look is no newcomer.
void ToplevelWindows::meet(const std::vector<DesktopClient>& clients) {
  const SteadyClock::time_point newUntil =
      m_hasLooked ? SteadyClock::now() + longestBeginning : SteadyClock::time_point::min();
  const auto before = std::exchange(m_met, {});
  for (const DesktopClient& client : clients) {
    for (const auto& [socket, path] : client.sockets) {
      const auto known = before.find(socket);
      m_met.emplace(socket, known == before.end() ? newUntil : known->second);
    }
  }
  m_hasLooked = true;
}

bool ToplevelWindows::isNewcomer(const DesktopClient& client) const {
  return std::all_of(client.sockets.begin(), client.sockets.end(),
                     [this](const auto& socket) { return SteadyClock::now() < m_met.at(socket.first); });
}

ToplevelWindows::Clients ToplevelWindows::newcomersAmong(const std::vector<DesktopClient>& clients) const {
  Clients newcomers;
  for (const DesktopClient& client : clients) {
    if (client.pid != ::getpid() && isNewcomer(client)) newcomers.push_back(&client);
  }
  return newcomers;
}

// With the process's descriptor open it is asked once more whether it still is that client. An X client's
// windows are the X server's to tell of.
void ToplevelWindows::own(WindowFacts& window, const DesktopClient& client) {
  for (const auto& [socket, path] : client.sockets) m_met[socket] = SteadyClock::time_point::min();
  if (!client.isNative) return;
  WindowOwner owner = m_processes.believe(m_kernel, client.pid, window.id == active());
  if (!owner.process || !client.isStillThere() || hasEnded(*owner.process)) return;
  window.pid = owner.pid;
  window.process = std::move(owner.process);
  window.isX11 = false;
}

void ToplevelWindows::forget(Pid pid) {
  for (auto& [id, window] : m_known) {
    if (window.pid != pid) continue;
    window.pid = 0;
    window.process.reset();
    m_orphans.insert(id);
    m_isChanged = true;
  }
  m_processes.forget(pid);
  m_isStale = true; // there is a descriptor now for one that got none before
  prepareSearch();
  tell();
}

bool ToplevelWindows::settle(std::chrono::milliseconds limit) {
  const SteadyClock::time_point end = SteadyClock::now() + limit;
  for (;;) {
    const bool isAllTaken = m_connection.pump();
    if (!m_connection.isOpen()) return false;
    if (m_turn) search();
    const bool isSettled = isAllTaken && m_connection.isListed() && !m_turn;
    const auto left = leftUntil(end);
    if (isSettled || left.count() == 0) return isSettled;
    if (!m_turn) m_connection.waitForNews(left);
  }
}

void ToplevelWindows::tell() {
  if (std::exchange(m_active, active()) != active()) m_isChanged = true;
  if (std::exchange(m_isChanged, false)) m_handlers.changed();
}

void ToplevelWindows::lose() {
  m_turn.reset();
  m_search.reset();
  m_known.clear();
  m_orphans.clear();
  m_processes.clear();
  m_handlers.lost();
}

} // namespace vantle
