// SPDX-License-Identifier: MIT
#include "platform/darwin/audio/CoreAudioActivity.h"

#include "tests/unit/darwin/DarwinFixture.h"

#include <gmock/gmock.h>
#include <thread>

namespace vantle {
namespace {

using testing::ElementsAre;

class Audio : public DarwinTest {
 protected:
  CoreAudioActivity audio;
};

TEST_F(Audio, AsksForTheObjectsThenWhoRunsThenWhoThatIs) {
  machine.audio.heard = {100, 110};
  kernel->silent = {105};
  kernel->startTrace();
  EXPECT_THAT(audio.runningOutput(), ElementsAre(100, 110));
  EXPECT_THAT(calls(), ElementsAre("AudioObjectGetPropertyDataSize(1, prs# glob 0)",
                                   "AudioObjectGetPropertyData(1, prs# glob 0, 12)",
                                   "AudioObjectGetPropertyData(1100, piro glob 0, 4)",
                                   "AudioObjectGetPropertyData(1100, ppid glob 0, 4)",
                                   "AudioObjectGetPropertyData(1105, piro glob 0, 4)",
                                   "AudioObjectGetPropertyData(1110, piro glob 0, 4)",
                                   "AudioObjectGetPropertyData(1110, ppid glob 0, 4)"));
}

TEST_F(Audio, LeavesOutWhatCannotBeRead) {
  machine.audio.heard = {100, 110, 120, 130};
  kernel->audioGone = {100};
  kernel->audioWithoutProcess = {110};
  kernel->audioOdd = {120};
  EXPECT_THAT(audio.runningOutput(), ElementsAre(130));
}

TEST_F(Audio, WithoutAListNobodyIsHeard) {
  EXPECT_THAT(audio.runningOutput(), testing::IsEmpty()) << "nobody is there";
  machine.audio.heard = {100};
  machine.calls.refuse(Operation::probeAudio);
  EXPECT_THAT(audio.runningOutput(), testing::IsEmpty());
}

TEST_F(Audio, AServerThatHangsIsAskedOnceAndNotWaitedFor) {
  machine.audio.heard = {100};
  std::unique_lock hangs(kernel->audioServer);
  EXPECT_THAT(audio.runningOutput(), testing::IsEmpty());
  EXPECT_THAT(audio.runningOutput(), testing::IsEmpty()) << "and no second question";
  hangs.unlock();
  std::set<Pid> heard;
  while (heard.empty()) { // until the first one has its answer
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    heard = audio.runningOutput();
  }
  EXPECT_THAT(heard, ElementsAre(100));
  EXPECT_EQ(kernel->audioAnswers, 2);
}

TEST_F(Audio, IsReachedAheadWithoutWaitingAndWithoutTakingTheQuestionsPlace) {
  machine.audio.heard = {100};
  std::unique_lock hangs(kernel->audioServer);
  audio.askAhead();
  EXPECT_EQ(kernel->audioAnswers, 0);
  EXPECT_THAT(audio.runningOutput(), testing::IsEmpty());
  hangs.unlock();
  audioHasAnswered(2);
  while (audio.runningOutput().empty()) // until the first one has its answer
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

TEST_F(Audio, IsNotReachedAheadWhereThereIsNothingToAsk) {
  kernel->texts["kern.osproductversion"] = "14.1";
  audio.askAhead();
  EXPECT_THAT(audio.runningOutput(), testing::IsEmpty()) << "the only one";
  EXPECT_EQ(kernel->audioAnswers, 1);
}

TEST_F(Audio, IsThereFromTheVersionOnThatHasIt) {
  const std::map<std::string, bool> versions{{"13.7", false}, {"14", false},   {"14.1.2", false},
                                             {"14.2", true},  {"14.10", true}, {"15.0", true},
                                             {"26", true},    {"", false},     {"beta", false}};
  for (const auto& [version, isThere] : versions) {
    kernel->texts["kern.osproductversion"] = version;
    EXPECT_EQ(audio.isAvailable(), isThere) << version;
  }
  kernel->texts.clear();
  EXPECT_FALSE(audio.isAvailable());
}

} // namespace
} // namespace vantle
