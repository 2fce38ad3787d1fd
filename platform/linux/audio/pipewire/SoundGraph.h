// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/audio/SoundQuestion.h"
#include "platform/linux/audio/pipewire/PipeWireMessage.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace vantle {

// Nodes and the links between them, as PipeWire has them, and whose nodes they are. Sound flows along the
// links; whatever can flow into a sink is heard there, through whatever filters it passes.
//
// Many filters are two nodes without a link: one captures, the other plays. They have a link group of their
// own. Without one, what a client captures counts as going on in what it plays: nobody outside sees whether.
class SoundGraph {
 public:
  void add(const PipeWireGlobal& global);

  // The nodes that must be asked for, by their global numbers: whatever links lead from to a sink, or to
  // somebody who captures and may pass it on.
  std::set<std::uint32_t> worthAsking() const;
  // The nodes that lead to a sink, as far as is known. A filter of two nodes passes something on while the
  // one that plays runs and is not muted.
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
    bool isCapture = false;
    std::optional<std::uint32_t> client;
    bool isRunning = false;
    bool isMuted = false;
    PipeWireProperties properties;
  };

  using Filters = std::multimap<std::string, std::uint32_t>; // by what holds them together, who captures

  Player playerOf(const Node& node) const;
  bool isHeard(const Node& node) const { return node.isRunning && !node.isMuted; }
  Filters filters() const;
  std::set<std::uint32_t> behind(std::vector<std::uint32_t> ahead, Filters filters) const;

  std::map<std::uint32_t, Node> m_nodes;
  std::multimap<std::uint32_t, std::uint32_t> m_sources; // of each node's input
  std::map<std::uint32_t, PipeWireProperties> m_clients;
};

} // namespace vantle
