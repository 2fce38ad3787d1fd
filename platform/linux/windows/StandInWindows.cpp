// SPDX-License-Identifier: MIT
#include "platform/linux/windows/StandInWindows.h"

#include <algorithm>
#include <utility>

namespace vantle {

StandInWindows::StandInWindows(EventLoop& loop, Awaited awaited, MakeStandIn makeStandIn, Changed changed)
    : m_loop(loop), m_awaited(std::move(awaited)), m_makeStandIn(std::move(makeStandIn)),
      m_changed(std::move(changed)) {}

void StandInWindows::start(Handlers handlers) {
  m_handlers = std::move(handlers);
  m_choosing = m_loop.after(std::chrono::milliseconds(0), [this] { standIn(); });
  m_awaited.source->start({.changed = [this] { follow(); }, .lost = [this] { loseAwaited(); }});
}

void StandInWindows::follow() {
  const bool isTelling = m_awaited.isTelling();
  if (isTelling && (m_standIn || m_choosing)) {
    m_choosing.reset();
    m_standIn.reset();
    m_changed(false);
  }
  if (isTelling) return m_handlers.changed();
  if (m_standIn || m_choosing) return;
  standIn();
  m_handlers.startedOver();
}

void StandInWindows::standIn() {
  m_choosing.reset();
  m_isStandInLost = false;
  m_standIn = m_makeStandIn();
  m_standIn->start({.changed = [this] { m_handlers.changed(); }, .lost = [this] { loseStandIn(); }});
  m_changed(true);
}

void StandInWindows::loseAwaited() {
  m_isAwaitedLost = true;
  const bool wasTelling = !m_standIn && !m_choosing;
  if (wasTelling || m_isStandInLost) m_handlers.lost();
}

void StandInWindows::loseStandIn() {
  m_isStandInLost = true;
  m_isAwaitedLost ? m_handlers.lost() : m_handlers.startedOver();
}

void StandInWindows::forget(Pid pid) {
  m_awaited.source->forget(pid);
  if (m_standIn) m_standIn->forget(pid);
}

bool StandInWindows::settle(std::chrono::milliseconds limit) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point deadline = Clock::now() + limit;
  m_awaited.source->settle(std::min(m_awaited.patience, limit));
  if (m_choosing) standIn();
  if (!m_standIn) return true;
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
  return m_standIn->settle(std::max(left, std::chrono::milliseconds(0)));
}

} // namespace vantle
