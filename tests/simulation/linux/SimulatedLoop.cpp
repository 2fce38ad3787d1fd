// SPDX-License-Identifier: MIT
#include "tests/simulation/linux/SimulatedLoop.h"

namespace vantle {

class SimulatedLoop::Timer final : public EventLoop::Handle {
 public:
  Timer(std::weak_ptr<Timers> timers, const Key& key) : m_timers(std::move(timers)), m_key(key) {}
  ~Timer() override {
    if (const auto timers = m_timers.lock()) timers->erase(m_key);
  }
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

 private:
  std::weak_ptr<Timers> m_timers;
  Key m_key;
};

std::unique_ptr<EventLoop::Handle> SimulatedLoop::watch(int /*descriptor*/, Readiness /*readiness*/,
                                                        std::function<void()> /*ready*/) {
  return std::make_unique<Handle>();
}

std::unique_ptr<EventLoop::Handle> SimulatedLoop::after(std::chrono::milliseconds delay,
                                                        std::function<void()> due) {
  const Key key{m_clock.now() + delay, ++m_last};
  m_timers->emplace(key, std::move(due));
  return std::make_unique<Timer>(m_timers, key);
}

bool SimulatedLoop::callNext(Moment end) {
  if (source) source();
  const auto next = m_timers->begin();
  if (next == m_timers->end() || next->first.first > end) return false;
  if (next->first.first > m_clock.now()) {
    m_clock.advance(std::chrono::duration_cast<std::chrono::microseconds>(next->first.first - m_clock.now()));
  }
  const std::function<void()> due = std::move(next->second);
  m_timers->erase(next);
  due();
  return true;
}

void SimulatedLoop::run(std::chrono::milliseconds duration) {
  const Moment end = m_clock.now() + duration;
  while (callNext(end)) {
  }
  if (m_clock.now() < end) {
    m_clock.advance(std::chrono::duration_cast<std::chrono::microseconds>(end - m_clock.now()));
  }
  if (source) source();
}

bool SimulatedLoop::runUntilQuiet(std::chrono::milliseconds limit) {
  const Moment end = m_clock.now() + limit;
  while (callNext(end)) {
  }
  return isQuiet();
}

} // namespace vantle
