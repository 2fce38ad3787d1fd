// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/audio/SoundQuestion.h"
#include "platform/linux/audio/pipewire/PipeWireMessage.h"

#include <cstdint>
#include <map>
#include <set>
#include <vector>

namespace vantle {

// Nodes and the links between them, as PipeWire has them, and whose nodes they are. Sound flows along the
// links; whatever can flow into a sink is heard there, through whatever filters it passes.
class SoundGraph {
 public:
  void add(const PipeWireGlobal& global);

  // The nodes that lead to a sink, by their global numbers; the ones that run must be asked for.
  std::set<std::uint32_t> leadingToSinks() const;
  // Who has the node; absent for what the server has itself.
  std::optional<std::uint32_t> clientOf(std::uint32_t node) const;

  // What an object says of itself when asked, by its global number.
  void addNodeInfo(std::uint32_t node, const PipeWireInfo& info);
  void setMuted(std::uint32_t node);
  void addClientInfo(std::uint32_t client, const PipeWireInfo& info);

  // Whoever has a node that runs, is not muted and leads to a sink.
  std::vector<Player> players() const;

 private:
  struct Node {
    bool isSink = false;
    std::optional<std::uint32_t> client;
    bool isRunning = false;
    bool isMuted = false;
    PipeWireProperties properties;
  };

  Player playerOf(const Node& node) const;

  std::map<std::uint32_t, Node> m_nodes;
  std::multimap<std::uint32_t, std::uint32_t> m_sources; // of each node's input
  std::map<std::uint32_t, PipeWireProperties> m_clients;
};

} // namespace vantle
