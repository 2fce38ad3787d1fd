// SPDX-License-Identifier: MIT
#include "platform/linux/windows/joined/JoinedWindows.h"

#include <algorithm>
#include <utility>

namespace vantle {

namespace {

// KWin 5.27 and 6.3 were seen to tell the X server within 0.4 to 4 ms, 28 ms on a busy machine.
constexpr std::chrono::milliseconds longestWait{200};

// The numbers of an X server have 32 bits, and no desktop's own come this far.
constexpr WindowId xServers = WindowId{1} << 63U;

} // namespace

JoinedWindows::JoinedWindows(EventLoop& loop, std::unique_ptr<DesktopWindows> desktop, Connect connect)
    : m_loop(loop), m_connect(std::move(connect)), m_desktop(std::move(desktop)) {}

void JoinedWindows::start(Handlers handlers) {
  m_handlers = std::move(handlers);
  m_desktop->start({.changed =
                        [this] {
                          followXWindows();
                          update();
                        },
                    .lost = [this] { lose(); }});
}

void JoinedWindows::update() {
  waitForXServer();
  merge();
  m_handlers.changed();
}

void JoinedWindows::followXWindows() {
  std::set<WindowId> shown;
  for (const auto& [id, window] : m_desktop->known()) {
    if (window.isX11) shown.insert(id);
  }
  const bool isNewShown = !std::includes(m_xWindows.begin(), m_xWindows.end(), shown.begin(), shown.end());
  m_xWindows = std::move(shown);
  if (m_xWindows.empty()) return disconnect();
  m_parting.reset();
  if (isNewShown) m_isXServerLost = false;
  if (!m_xServer && !m_isXServerLost) connect();
}

void JoinedWindows::connect() {
  m_xServer = m_connect();
  m_xServer->start({.changed = [this] { update(); },
                    .lost =
                        [this] {
                          m_isXServerLost = true;
                          disconnect();
                          update();
                        }});
}

// Not inside a call of its own.
void JoinedWindows::disconnect() {
  if (!m_xServer || m_parting) return;
  m_parting = m_loop.after(std::chrono::milliseconds(0), [this] {
    m_xServer.reset();
    m_parting.reset();
    update();
  });
}

bool JoinedWindows::isFrontX11() const { return m_xWindows.contains(m_desktop->active()); }

bool JoinedWindows::isFrontToldByXServer() const {
  return m_xServer && m_xServer->active() != 0 && m_xServer->isActiveKnown();
}

void JoinedWindows::waitForXServer() {
  const WindowId awaited = isFrontX11() && !isFrontToldByXServer() ? m_desktop->active() : 0;
  if (awaited == m_awaited) return;
  m_awaited = awaited;
  m_isBelieved = false;
  m_patience.reset();
  if (awaited == 0) return;
  m_patience = m_loop.after(longestWait, [this] {
    m_isBelieved = true;
    update();
  });
}

WindowId JoinedWindows::active() const {
  const bool isXServers = isFrontX11() && isFrontToldByXServer();
  return isXServers ? m_xServer->active() | xServers : m_desktop->active();
}

void JoinedWindows::merge() {
  m_known.clear();
  for (const auto& [id, window] : m_desktop->known()) {
    if (!window.isX11 || (m_isBelieved && id == m_awaited)) m_known.emplace(id, window);
  }
  if (!m_xServer) return;
  for (const auto& [id, window] : m_xServer->known()) {
    WindowFacts facts = window;
    facts.id = id | xServers;
    facts.isX11 = true;
    m_known.emplace(facts.id, std::move(facts));
  }
}

DesktopWindows* JoinedWindows::sourceOf(const WindowFacts& window) const {
  return (window.id & xServers) == 0 ? m_desktop.get() : m_xServer.get();
}

WindowFacts JoinedWindows::asTold(const WindowFacts& window) {
  WindowFacts facts = window;
  facts.id &= ~xServers;
  return facts;
}

bool JoinedWindows::requestClose(const WindowFacts& window) {
  DesktopWindows* const source = sourceOf(window);
  return source != nullptr && source->requestClose(asTold(window));
}

bool JoinedWindows::canBringToFront(const WindowFacts& window) const {
  const DesktopWindows* const source = sourceOf(window);
  return source != nullptr && source->canBringToFront(asTold(window));
}

bool JoinedWindows::requestFront(const WindowFacts& window) {
  DesktopWindows* const source = sourceOf(window);
  return source != nullptr && source->requestFront(asTold(window));
}

void JoinedWindows::forget(Pid pid) {
  m_desktop->forget(pid);
  if (m_xServer) m_xServer->forget(pid);
  update();
}

bool JoinedWindows::settle(std::chrono::milliseconds limit) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point deadline = Clock::now() + limit;
  if (!m_desktop->settle(limit)) return false;
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
  return !m_xServer || m_xServer->settle(std::max(left, std::chrono::milliseconds(0)));
}

void JoinedWindows::lose() {
  m_patience.reset();
  m_xWindows.clear();
  m_known.clear();
  m_awaited = 0;
  disconnect();
  m_handlers.lost();
}

} // namespace vantle
