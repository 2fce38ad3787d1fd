// SPDX-License-Identifier: MIT
// Any bytes as what a PipeWire server sends: taken apart, and made a graph of. The objects that were bound
// are nodes and clients in turns.
#include "platform/linux/audio/pipewire/PipeWireMessage.h"
#include "platform/linux/audio/pipewire/SoundGraph.h"
#include "tests/fuzz/Target.h"

#include <variant>

using namespace vantle;

namespace {

PipeWireKind kindOf(std::uint32_t object) {
  return object % 2 == 0 ? PipeWireKind::client : PipeWireKind::node;
}

// Read whole or byte by byte: the events tell the same.
SoundGraph graphOf(const std::string& bytes, std::size_t piece, std::size_t& events) {
  PipeWireReader reader;
  SoundGraph graph;
  events = 0;
  for (std::size_t at = 0; at < bytes.size(); at += piece) {
    reader.append(bytes.substr(at, piece));
    for (auto event = reader.next(kindOf); event; event = reader.next(kindOf)) {
      ++events;
      if (const auto* global = std::get_if<PipeWireGlobal>(&*event)) graph.add(*global);
      const auto* info = std::get_if<PipeWireInfo>(&*event);
      if (info && info->state) graph.addNodeInfo(info->object, *info);
      if (info && !info->state) graph.addClientInfo(info->object, *info);
      const auto* loudness = std::get_if<PipeWireLoudness>(&*event);
      if (loudness && loudness->isMuted) graph.setMuted(loudness->object);
    }
  }
  return graph;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes = fuzz::textOf(data, size);
  std::size_t events = 0;
  std::size_t again = 0;
  const SoundGraph whole = graphOf(bytes, bytes.size() + 1, events);
  const SoundGraph pieces = graphOf(bytes, 1, again);
  fuzz::require(events == again, "pieces make no difference", bytes);
  fuzz::require(whole.leadingToSinks() == pieces.leadingToSinks(), "nor in what is heard", bytes);
  for (const Player& player : whole.players()) {
    fuzz::require(player.pid >= 0 && player.claim.pid >= 0, "no process is negative", bytes);
    fuzz::require(player.pid != 0 || player.claim.pid != 0, "whoever plays is somebody", bytes);
  }
  return 0;
}
