// SPDX-License-Identifier: MIT
// Who is heard without a sound server: what the kernel shows of sound cards, and of JACK's clients.
#include "platform/linux/audio/LinuxAudio.h"

#include "platform/posix/Descriptor.h"
#include "tests/support/NamedSocket.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <unistd.h>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

struct Direct : testing::Test {
  void process(Pid pid, const std::string& name) const {
    const std::string id = std::to_string(pid);
    proc.write(id + "/stat", id + " (" + name + ") S 1 1 1 0 -1 0 0 0 0 0 1 2 0 0 20 0 1 0 5 0 0 0\n");
    thread(pid, pid);
  }
  void thread(Pid tid, Pid pid) const {
    proc.write(std::to_string(tid) + "/status", "Name:\tx\nTgid:\t" + std::to_string(pid) + "\n");
  }
  void opened(Pid pid, const std::string& file) const {
    const fs::path folder = proc.path() / std::to_string(pid) / "fd";
    fs::create_directories(folder);
    fs::create_symlink(file, folder / "5");
  }
  void stream(const std::string& state, Pid owner) const {
    proc.write("asound/card0/pcm3p/sub0/status",
               "state: " + state + "\nowner_pid   : " + std::to_string(owner) + "\n");
  }
  std::set<Pid> heard() const {
    return LinuxAudio(std::make_shared<ProcKernel>(proc.path()),
                      {"", "unix:" + (proc.path() / "none").string(), proc.path()})
        .runningOutput();
  }

  desktop::TemporaryFolder proc;
};

TEST_F(Direct, TheProcessOfTheThreadThatOpenedARunningStream) {
  process(74, "player");
  thread(76, 74);
  stream("RUNNING", 76);
  EXPECT_THAT(heard(), ElementsAre(74));
  stream("PAUSED", 76);
  EXPECT_THAT(heard(), IsEmpty());
}

TEST_F(Direct, WhoeverSharesTheStream) {
  process(74, "player");
  process(75, "game");
  process(76, "editor");
  stream("RUNNING", 74);
  opened(75, "/dev/snd/pcmC0D3p");
  opened(76, "/dev/snd/pcmC0D0p");
  EXPECT_THAT(heard(), UnorderedElementsAre(74, 75));
}

TEST_F(Direct, ASoundServersStreamTellsOfNobody) {
  process(74, "pipewire");
  process(75, "wireplumber");
  stream("RUNNING", 74);
  opened(75, "/dev/snd/pcmC0D3p");
  EXPECT_THAT(heard(), IsEmpty());
}

TEST_F(Direct, AnOwnerOutOfSightIsFoundByWhatItHasOpen) {
  process(75, "player");
  stream("RUNNING", 0);
  opened(75, "/dev/snd/pcmC0D3p");
  EXPECT_THAT(heard(), ElementsAre(75));
}

TEST_F(Direct, TheClientsOfAJackServerThatRuns) {
  process(74, "synth");
  process(75, "editor");
  process(76, "sampler"); // hides what it has open
  opened(74, "/dev/shm/jack_sem.1000_default_system");
  opened(75, "/dev/shm/something");
  EXPECT_THAT(heard(), IsEmpty()) << "no server";
  const std::string end = "_" + std::to_string(::geteuid()) + "_0";
  proc.write("jack_db" + end, "no socket");
  EXPECT_THAT(heard(), IsEmpty());
  const Descriptor server(desktop::listeningSocket((proc.path() / ("jack_default" + end)).string()));
  ASSERT_TRUE(server);
  EXPECT_THAT(heard(), UnorderedElementsAre(74, 76));
}

} // namespace
} // namespace vantle
