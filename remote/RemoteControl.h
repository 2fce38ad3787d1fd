// SPDX-License-Identifier: MIT
#pragma once

#include "engine/Engine.h"
#include "engine/ports/Machine.h"
#include "platform/shared/EventLoop.h"
#include "remote/ports/RemoteDoor.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vantle {

// Answers what other programs of this user ask the running copy, with the engine's own operations: nothing
// that a rule protects can be slowed by asking.
class RemoteControl {
 public:
  struct About {
    std::string version;
    // What stands in a report besides: pairs of a subject and a sentence.
    std::function<std::vector<std::pair<std::string, std::string>>()> machineFacts;
  };

  // All of them outlive it.
  RemoteControl(EventLoop& loop, Engine& engine, const Machine& machine, RemoteDoor& door, About about);
  RemoteControl(const RemoteControl&) = delete;
  RemoteControl& operator=(const RemoteControl&) = delete;

  const Status& status();
  // The app that a process belongs to, or those of that name or identifier.
  RemoteDoor::Refusal why(const std::string& target, std::vector<AppStatus>& apps);
  RemoteDoor::Refusal boost(const std::string& target);     // empty: the app in front
  RemoteDoor::Refusal pause(std::chrono::seconds duration); // 0 ends a pause
  std::string report(bool withNames);

 private:
  RemoteDoor::Answers answers();
  std::vector<AppStatus> find(const std::string& target);
  void followEngine();
  void changed();

  EventLoop& m_loop;
  Engine& m_engine;
  Machine m_machine;
  About m_about;
  // Not looked at again for every question of somebody who asks without a pause.
  std::optional<Status> m_status;
  std::chrono::steady_clock::time_point m_lookedAt;
  std::unique_ptr<EventLoop::Handle> m_telling; // one event changes much, and is told once
  std::unique_ptr<EventLoop::Handle> m_pauseEnd;
  std::unique_ptr<RemoteDoor::Open> m_door;
  std::vector<std::unique_ptr<Registration>> m_observers;
};

} // namespace vantle
