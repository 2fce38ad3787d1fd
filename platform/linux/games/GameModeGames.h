// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ProcessTable.h"
#include "engine/ports/RegisteredGames.h"
#include "platform/linux/bus/BusConnection.h"
#include "platform/linux/kernel/Kernel.h"

#include <functional>
#include <memory>

namespace vantle {

// The processes that GameMode's daemon (com.feralinteractive.GameMode on the session's bus) works for: they
// have asked for it, through its library or its wrapper, or a launcher or a sandbox's portal has for them.
// The daemon is followed while it is there, and never started. What it says is a claim: it counts for
// processes of this user's, at the moment at which it was said, and only from a daemon that numbers processes
// as this program does. Games outlive their daemon: one that is gone has withdrawn nobody.
class GameModeGames final : public RegisteredGames {
 public:
  // All of them outlive the sources. Others may use the bus as well.
  GameModeGames(EventLoop& loop, BusConnection& sessionBus, const Kernel& kernel,
                const ProcessTable& processes)
      : m_loop(loop), m_bus(sessionBus), m_kernel(kernel), m_processes(processes) {}

  std::unique_ptr<Source> watch(std::function<void()> changed) override;

 private:
  EventLoop& m_loop;
  BusConnection& m_bus;
  const Kernel& m_kernel;
  const ProcessTable& m_processes;
};

} // namespace vantle
