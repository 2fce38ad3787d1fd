// SPDX-License-Identifier: MIT
#include "platform/linux/audio/AlsaStatus.h"

#include "platform/linux/kernel/ProcKernel.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vantle {
namespace {

std::string statusOf(const std::string& state, const std::string& owner) {
  return "state: " + state + "\nowner_pid   : " + owner +
         "\ntrigger_time: 42.100\ntstamp      : 43.2\ndelay       : 960\navail       : 64\n" +
         "avail_max   : 128\n-----\nhw_ptr      : 4800\nappl_ptr    : 5760\n";
}

TEST(PlayingThread, IsTheOneThatOpenedARunningStream) {
  EXPECT_EQ(playingThread(statusOf("RUNNING", "1234")), 1234);
  EXPECT_EQ(playingThread(statusOf("DRAINING", "1234")), 1234) << "what is left is heard too";
  EXPECT_EQ(playingThread(statusOf("RUNNING", "0")), 0) << "of a namespace outside this one";
}

TEST(PlayingThread, IsNobodyWhereNothingPlays) {
  for (const char* state : {"OPEN", "SETUP", "PREPARED", "XRUN", "PAUSED", "SUSPENDED", "DISCONNECTED", "",
                            "RUNNING_ON", "RUN"}) {
    EXPECT_EQ(playingThread(statusOf(state, "1234")), std::nullopt) << state;
  }
  for (const char* text : {"", "closed\n", "state: RUNNING\n", "owner_pid   : 7\n",
                           "state: RUNNING\nowner_pid", "state: RUNNING\nowner_pid   : \n"}) {
    EXPECT_EQ(playingThread(text), std::nullopt) << text;
  }
  for (const char* owner : {"", "-1", "7x", "99999999999"}) {
    EXPECT_EQ(playingThread(statusOf("RUNNING", owner)), std::nullopt) << owner;
  }
}

TEST(AlsaPlaybacks, AreFoundOnEveryCardAndDevice) {
  const desktop::TemporaryFolder proc;
  proc.write("asound/version", "Advanced Linux Sound Architecture Driver\n");
  proc.write("asound/card0/id", "PCH\n");
  proc.write("asound/card0/pcm0p/sub0/status", statusOf("RUNNING", "1234"));
  proc.write("asound/card0/pcm0c/sub0/status", statusOf("RUNNING", "1234")); // recorded, not heard
  proc.write("asound/card0/pcm3p/sub0/status", "closed\n");
  proc.write("asound/card12/pcm7p/sub0/status", statusOf("PREPARED", "77"));
  proc.write("asound/card12/pcm7p/sub3/status", statusOf("RUNNING", "78"));
  proc.write("asound/seq/pcm0p/sub0/status", statusOf("RUNNING", "99"));
  std::filesystem::create_directory_symlink("card0", proc.path() / "asound/PCH"); // as the kernel does
  const std::vector<AlsaPlayback> found = alsaPlaybacks(ProcKernel(proc.path()));
  std::map<std::string, Pid> byDevice;
  for (const AlsaPlayback& playback : found) byDevice[playback.device] = playback.thread;
  EXPECT_EQ(found.size(), 2U);
  EXPECT_EQ(byDevice, (std::map<std::string, Pid>{{"/dev/snd/pcmC0D0p", 1234}, {"/dev/snd/pcmC12D7p", 78}}));
}

TEST(AlsaPlaybacks, ThereAreNoneWithoutSoundCards) {
  const desktop::TemporaryFolder proc;
  EXPECT_TRUE(alsaPlaybacks(ProcKernel(proc.path())).empty());
}

} // namespace
} // namespace vantle
