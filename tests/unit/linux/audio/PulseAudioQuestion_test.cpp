// SPDX-License-Identifier: MIT
#include "platform/linux/audio/PulseAudioQuestion.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <string>

namespace vantle {
namespace {

void expectNobody(const std::string& library) {
  PulseAudioQuestion question("unix:" + (desktop::TemporaryFolder().path() / "none").string(), library);
  for (int asked = 0; asked < 2; ++asked) {
    question.ask();
    EXPECT_FALSE(question.isAsking());
    EXPECT_FALSE(question.players());
    EXPECT_FALSE(question.isPipeWire());
  }
}

TEST(PulseAudioQuestion, TellsOfNobodyWithoutTheLibrary) { expectNobody("libpulse-of-nobody.so.0"); }

TEST(PulseAudioQuestion, TellsOfNobodyWithALibraryThatLacksAFunction) { expectNobody("libc.so.6"); }

} // namespace
} // namespace vantle
