// SPDX-License-Identifier: MIT
#include "platform/linux/audio/pipewire/PipeWireMessage.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

namespace vantle {

namespace {

constexpr std::int32_t coreVersion = 3;
constexpr std::int32_t objectVersion = 3; // of registry, nodes and clients alike
constexpr std::size_t headBytes = 16;
constexpr std::size_t mostProperties = 1024; // an object has some dozens

constexpr std::string_view nodeType = "PipeWire:Interface:Node";
constexpr std::string_view clientType = "PipeWire:Interface:Client";
constexpr std::string_view linkType = "PipeWire:Interface:Link";

// Methods and events by their numbers, pipewire/core.h and so on.
constexpr std::uint32_t callCoreHello = 1;
constexpr std::uint32_t callCoreSync = 2;
constexpr std::uint32_t callCoreGetRegistry = 5;
constexpr std::uint32_t callClientUpdateProperties = 2;
constexpr std::uint32_t callRegistryBind = 1;
constexpr std::uint32_t eventCoreDone = 1;
constexpr std::uint32_t eventRegistryGlobal = 0;
constexpr std::uint32_t callNodeEnumParams = 2;
constexpr std::uint32_t eventInfo = 0;
constexpr std::uint32_t eventNodeParam = 1;

// spa/param/param.h and props.h
constexpr std::uint32_t paramProps = 2;
constexpr std::uint32_t propVolume = 0x10003;
constexpr std::uint32_t propMute = 0x10004;
constexpr std::uint32_t propChannelVolumes = 0x10008;

std::uint32_t wordAt(std::string_view bytes, std::size_t at) {
  std::uint32_t word = 0;
  std::memcpy(&word, bytes.data() + at, sizeof word);
  return word;
}

// A sequence number of its own is for telling errors apart, which nobody does here.
std::string message(std::uint32_t object, std::uint32_t opcode, const PodWriter& content) {
  const std::string body = PodWriter().structure(content).bytes();
  const std::array<std::uint32_t, 4> head{object, opcode << 24U | static_cast<std::uint32_t>(body.size()), 0,
                                          0};
  return std::string(reinterpret_cast<const char*>(head.data()), sizeof head) + body;
}

std::int32_t signedOf(std::uint32_t number) { return static_cast<std::int32_t>(number); }

PipeWireKind kindOfType(std::string_view type) {
  if (type == nodeType) return PipeWireKind::node;
  if (type == clientType) return PipeWireKind::client;
  return type == linkType ? PipeWireKind::link : PipeWireKind::other;
}

std::optional<PipeWireProperties> properties(PodReader& from) {
  std::optional<PodReader> list = from.structure();
  const std::optional<std::int32_t> count = list ? list->int32() : std::nullopt;
  if (!count || *count < 0) return std::nullopt;
  PipeWireProperties properties;
  const std::size_t most = std::min(static_cast<std::size_t>(*count), mostProperties);
  for (std::size_t at = 0; at < most; ++at) {
    const std::optional<std::string_view> name = list->text();
    const std::optional<std::string_view> value = list->text();
    if (!name || !value) return std::nullopt;
    properties.insert_or_assign(std::string(*name), std::string(*value));
  }
  return properties;
}

PipeWireEvent globalIn(PodReader& content) {
  PipeWireGlobal global;
  const std::optional<std::int32_t> id = content.int32();
  const bool hasPermissions = content.int32().has_value();
  const std::optional<std::string_view> type = content.text();
  const bool hasVersion = content.int32().has_value();
  std::optional<PipeWireProperties> known = properties(content);
  if (!id || !hasPermissions || !type || !hasVersion || !known) return {};
  return PipeWireGlobal{static_cast<std::uint32_t>(*id), kindOfType(*type), std::move(*known)};
}

PipeWireEvent clientInfoIn(std::uint32_t object, PodReader& content) {
  const bool hasHead = content.int32() && content.int64(); // id, what changed
  std::optional<PipeWireProperties> known = properties(content);
  if (!hasHead || !known) return {};
  return PipeWireInfo{object, std::nullopt, std::move(*known)};
}

PipeWireEvent nodeInfoIn(std::uint32_t object, PodReader& content) {
  const bool hasHead = content.int32() && content.int32() && content.int32() // id, most ports in and out
                       && content.int64()                                    // what changed
                       && content.int32() && content.int32();                // ports in and out
  const std::optional<std::uint32_t> state = content.id();
  const bool hasError = content.text().has_value();
  std::optional<PipeWireProperties> known = properties(content);
  if (!hasHead || !state || !hasError || !known) return {};
  return PipeWireInfo{object, state, std::move(*known)};
}

PipeWireEvent loudnessIn(std::uint32_t object, PodReader& content) {
  const bool hasSequence = content.int32().has_value();
  const std::optional<std::uint32_t> kind = content.id();
  const bool hasPlace = content.int32() && content.int32(); // in the list, and of the next
  std::optional<PodReader> values = content.object();
  if (!hasSequence || kind != paramProps || !hasPlace || !values) return {};
  PipeWireLoudness loudness{object, false};
  while (const std::optional<std::uint32_t> key = values->key()) {
    if (key == propMute) {
      loudness.isMuted |= values->boolean().value_or(false);
    } else if (key == propVolume) {
      loudness.isMuted |= values->float32() == 0.0F;
    } else if (key == propChannelVolumes) {
      const std::vector<float> volumes = values->floats().value_or(std::vector<float>{});
      const auto isNothing = [](float volume) { return volume == 0; };
      loudness.isMuted |= !volumes.empty() && std::all_of(volumes.begin(), volumes.end(), isNothing);
    } else if (!values->skip()) {
      break;
    }
  }
  return loudness;
}

PipeWireEvent doneIn(PodReader& content) {
  const bool hasId = content.int32().has_value();
  const std::optional<std::int32_t> sequence = content.int32();
  if (!hasId || !sequence) return {};
  return PipeWireDone{*sequence};
}

} // namespace

std::string pipeWireHello(std::string_view name) {
  PodWriter self;
  self.int32(1).text("application.name").text(name);
  return message(pipeWireCore, callCoreHello, PodWriter().int32(coreVersion)) +
         message(pipeWireClient, callClientUpdateProperties, PodWriter().structure(self)) +
         message(pipeWireCore, callCoreGetRegistry,
                 PodWriter().int32(objectVersion).int32(signedOf(pipeWireRegistry)));
}

std::string pipeWireSync(std::int32_t sequence) {
  return message(pipeWireCore, callCoreSync, PodWriter().int32(signedOf(pipeWireCore)).int32(sequence));
}

std::string pipeWireAskLoudness(std::uint32_t object) {
  return message(object, callNodeEnumParams,
                 PodWriter().int32(0).id(paramProps).int32(0).int32(-1).none()); // all from the first on
}

std::string pipeWireBind(std::uint32_t global, PipeWireKind kind, std::uint32_t object) {
  return message(pipeWireRegistry, callRegistryBind,
                 PodWriter()
                     .int32(signedOf(global))
                     .text(kind == PipeWireKind::node ? nodeType : clientType)
                     .int32(objectVersion)
                     .int32(signedOf(object)));
}

std::optional<PipeWireReader::Message> PipeWireReader::take() {
  const std::string_view rest = std::string_view(m_bytes).substr(m_at);
  if (rest.size() < headBytes) return std::nullopt;
  const std::uint32_t opcodeAndSize = wordAt(rest, 4);
  const std::size_t size = opcodeAndSize & 0xffffffU;
  if (rest.size() - headBytes < size) return std::nullopt;
  Message message{wordAt(rest, 0), opcodeAndSize >> 24U, std::string(rest.substr(headBytes, size))};
  m_at += headBytes + size;
  constexpr std::size_t worthMoving = std::size_t{64} << 10U;
  if (m_at == m_bytes.size() || m_at > worthMoving) {
    m_bytes.erase(0, m_at);
    m_at = 0;
  }
  return message;
}

PipeWireEvent PipeWireReader::eventOf(const Message& message, PipeWireKind bound) {
  std::optional<PodReader> content = PodReader(message.body).structure();
  if (!content) return {};
  if (message.object == pipeWireCore && message.opcode == eventCoreDone) return doneIn(*content);
  if (message.object == pipeWireRegistry && message.opcode == eventRegistryGlobal) return globalIn(*content);
  if (message.object < pipeWireFirstBound) return {};
  if (bound == PipeWireKind::node && message.opcode == eventNodeParam) {
    return loudnessIn(message.object, *content);
  }
  if (message.opcode != eventInfo) return {};
  if (bound == PipeWireKind::node) return nodeInfoIn(message.object, *content);
  return bound == PipeWireKind::client ? clientInfoIn(message.object, *content) : PipeWireEvent{};
}

} // namespace vantle
