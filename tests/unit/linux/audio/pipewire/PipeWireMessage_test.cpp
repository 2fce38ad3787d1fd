// SPDX-License-Identifier: MIT
#include "platform/linux/audio/pipewire/PipeWireMessage.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace vantle {
namespace {

std::string word(std::uint32_t value) { return {reinterpret_cast<const char*>(&value), sizeof value}; }

// What PipeWire 0.3.65 writes, in the words of its protocol.
std::string message(std::uint32_t object, std::uint32_t opcode, const PodWriter& content) {
  const std::string body = PodWriter().structure(content).bytes();
  return word(object) + word(opcode << 24U | static_cast<std::uint32_t>(body.size())) + word(7) + word(0) +
         body;
}
std::string global(std::int32_t id, const char* type,
                   const std::vector<std::pair<std::string, std::string>>& properties) {
  PodWriter list;
  list.int32(static_cast<std::int32_t>(properties.size()));
  for (const auto& [name, value] : properties) list.text(name).text(value);
  return message(pipeWireRegistry, 0, PodWriter().int32(id).int32(0x1ff).text(type).int32(3).structure(list));
}

std::string pod(std::uint32_t type, const std::string& body) {
  return word(static_cast<std::uint32_t>(body.size())) + word(type) + body +
         std::string((8 - body.size() % 8) % 8, '\0');
}

// A node's answer with one key, which is about loudness when the kind is 2.
std::string parameter(std::uint32_t kind, std::uint32_t key, const std::string& value) {
  const std::string object = word(0x40002) + word(2) + word(0x1000b) + word(0) +
                             pod(4, word(7)) + // another key
                             word(key) + word(0) + value;
  const std::string body =
      pod(14, pod(4, word(0)) + pod(3, word(kind)) + pod(4, word(0)) + pod(4, word(1)) + pod(15, object));
  return word(3) + word(1U << 24U | static_cast<std::uint32_t>(body.size())) + word(0) + word(0) + body;
}

struct Reading : testing::Test {
  std::vector<PipeWireEvent> all() {
    std::vector<PipeWireEvent> events;
    const auto kindOf = [](std::uint32_t object) {
      return object == 3 ? PipeWireKind::node : PipeWireKind::other;
    };
    for (auto event = reader.next(kindOf); event; event = reader.next(kindOf)) events.push_back(*event);
    return events;
  }
  PipeWireReader reader;
};

TEST(Pod, WhatIsWrittenIsRead) {
  PodWriter inner;
  inner.text("seven b").text("").int32(-1);
  const std::string bytes = PodWriter().int32(42).structure(inner).text("end").bytes();
  EXPECT_EQ(bytes.size() % 8, 0U);
  PodReader outer(bytes);
  EXPECT_EQ(outer.int32(), 42);
  auto structure = outer.structure();
  ASSERT_TRUE(structure);
  EXPECT_EQ(structure->text(), "seven b");
  EXPECT_EQ(structure->text(), "");
  EXPECT_EQ(structure->int32(), -1);
  EXPECT_TRUE(structure->isAtEnd());
  EXPECT_EQ(outer.text(), "end");
  EXPECT_TRUE(outer.isAtEnd());
  EXPECT_EQ(outer.text(), std::nullopt);
}

TEST(Pod, AWrongTypeEndsTheReading) {
  const std::string bytes = PodWriter().text("7").int32(7).bytes();
  PodReader reader(bytes);
  EXPECT_EQ(reader.int32(), std::nullopt);
  EXPECT_EQ(reader.int32(), std::nullopt) << "nobody knows what stands there";
}

TEST(Pod, WhatIsCutShortIsAbsent) {
  const std::string whole = PodWriter().text("a text of some length").bytes();
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_EQ(PodReader(std::string_view(whole).substr(0, length)).text(), std::nullopt) << length;
  }
  EXPECT_TRUE(PodReader(whole).text());
}

TEST(Pod, ATextThatIsNoneIsEmpty) {
  const std::string none = word(0) + word(static_cast<std::uint32_t>(PodType::none));
  EXPECT_EQ(PodReader(none).text(), "");
}

TEST(Pod, ANumberTooShortForItsTypeIsAbsent) {
  const std::string bytes = word(2) + word(static_cast<std::uint32_t>(PodType::int32)) + word(7) + word(0);
  EXPECT_EQ(PodReader(bytes).int32(), std::nullopt);
}

TEST_F(Reading, MessagesInPiecesOfAnySize) {
  const std::string bytes = global(54, "PipeWire:Interface:Node", {{"media.class", "Audio/Sink"}}) +
                            message(pipeWireCore, 1, PodWriter().int32(0).int32(2));
  for (const char byte : bytes.substr(0, bytes.size() - 1)) reader.append(std::string(1, byte));
  EXPECT_EQ(all().size(), 1U);
  reader.append(bytes.substr(bytes.size() - 1));
  const std::vector<PipeWireEvent> rest = all();
  ASSERT_EQ(rest.size(), 1U);
  EXPECT_EQ(std::get<PipeWireDone>(rest[0]).sequence, 2);
}

TEST_F(Reading, AGlobalWithItsProperties) {
  reader.append(global(54, "PipeWire:Interface:Node", {{"media.class", "Audio/Sink"}, {"client.id", "7"}}));
  reader.append(global(55, "PipeWire:Interface:Link", {}));
  reader.append(global(56, "PipeWire:Interface:Client", {}));
  reader.append(global(57, "PipeWire:Interface:Port", {}));
  const std::vector<PipeWireEvent> events = all();
  ASSERT_EQ(events.size(), 4U);
  const auto& node = std::get<PipeWireGlobal>(events[0]);
  EXPECT_EQ(node.id, 54U);
  EXPECT_EQ(node.kind, PipeWireKind::node);
  EXPECT_EQ(node.properties.at("media.class"), "Audio/Sink");
  EXPECT_EQ(node.properties.at("client.id"), "7");
  EXPECT_EQ(std::get<PipeWireGlobal>(events[1]).kind, PipeWireKind::link);
  EXPECT_EQ(std::get<PipeWireGlobal>(events[2]).kind, PipeWireKind::client);
  EXPECT_EQ(std::get<PipeWireGlobal>(events[3]).kind, PipeWireKind::other);
}

TEST_F(Reading, HowLoudANodeWasMade) {
  constexpr std::uint32_t volume = 0x10003;
  constexpr std::uint32_t mute = 0x10004;
  constexpr std::uint32_t volumes = 0x10008;
  const auto floats = [](const std::vector<float>& values) {
    std::string body = word(4) + word(6);
    for (const float value : values) body.append(reinterpret_cast<const char*>(&value), sizeof value);
    return pod(13, body);
  };
  const auto isMutedBy = [&](const std::string& message) -> std::optional<bool> {
    reader.append(message);
    const std::vector<PipeWireEvent> events = all();
    const auto* loudness = events.size() == 1 ? std::get_if<PipeWireLoudness>(&events[0]) : nullptr;
    return loudness ? std::optional(loudness->isMuted) : std::nullopt;
  };
  EXPECT_EQ(isMutedBy(parameter(2, mute, pod(2, word(1)))), true);
  EXPECT_EQ(isMutedBy(parameter(2, mute, pod(2, word(0)))), false);
  EXPECT_EQ(isMutedBy(parameter(2, volume, pod(6, word(0)))), true);
  EXPECT_EQ(isMutedBy(parameter(2, volume, pod(6, word(0x3f800000)))), false) << "1.0";
  EXPECT_EQ(isMutedBy(parameter(2, volumes, floats({0, 0}))), true);
  EXPECT_EQ(isMutedBy(parameter(2, volumes, floats({0, 0.5F}))), false);
  EXPECT_EQ(isMutedBy(parameter(2, volumes, floats({}))), false);
  EXPECT_EQ(isMutedBy(parameter(2, volumes, pod(13, word(4) + word(4) + word(0)))), false) << "no floats";
  EXPECT_EQ(isMutedBy(parameter(2, mute, pod(4, word(1)))), false) << "no truth value";
  EXPECT_EQ(isMutedBy(parameter(3, mute, pod(2, word(1)))), std::nullopt) << "about something else";
}

TEST_F(Reading, WhatIsNotAskedForTellsNothing) {
  reader.append(message(pipeWireCore, 0, PodWriter().int32(0)));                      // who the core is
  reader.append(message(pipeWireCore, 1, PodWriter().int32(0)));                      // half an answer
  reader.append(message(pipeWireRegistry, 1, PodWriter().int32(54)));                 // something has gone
  reader.append(message(pipeWireRegistry, 0, PodWriter().int32(54).text("no type"))); // not a global
  reader.append(message(9, 0, PodWriter().int32(54)));                                // nothing of ours
  reader.append(word(3) + word(8) + word(0) + word(0) + word(0) + word(1));           // no structure
  reader.append(word(3) + word(0) + word(0) + word(0));                               // nothing at all
  const std::vector<PipeWireEvent> events = all();
  ASSERT_EQ(events.size(), 7U);
  for (const PipeWireEvent& event : events) EXPECT_TRUE(std::holds_alternative<std::monostate>(event));
}

TEST_F(Reading, APropertyListThatIsShorterThanItSays) {
  PodWriter list;
  list.int32(2).text("media.class").text("Audio/Sink").text("client.id");
  reader.append(
      message(pipeWireRegistry, 0,
              PodWriter().int32(1).int32(1).text("PipeWire:Interface:Node").int32(3).structure(list)));
  list = PodWriter().int32(-1);
  reader.append(
      message(pipeWireRegistry, 0,
              PodWriter().int32(1).int32(1).text("PipeWire:Interface:Node").int32(3).structure(list)));
  const std::vector<PipeWireEvent> events = all();
  ASSERT_EQ(events.size(), 2U);
  for (const PipeWireEvent& event : events) EXPECT_TRUE(std::holds_alternative<std::monostate>(event));
}

} // namespace
} // namespace vantle
