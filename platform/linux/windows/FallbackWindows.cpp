// SPDX-License-Identifier: MIT
#include "platform/linux/windows/FallbackWindows.h"

#include <algorithm>
#include <utility>

namespace vantle {

FallbackWindows::FallbackWindows(EventLoop& loop, std::unique_ptr<DesktopWindows> first, Next next)
    : m_loop(loop), m_next(std::move(next)), m_source(std::move(first)) {}

void FallbackWindows::start(Handlers handlers) {
  m_handlers = std::move(handlers);
  m_source->start({.changed =
                       [this] {
                         m_hasTold = true;
                         m_handlers.changed();
                       },
                   .lost =
                       [this] {
                         if (m_hasTold) return m_handlers.lost();
                         // Not inside its own call.
                         m_replacing = m_loop.after(std::chrono::milliseconds(0), [this] { replace(); });
                       }});
}

void FallbackWindows::replace() {
  m_replacing.reset();
  m_source = m_next();
  m_source->start(m_handlers);
}

bool FallbackWindows::settle(std::chrono::milliseconds limit) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point deadline = Clock::now() + limit;
  if (m_source->settle(limit)) return true;
  if (!m_replacing) return false;
  replace();
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
  return m_source->settle(std::max(left, std::chrono::milliseconds(0)));
}

} // namespace vantle
