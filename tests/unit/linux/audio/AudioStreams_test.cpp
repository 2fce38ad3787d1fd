// SPDX-License-Identifier: MIT
#include "platform/linux/audio/AudioStreams.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

TEST(AudioStreams, AStreamNamesItsOwnProcessElseItsClientDoes) {
  AudioStreams streams;
  streams.addInput(1, "100");
  streams.addInput(2, "");
  streams.addClient(1, "999"); // a client may play for others
  streams.addClient(2, "200");
  streams.addClient(3, "300"); // plays nothing
  EXPECT_THAT(streams.playing(), ElementsAre(100, 200));
}

TEST(AudioStreams, WhatNamesNobodyIsNobody) {
  AudioStreams streams;
  streams.addInput(4294967295, ""); // of the server itself, without a client
  streams.addInput(5, "not a number");
  streams.addClient(5, "neither");
  EXPECT_THAT(streams.playing(), IsEmpty());
}

} // namespace
} // namespace vantle
