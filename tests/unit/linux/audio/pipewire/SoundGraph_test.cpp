// SPDX-License-Identifier: MIT
#include "platform/linux/audio/pipewire/SoundGraph.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr std::uint32_t idle = 2;
constexpr std::uint32_t running = 3;

struct Graph : testing::Test {
  Graph() { graph.add({sink, PipeWireKind::node, {{"media.class", "Audio/Sink"}, {"client.id", "30"}}}); }

  void node(std::uint32_t id, std::uint32_t client, const char* media = "Stream/Output/Audio") {
    graph.add({id, PipeWireKind::node, {{"media.class", media}, {"client.id", std::to_string(client)}}});
  }
  void link(std::uint32_t from, std::uint32_t to) {
    graph.add({1000 + ++links,
               PipeWireKind::link,
               {{"link.output.node", std::to_string(from)}, {"link.input.node", std::to_string(to)}}});
  }
  void isIn(std::uint32_t state, std::uint32_t id, const PipeWireProperties& properties = {}) {
    graph.addNodeInfo(id, {0, state, properties});
  }
  void client(std::uint32_t id, const PipeWireProperties& properties) {
    graph.addClientInfo(id, {0, std::nullopt, properties});
  }
  std::vector<Pid> pids() const {
    std::vector<Pid> pids;
    for (const Player& player : graph.players()) pids.push_back(player.pid);
    return pids;
  }

  static constexpr std::uint32_t sink = 43;
  std::uint32_t links = 0;
  SoundGraph graph;
};

TEST_F(Graph, WhoeverIsLinkedToASinkAndRunsIsHeard) {
  node(50, 60);
  node(51, 61);
  node(52, 62); // linked to nothing
  link(50, sink);
  link(51, sink);
  EXPECT_THAT(graph.leadingToSinks(), ElementsAre(50, 51));
  EXPECT_EQ(graph.clientOf(50), 60U);
  for (const std::uint32_t id : {50U, 52U}) isIn(running, id);
  isIn(idle, 51);
  client(60, {{"pipewire.sec.pid", "100"}});
  client(61, {{"pipewire.sec.pid", "101"}});
  client(62, {{"pipewire.sec.pid", "102"}});
  EXPECT_THAT(pids(), ElementsAre(100));
}

TEST_F(Graph, WhatIsMutedIsNotHeard) {
  node(50, 60);
  link(50, sink);
  isIn(running, 50);
  client(60, {{"pipewire.sec.pid", "100"}});
  graph.setMuted(77);
  EXPECT_THAT(pids(), ElementsAre(100));
  graph.setMuted(50);
  EXPECT_THAT(pids(), IsEmpty());
}

TEST_F(Graph, SoundIsFollowedThroughFiltersAndAroundCircles) {
  node(50, 60);
  node(51, 61, "");           // a JACK client has no class
  node(52, 62, "Audio/Sink"); // the near side of an equaliser
  node(53, 62);               // and its far side
  node(54, 63);
  link(50, 51);
  link(51, 50);
  link(51, sink);
  link(54, 52);
  link(53, sink);
  EXPECT_THAT(graph.leadingToSinks(), ElementsAre(50, 51, 53, 54));
}

TEST_F(Graph, WhoListensToASinkIsNotHeard) {
  node(50, 60, "Stream/Input/Audio");
  link(sink, 50);
  EXPECT_THAT(graph.leadingToSinks(), IsEmpty());
}

// A player, and a filter whose capturing node is linked to it and whose other node plays.
struct Filter : Graph {
  Filter() {
    node(50, 60);
    node(51, 61, "Stream/Input/Audio");
    node(52, 62);
    link(50, 51);
    link(52, sink);
    for (const std::uint32_t id : {50U, 51U, 52U}) isIn(running, id, group);
    isIn(running, 50);
    client(60, {{"pipewire.sec.pid", "100"}});
    client(61, {{"pipewire.sec.pid", "101"}});
    client(62, {{"pipewire.sec.pid", "102"}});
  }
  const PipeWireProperties group{{"node.link-group", "loopback-7"}};
};

TEST_F(Filter, SoundIsFollowedThroughTheNodesOfALinkGroup) {
  EXPECT_THAT(graph.worthAsking(), ElementsAre(50, 51, 52));
  EXPECT_THAT(pids(), UnorderedElementsAre(100, 101, 102));
  isIn(running, 51, {{"node.link-group", "loopback-8"}});
  EXPECT_THAT(pids(), ElementsAre(102)) << "of another group";
}

TEST_F(Filter, ThatIsPausedOrMutedPassesNothingOn) {
  isIn(idle, 52, group);
  EXPECT_THAT(pids(), IsEmpty());
  isIn(running, 52, group);
  EXPECT_THAT(pids(), UnorderedElementsAre(100, 101, 102));
  graph.setMuted(52);
  EXPECT_THAT(pids(), IsEmpty());
}

TEST_F(Filter, SoundIsFollowedThroughAVirtualSource) {
  node(53, 63, "Audio/Source/Virtual");
  node(54, 64);
  link(54, 53);
  isIn(running, 54);
  client(64, {{"pipewire.sec.pid", "104"}});
  EXPECT_THAT(pids(), UnorderedElementsAre(100, 101, 102)) << "nobody captures from it";
  link(53, 51);
  EXPECT_THAT(pids(), UnorderedElementsAre(100, 101, 102, 104));
}

TEST_F(Filter, SeveralInARowAreFollowed) {
  node(53, 63, "Stream/Input/Audio");
  node(54, 63);
  link(50, 53);
  link(54, 51);
  for (const std::uint32_t id : {53U, 54U}) isIn(running, id, {{"node.link-group", "loopback-8"}});
  client(63, {{"pipewire.sec.pid", "103"}});
  EXPECT_THAT(pids(), UnorderedElementsAre(100, 101, 102, 103, 103));
}

TEST_F(Graph, WhatAClientCapturesGoesOnInWhatItPlays) {
  node(50, 60);
  node(51, 61, "Stream/Input/Audio");
  node(52, 61);
  link(50, 51);
  link(52, sink);
  for (const std::uint32_t id : {50U, 51U, 52U}) isIn(running, id);
  client(60, {{"pipewire.sec.pid", "100"}});
  client(61, {{"pipewire.sec.pid", "101"}});
  EXPECT_THAT(pids(), UnorderedElementsAre(100, 101, 101));
  isIn(running, 51, {{"node.link-group", "loopback-7"}});
  EXPECT_THAT(pids(), ElementsAre(101)) << "that node's filter is another one";
}

TEST_F(Graph, ARecorderAloneMakesNobodyHeard) {
  node(50, 60);
  node(51, 61, "Stream/Input/Audio");
  node(52, 62, "Stream/Input/Audio"); // of nobody who plays
  link(50, 51);
  for (const std::uint32_t id : {50U, 51U, 52U}) isIn(running, id);
  for (const std::uint32_t id : {60U, 61U, 62U}) client(id, {{"pipewire.sec.pid", std::to_string(id + 40)}});
  EXPECT_THAT(graph.worthAsking(), ElementsAre(50, 51)) << "it might be a filter";
  EXPECT_THAT(pids(), IsEmpty());
  node(53, 61); // plays to nobody
  isIn(running, 53);
  EXPECT_THAT(pids(), IsEmpty());
}

TEST_F(Graph, TheServersWordOnAProcessGoesBeforeTheClients) {
  node(50, 60);
  link(50, sink);
  isIn(running, 50);
  client(60, {{"pipewire.sec.pid", "100"}, {"application.process.id", "1"}});
  EXPECT_THAT(pids(), ElementsAre(100));
}

TEST_F(Graph, PulseAudiosClientsSpeakForThemselves) {
  node(50, 60);
  link(50, sink);
  isIn(running, 50, {{"application.process.id", "1"}});
  client(60, {{"pipewire.sec.pid", "100"},
              {"client.api", "pipewire-pulse"},
              {"application.process.id", "999"},
              {"application.process.binary", "pacat"},
              {"application.process.machine-id", "this"},
              {"application.process.host", "desk"},
              {"pipewire.access.portal.app_id", "org.example.Music"}});
  ASSERT_EQ(graph.players().size(), 1U);
  const Player player = graph.players().front();
  EXPECT_EQ(player.pid, 0) << "that is the server";
  EXPECT_EQ(player.claim.pid, 1) << "the stream's own word";
  EXPECT_EQ(player.claim.program, "pacat");
  EXPECT_EQ(player.claim.machine, "this");
  EXPECT_EQ(player.claim.host, "desk");
  EXPECT_EQ(player.claim.sandbox, "org.example.Music");
}

TEST_F(Graph, WhereTheServerDoesNotKnowTheClientsWordIsAllThereIs) {
  node(50, 60);
  link(50, sink);
  isIn(running, 50);
  client(60, {{"pipewire.sec.pid", "0"}, {"application.process.id", "7"}});
  ASSERT_EQ(graph.players().size(), 1U);
  EXPECT_EQ(graph.players().front().pid, 0);
  EXPECT_EQ(graph.players().front().claim.pid, 7);
}

TEST_F(Graph, NonsenseIsNobody) {
  graph.add({50, PipeWireKind::node, {{"media.class", "Stream/Output/Audio"}, {"client.id", "x"}}});
  graph.add({51, PipeWireKind::link, {{"link.output.node", "50"}}});
  graph.add({52, PipeWireKind::link, {{"link.output.node", "77"}, {"link.input.node", "43"}}});
  EXPECT_THAT(graph.leadingToSinks(), IsEmpty());
  EXPECT_EQ(graph.clientOf(50), std::nullopt);
  EXPECT_EQ(graph.clientOf(77), std::nullopt);
  isIn(running, 77);
  link(50, sink);
  isIn(running, 50);
  EXPECT_THAT(graph.players(), IsEmpty()) << "the server's own";
}

} // namespace
} // namespace vantle
