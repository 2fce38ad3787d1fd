// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ProcessTable.h"
#include "engine/ports/RegisteredGames.h"
#include "platform/linux/bus/BusQuestions.h"
#include "platform/linux/kernel/Kernel.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantle {

// What GameMode's daemon tells of its clients: its list once, each time that a daemon comes, then its
// signals.
class GameModeClients final : public RegisteredGames::Source {
 public:
  GameModeClients(EventLoop& loop, BusConnection& sessionBus, const Kernel& kernel,
                  const ProcessTable& processes, std::function<void()> changed);

  std::vector<ProcessIdentity> processes() const override { return m_games; }

 private:
  void follow();
  void forgetBus();
  void meet(const std::string& daemon); // its name on the bus, ":1.42"; empty: it has left
  void askForList();
  void takeList(sd_bus_message* reply);
  void takeSignal(sd_bus_message* signal);
  bool numbersAsHere(Pid daemon) const;
  void add(Pid pid);
  void forgetEnded();
  void withdraw(Pid pid);
  void tellLater();

  EventLoop& m_loop;
  BusQuestions m_questions;
  const Kernel& m_kernel;
  const ProcessTable& m_processes;
  std::function<void()> m_changed;
  std::unique_ptr<Registration> m_busLost;
  BusSlot m_daemonChanges;
  BusSlot m_signals;
  std::string m_daemon;
  bool m_hasList = false;
  std::vector<ProcessIdentity> m_games;
  std::unique_ptr<EventLoop::Handle> m_telling; // set while a change is to be told
  std::optional<std::chrono::steady_clock::time_point> m_told;
  std::unique_ptr<EventLoop::Handle> m_again; // set while a bus is waited for
};

} // namespace vantle
