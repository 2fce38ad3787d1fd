// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/linux/audio/SoundQuestion.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace vantle {

// A process id in decimal digits and nothing else, 1 or greater.
std::optional<Pid> pidFromText(std::string_view text);

// What a PulseAudio server says of its playing streams and of its clients. The two lists come in either
// order.
struct AudioStreams {
  bool inputsKnown = false;
  bool clientsKnown = false;

  void addInput(std::uint32_t client, ProcessClaim own);
  void addClient(std::uint32_t index, ProcessClaim claim);

  // For each stream the process that it names itself, else the one that its client names; what the stream
  // leaves open its client says. (The number that the server found on its socket is no help: for PulseAudio's
  // clients under PipeWire that is the server, and PulseAudio tells none.)
  std::vector<Player> players() const;

 private:
  std::vector<std::pair<std::uint32_t, ProcessClaim>> m_inputs; // client, its own process
  std::map<std::uint32_t, ProcessClaim> m_clients;
};

// The stream's word, with its client's where it says nothing.
ProcessClaim completed(ProcessClaim stream, const ProcessClaim& client);

} // namespace vantle
