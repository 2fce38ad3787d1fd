// SPDX-License-Identifier: MIT
#pragma once

#include <deque>
#include <functional>
#include <future>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <systemd/sd-bus.h>
#include <thread>
#include <utility>

namespace vantle::desktop {

// A program on a bus that answers as a test wants it to. It runs in a thread of its own, since who asks may
// wait for the answer.
class FakeService {
 public:
  // Fills in the reply; for a signature that does not fit the call fails.
  using Answer = std::function<void(sd_bus_message* call, sd_bus_message* reply)>;

  // Owns the name when the constructor returns.
  FakeService(const std::string& address, const std::string& name);
  ~FakeService(); // leaves the bus
  FakeService(const FakeService&) = delete;
  FakeService& operator=(const FakeService&) = delete;

  // For calls of that path and member; whatever has no answer is an error to the caller. An empty path stands
  // for all paths.
  void answer(const std::string& path, const std::string& member, Answer answer);
  // Calls of that member are answered with this error.
  void refuse(const std::string& member, const std::string& error);
  // Calls of that member are taken and never answered.
  void ignore(const std::string& member);
  int calls(const std::string& member) const; // so far
  // In its thread, on its connection; returns when it is done and sent.
  void perform(const std::function<void(sd_bus* bus)>& deed);

 private:
  void serve();
  bool takeDeeds(); // false when it is over
  void wake() const;
  static int take(sd_bus_message* message, void* self, sd_bus_error* error);

  const std::string m_name;
  mutable std::mutex m_mutex;
  std::map<std::pair<std::string, std::string>, Answer> m_answers;
  std::map<std::string, int> m_calls;
  std::map<std::string, std::string> m_refused;
  std::set<std::string> m_ignored;
  std::deque<std::packaged_task<void(sd_bus*)>> m_deeds;
  sd_bus* m_bus = nullptr; // used by the thread alone once that runs
  int m_wake = -1;         // an eventfd: there are deeds, or it is over
  bool m_isOver = false;
  std::thread m_thread;
};

} // namespace vantle::desktop
