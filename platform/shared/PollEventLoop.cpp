// SPDX-License-Identifier: MIT
#include "platform/shared/PollEventLoop.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <poll.h>
#include <utility>
#include <vector>

namespace vantle {

using SteadyClock = std::chrono::steady_clock;

struct PollEventLoop::State {
  struct Watch {
    int descriptor = -1;
    short events = 0;
    std::function<void()> ready;
  };
  struct Timer {
    SteadyClock::time_point due;
    std::function<void()> call;
  };
  int nextId = 0;
  std::map<int, Watch> watches;
  std::map<int, Timer> timers;
};

class PollEventLoop::StateHandle final : public EventLoop::Handle {
 public:
  StateHandle(const std::shared_ptr<State>& state, int id) : m_state(state), m_id(id) {}
  ~StateHandle() override {
    if (const auto state = m_state.lock()) {
      state->watches.erase(m_id);
      state->timers.erase(m_id);
    }
  }
  StateHandle(const StateHandle&) = delete;
  StateHandle& operator=(const StateHandle&) = delete;

 private:
  std::weak_ptr<State> m_state;
  int m_id;
};

PollEventLoop::PollEventLoop() : m_state(std::make_shared<State>()) {}
PollEventLoop::~PollEventLoop() = default;

std::unique_ptr<EventLoop::Handle> PollEventLoop::watch(int descriptor, Readiness readiness,
                                                        std::function<void()> ready) {
  short events = POLLIN;
  if (readiness == Readiness::writable) events = POLLOUT;
  if (readiness == Readiness::priority) events = POLLPRI;
  const int id = m_state->nextId++;
  m_state->watches.emplace(id, State::Watch{descriptor, events, std::move(ready)});
  return std::make_unique<StateHandle>(m_state, id);
}

std::unique_ptr<EventLoop::Handle> PollEventLoop::after(std::chrono::milliseconds delay,
                                                        std::function<void()> due) {
  const int id = m_state->nextId++;
  m_state->timers.emplace(id, State::Timer{SteadyClock::now() + delay, std::move(due)});
  return std::make_unique<StateHandle>(m_state, id);
}

bool PollEventLoop::runUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  const SteadyClock::time_point end = SteadyClock::now() + limit;
  while (!condition()) {
    const SteadyClock::time_point now = SteadyClock::now();
    if (now >= end) return false;
    SteadyClock::time_point wake = end;
    for (const auto& [id, timer] : m_state->timers) wake = std::min(wake, timer.due);

    std::vector<pollfd> descriptors;
    std::vector<int> ids;
    for (const auto& [id, watch] : m_state->watches) {
      descriptors.push_back({watch.descriptor, watch.events, 0});
      ids.push_back(id);
    }
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(std::max(wake - now, {}));
    ::poll(descriptors.data(), static_cast<nfds_t>(descriptors.size()), static_cast<int>(wait.count()));

    // Each is looked up again: a callback may end any other watch or timer.
    for (std::size_t at = 0; at < ids.size(); ++at) {
      if (descriptors[at].revents == 0) continue;
      const auto found = m_state->watches.find(ids[at]);
      if (found == m_state->watches.end()) continue;
      const std::function<void()> ready = found->second.ready;
      ready();
    }
    std::vector<int> due;
    for (const auto& [id, timer] : m_state->timers) {
      if (timer.due <= SteadyClock::now()) due.push_back(id);
    }
    for (const int id : due) {
      const auto found = m_state->timers.find(id);
      if (found == m_state->timers.end()) continue;
      const std::function<void()> call = std::move(found->second.call);
      m_state->timers.erase(found);
      call();
    }
  }
  return true;
}

} // namespace vantle
