// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/audio/pipewire/Pod.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace vantle {

// The messages of PipeWire's native protocol (version 3, of every release since 0.3.0) as far as somebody
// needs them who only looks. A message has 16 bytes of head (object, opcode and size of the rest, sequence
// number, number of descriptors) and one structure; what follows it is for others.

// Objects that a connection has from the beginning, and the number that it gives the registry. Whoever binds
// further ones numbers them upwards without a gap.
inline constexpr std::uint32_t pipeWireCore = 0;
inline constexpr std::uint32_t pipeWireClient = 1;
inline constexpr std::uint32_t pipeWireRegistry = 2;
inline constexpr std::uint32_t pipeWireFirstBound = 3;

enum class PipeWireKind { node, client, link, other };

using PipeWireProperties = std::map<std::string, std::string, std::less<>>;

// Answers up to here are there.
struct PipeWireDone {
  std::int32_t sequence = 0;
};
// There is such an object; with the properties that everybody may know.
struct PipeWireGlobal {
  std::uint32_t id = 0;
  PipeWireKind kind = PipeWireKind::other;
  PipeWireProperties properties;
};
// What a bound node or client says of itself. The state is a node's (pw_node_state), else absent.
struct PipeWireInfo {
  std::uint32_t object = 0; // by the number it was bound with
  std::optional<std::uint32_t> state;
  PipeWireProperties properties;
};
// How loud a bound node was made.
struct PipeWireLoudness {
  std::uint32_t object = 0;
  bool isMuted = false; // or turned down to nothing
};
using PipeWireEvent =
    std::variant<std::monostate, PipeWireDone, PipeWireGlobal, PipeWireInfo, PipeWireLoudness>;

// Calls to write.
std::string pipeWireHello(std::string_view name); // who is there, and: what is there?
std::string pipeWireSync(std::int32_t sequence);
std::string pipeWireAskLoudness(std::uint32_t object); // of a bound node
// The kind is a node or a client.
std::string pipeWireBind(std::uint32_t global, PipeWireKind kind, std::uint32_t object);

// Takes the messages apart that arrive in pieces of any size.
class PipeWireReader {
 public:
  void append(std::string_view bytes) { m_bytes.append(bytes); }
  // The next whole message; absent until there is one. Empty for those that tell nothing that is asked here,
  // or do not say it in the protocol's words. `kindOf` tells what the number of a bound object stands for.
  template <class KindOfObject> std::optional<PipeWireEvent> next(const KindOfObject& kindOf) {
    const std::optional<Message> message = take();
    if (!message) return std::nullopt;
    return eventOf(*message, kindOf(message->object));
  }

 private:
  struct Message {
    std::uint32_t object = 0;
    std::uint32_t opcode = 0;
    std::string body;
  };
  std::optional<Message> take();
  static PipeWireEvent eventOf(const Message& message, PipeWireKind bound);

  std::string m_bytes;
  std::size_t m_at = 0; // what comes before was taken
};

} // namespace vantle
