// SPDX-License-Identifier: MIT
#include "platform/linux/games/GameModeGames.h"

#include "platform/linux/games/GameModeClients.h"

#include <utility>

namespace vantle {

std::unique_ptr<RegisteredGames::Source> GameModeGames::watch(std::function<void()> changed) {
  return std::make_unique<GameModeClients>(m_loop, m_bus, m_kernel, m_processes, std::move(changed));
}

} // namespace vantle
