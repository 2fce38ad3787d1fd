// SPDX-License-Identifier: MIT
// Who is heard, asked of a real sound server with real players.
#include "platform/linux/audio/PulseAudioActivity.h"
#include "tests/support/Props.h"
#include "tests/support/SoundServer.h"
#include "tests/support/VirtualDesktop.h"
#include "tests/support/Wait.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

namespace vantle::desktop {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Not;

// Far above the 200 ms that a question may take, so that a busy machine does not fail the test, and far below
// the libraries' own limits of 25 s and more.
constexpr std::chrono::seconds farTooLong{5};

struct Audio : testing::Test {
  VirtualDesktop desktop{{.user = {}, .screen = "640x480x24", .windowManager = false, .environment = {}}};
  SoundServer sound{desktop};
  PulseAudioActivity activity{sound.address()};

  bool isHeard(Pid pid) { return activity.runningOutput().contains(pid); }
  void expectHeard(const char* what, Pid pid) {
    EXPECT_TRUE(waitUntil([&] { return isHeard(pid); })) << what;
  }
  void expectSilent(const char* what, Pid pid) {
    EXPECT_TRUE(waitUntil([&] { return !isHeard(pid); })) << what;
  }
  std::chrono::nanoseconds timeOfQuestion() {
    const auto start = std::chrono::steady_clock::now();
    activity.runningOutput();
    return std::chrono::steady_clock::now() - start;
  }
};

TEST_F(Audio, HearsEveryKindOfPlayerAndItsEnd) {
  EXPECT_THAT(activity.runningOutput(), IsEmpty());
  const std::string tone = sound.tone().string();
  Program& pulse = desktop.launch({"paplay", tone});
  Program& native = desktop.launch({"pw-play", tone});
  Program& alsa = desktop.launch({"aplay", "-q", "-D", "pipewire", tone});
  expectHeard("PulseAudio", pulse.pid());
  expectHeard("PipeWire", native.pid());
  expectHeard("ALSA", alsa.pid());
  EXPECT_THAT(activity.runningOutput(), Not(Contains(sound.pulse().pid()))) << "the server itself";

  native.signal(SIGTERM);
  expectSilent("ended", native.pid());
  EXPECT_TRUE(isHeard(pulse.pid()));
}

TEST_F(Audio, APausedPlayerIsNotHeard) {
  Program& player = desktop.launch({tonePlayer()});
  expectHeard("playing", player.pid());
  player.signal(SIGUSR1);
  expectSilent("paused", player.pid());
  player.signal(SIGUSR2);
  expectHeard("playing on", player.pid());
}

TEST_F(Audio, TheChildThatPlaysIsTheOneHeard) {
  Program& app = desktop.launch({"sh", "-c", tonePlayer() + "; true"});
  std::set<Pid> heard;
  ASSERT_TRUE(waitUntil([&] { return !(heard = activity.runningOutput()).empty(); }));
  EXPECT_THAT(heard, Not(Contains(app.pid())));
  EXPECT_TRUE(processesOf({app.pid()}).contains(*heard.begin()));
}

TEST_F(Audio, AServerThatDiesIsSilenceAndItsSuccessorIsFound) {
  Program& player = desktop.launch({tonePlayer()});
  expectHeard("before", player.pid());
  sound.pulse().kill();
  EXPECT_THAT(activity.runningOutput(), IsEmpty());
  EXPECT_LT(timeOfQuestion(), farTooLong);

  sound.startPulse();
  Program& next = desktop.launch({tonePlayer()});
  expectHeard("after", next.pid());
}

TEST_F(Audio, AServerThatHangsIsSilenceWithoutWaitingTwice) {
  Program& player = desktop.launch({tonePlayer()});
  expectHeard("before", player.pid());
  sound.pulse().signal(SIGSTOP);
  EXPECT_LT(timeOfQuestion(), farTooLong);
  // A hundred questions that each waited would take twenty seconds.
  const auto start = std::chrono::steady_clock::now();
  for (int at = 0; at < 100; ++at) EXPECT_THAT(activity.runningOutput(), IsEmpty());
  EXPECT_LT(std::chrono::steady_clock::now() - start, farTooLong);

  PulseAudioActivity stranger(sound.address()); // has not even been let in
  EXPECT_THAT(stranger.runningOutput(), IsEmpty());
  sound.pulse().signal(SIGCONT);
  expectHeard("after", player.pid());
  EXPECT_TRUE(waitUntil([&] { return stranger.runningOutput().contains(player.pid()); }));
}

// A decision is one question: what it misses is slowed until the next one.
TEST_F(Audio, AfterOneSlowAnswerTheNextQuestionIsHeardAtOnce) {
  Program& player = desktop.launch({tonePlayer()});
  expectHeard("before", player.pid());
  PulseAudioActivity stranger(sound.address()); // has not been let in when the server goes slow
  sound.pulse().signal(SIGSTOP);
  EXPECT_THAT(activity.runningOutput(), IsEmpty());
  EXPECT_THAT(stranger.runningOutput(), IsEmpty());
  sound.pulse().signal(SIGCONT);
  ASSERT_TRUE(desktop.run({"pactl", "info"})) << "it has answered others that came later";
  EXPECT_THAT(activity.runningOutput(), Contains(player.pid()));
  EXPECT_THAT(stranger.runningOutput(), Contains(player.pid()));
}

TEST_F(Audio, WithoutAServerThereIsSilenceAndNoneIsStarted) {
  PulseAudioActivity nobody("unix:" + (desktop.runtimeDir() / "nothing-here").string());
  EXPECT_THAT(nobody.runningOutput(), IsEmpty());
  EXPECT_THAT(nobody.runningOutput(), IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(desktop.runtimeDir() / "nothing-here"));
}

} // namespace
} // namespace vantle::desktop
