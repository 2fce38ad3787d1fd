// SPDX-License-Identifier: MIT
#include "platform/linux/audio/AudioStreams.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(PidFromText, TakesDecimalDigitsAlone) {
  EXPECT_EQ(pidFromText("1"), 1);
  EXPECT_EQ(pidFromText("4194304"), 4194304);
  for (const char* text : {"", "0", "-7", " 7", "7 ", "7x", "0x7", "2147483648", "99999999999999999999"}) {
    EXPECT_EQ(pidFromText(text), std::nullopt) << text;
  }
}

std::vector<Pid> pidsOf(const AudioStreams& streams) {
  std::vector<Pid> pids;
  for (const Player& player : streams.players()) pids.push_back(player.claim.pid);
  return pids;
}

TEST(AudioStreams, AStreamNamesItsOwnProcessElseItsClientDoes) {
  AudioStreams streams;
  streams.addInput(1, {100, "own", "", ""});
  streams.addInput(2, {});
  streams.addClient(1, {999, "relay", "machine", "", "desk"}); // a client may play for others
  streams.addClient(2, {200, "player", "machine", ""});
  streams.addClient(3, {300, "editor", "machine", ""}); // plays nothing
  EXPECT_THAT(pidsOf(streams), ElementsAre(100, 200));
  const std::vector<Player> players = streams.players();
  EXPECT_EQ(players[0].claim.program, "own");
  EXPECT_EQ(players[0].claim.machine, "machine") << "what the stream leaves open";
  EXPECT_EQ(players[0].claim.host, "desk");
  EXPECT_EQ(players[1].claim.program, "player");
}

TEST(AudioStreams, WhatNamesNobodyIsNobody) {
  AudioStreams streams;
  streams.addInput(4294967295, {}); // of the server itself, without a client
  streams.addInput(5, {});
  streams.addClient(5, {});
  EXPECT_THAT(streams.players(), IsEmpty());
}

} // namespace
} // namespace vantle
