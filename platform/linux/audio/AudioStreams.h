// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace vantle {

// A process id in decimal digits and nothing else, 1 or greater.
std::optional<Pid> pidFromText(std::string_view text);

// What a sound server says of its playing streams and of its clients. The two lists come in either order.
struct AudioStreams {
  bool inputsKnown = false;
  bool clientsKnown = false;

  void addInput(std::uint32_t client, std::string_view processId);
  void addClient(std::uint32_t index, std::string_view processId);

  // For each stream the process that it names itself, else the one that its client names. (The number that
  // the server found on its socket is no help: for PulseAudio's clients under PipeWire that is the server.)
  std::set<Pid> playing() const;

 private:
  std::vector<std::pair<std::uint32_t, std::optional<Pid>>> m_inputs; // client, its own process
  std::map<std::uint32_t, Pid> m_clients;
};

} // namespace vantle
