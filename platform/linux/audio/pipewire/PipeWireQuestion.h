// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/audio/SoundQuestion.h"
#include "platform/linux/audio/pipewire/PipeWireMessage.h"
#include "platform/linux/audio/pipewire/SoundGraph.h"
#include "platform/posix/Descriptor.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vantle {

// Who plays audio, from PipeWire's own registry: whatever its interface (PipeWire, PulseAudio, JACK, ALSA),
// whoever has a running node that is linked to a sink.
//
// It speaks the protocol itself. PipeWire's library would cost every copy of the program 0.2 MB before it is
// asked anything, and a thread and 8 to 20 ms at each question; this costs nothing, and a millisecond. Each
// question has a connection of its own: a kept one would be told of every change of any stream, asked or not,
// and PipeWire keeps for it whatever it does not fetch.
class PipeWireQuestion final : public SoundQuestion {
 public:
  explicit PipeWireQuestion(std::string socket) : m_path(std::move(socket)) {}

  void ask() override;
  bool isAsking() const override { return m_stage == Stage::listing || m_stage == Stage::looking; }
  std::vector<pollfd> watch() override;
  void advance() override;
  void giveUp() override;
  std::optional<std::vector<Player>> players() const override { return m_players; }

 private:
  enum class Stage {
    none,    // nothing is asked
    listing, // which objects are there
    looking, // what the ones say that matter
    overdue  // and not a word since
  };
  struct Bound {
    PipeWireKind kind = PipeWireKind::other;
    std::uint32_t global = 0;
  };

  bool isSilentStill() const;
  bool connect();
  void send();
  bool receive(); // false when nothing is left to take in
  void take(const PipeWireEvent& event);
  void take(const PipeWireDone& done);
  void take(const PipeWireInfo& info);
  PipeWireKind kindOf(std::uint32_t object) const;
  void bind(PipeWireKind kind, std::uint32_t global);
  void look();
  void end();

  std::string m_path;
  Stage m_stage = Stage::none;
  Descriptor m_socket;
  std::string m_toSend;
  std::size_t m_received = 0; // bytes
  PipeWireReader m_reader;
  SoundGraph m_graph;
  std::vector<Bound> m_bound;
  std::optional<std::vector<Player>> m_players;
};

// Where PipeWire's clients find it, as pipewire(1) says: PIPEWIRE_REMOTE, a path or a name in the runtime
// folder. Empty when there is no such folder.
std::string pipeWireSocket(const char* (*environment)(const char* name));

} // namespace vantle
