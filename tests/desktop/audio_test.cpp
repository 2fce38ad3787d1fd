// SPDX-License-Identifier: MIT
// Who is heard, asked of a real sound server with real players.
#include "platform/linux/audio/LinuxAudio.h"
#include "tests/support/Props.h"
#include "tests/support/SoundServer.h"
#include "tests/support/VirtualDesktop.h"
#include "tests/support/Wait.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace vantle::desktop {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

// Far above the 200 ms that a question may take, so that a busy machine does not fail the test, and far below
// the libraries' own limits of 25 s and more.
constexpr std::chrono::seconds farTooLong{5};

// JACK without PipeWire. The machine has one list of all such servers, with room for eight, and one folder
// for what they share: both are left as they were. A run that is killed leaves its place in the list taken,
// so the name is always the same: the next run has that place again.
class JackServer {
 public:
  explicit JackServer(PrivateSession& session) {
    session.setEnvironment("JACK_DEFAULT_SERVER", m_name);
    session.setEnvironment("JACK_NO_START_SERVER", "1");
    m_server = &session.launch({"jackd", "--name", m_name, "--no-realtime", "-d", "dummy"});
    require("JACK", [&] { return session.run({"jack_lsp"}); });
  }
  ~JackServer() {
    const std::set<std::string> shared = sharedMemory();
    m_server->signal(SIGTERM);
    m_server->waitForEnd();
    std::error_code error;
    for (const std::string& file : shared) std::filesystem::remove(file, error);
    for (const auto& entry : std::filesystem::directory_iterator("/dev/shm")) {
      if (entry.path().string().find("_" + m_name + "_") != std::string::npos)
        std::filesystem::remove(entry.path(), error);
    }
  }
  JackServer(const JackServer&) = delete;
  JackServer& operator=(const JackServer&) = delete;

 private:
  // It leaves 100 MB behind for its successor.
  std::set<std::string> sharedMemory() const {
    std::ifstream maps("/proc/" + std::to_string(m_server->pid()) + "/maps");
    std::set<std::string> files;
    for (std::string line; std::getline(maps, line);) {
      const std::size_t path = line.find("/dev/shm/jack-" + std::to_string(::geteuid()) + "-");
      if (path != std::string::npos) files.insert(line.substr(path));
    }
    return files;
  }

  const std::string m_name = "vantle-test";
  Program* m_server = nullptr;
};

struct Audio : testing::Test {
  // Other tests of this machine may have a JACK server at the same time.
  LinuxAudio asking(const std::string& pipeWire, const std::string& pulseAudio) const {
    return {kernel, {pipeWire, pulseAudio, desktop.runtimeDir()}};
  }

  // The program, or a process of its own.
  static bool isAmong(const std::set<Pid>& heard, const Program& program) {
    const std::set<Pid> own = processesOf({program.pid()});
    return std::any_of(heard.begin(), heard.end(), [&](Pid pid) { return own.contains(pid); });
  }
  bool isHeard(const Program& program) { return isAmong(activity.runningOutput(), program); }
  void expectHeard(const char* what, const Program& program) {
    EXPECT_TRUE(waitUntil([&] { return isHeard(program); })) << what;
  }
  void expectSilent(const char* what, const Program& program) {
    EXPECT_TRUE(waitUntil([&] { return !isHeard(program); })) << what;
  }
  // In a process-number namespace, where it is number 1 or 2.
  Program& launchInSandbox(std::vector<std::string> command) {
    const char* const unshare[] = {"unshare", "--user", "--map-current-user",
                                   "--pid",   "--fork", "--kill-child"};
    command.insert(command.begin(), std::begin(unshare), std::end(unshare));
    return desktop.launch(std::move(command));
  }

  VirtualDesktop desktop{{.user = {}, .screen = "640x480x24", .windowManager = false, .environment = {}}};
  SoundServer sound{desktop};
  const std::shared_ptr<const ProcKernel> kernel = std::make_shared<ProcKernel>();
  LinuxAudio activity = asking(sound.pipeWire(), sound.address());
};

// What PulseAudio's protocol tells, where no PipeWire answers.
struct AudioWithoutPipeWire : Audio {
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

  LinuxAudio activity = asking("", sound.address());
};

TEST_F(Audio, HearsEveryKindOfPlayerAndItsEnd) {
  EXPECT_THAT(activity.runningOutput(), IsEmpty());
  const std::string tone = sound.tone().string();
  Program& pulse = desktop.launch({"paplay", tone});
  Program& native = desktop.launch({"pw-play", tone});
  Program& alsa = desktop.launch({"aplay", "-q", "-D", "pipewire", tone});
  expectHeard("PulseAudio", pulse);
  expectHeard("PipeWire", native);
  expectHeard("ALSA", alsa);
  EXPECT_THAT(activity.runningOutput(), UnorderedElementsAre(pulse.pid(), native.pid(), alsa.pid()));

  native.signal(SIGTERM);
  expectSilent("ended", native);
  EXPECT_TRUE(isHeard(pulse));
}

TEST_F(Audio, HearsEveryKindOfPlayerInASandbox) {
  const std::string tone = sound.tone().string();
  Program& pulse = launchInSandbox({"paplay", tone});
  Program& native = launchInSandbox({"pw-play", tone});
  Program& alsa = launchInSandbox({"aplay", "-q", "-D", "pipewire", tone});
  expectHeard("PulseAudio", pulse);
  expectHeard("PipeWire", native);
  expectHeard("ALSA", alsa);
  EXPECT_THAT(activity.runningOutput(), Not(Contains(1))) << "a number from inside is a stranger's out here";
}

// PulseAudio's clients then say the machine's name for its id, and anything for their program.
TEST_F(Audio, HearsAPlayerInASandboxWithoutAMachineIdOrProc) {
  using Command = std::vector<std::string>;
  const Command blindfold{"--tmpfs", "/proc"};
  Command noId;
  for (const char* id : {"/etc/machine-id", "/var/lib/dbus/machine-id"}) {
    if (std::filesystem::exists(id)) noId.insert(noId.end(), {"--ro-bind", "/dev/null", id});
  }
  const auto in = [](const Command& without, const Command& command) {
    Command all{"bwrap", "--dev-bind", "/", "/"};
    all.insert(all.end(), without.begin(), without.end());
    all.insert(all.end(), command.begin(), command.end());
    return all;
  };
  if (!desktop.run(in(blindfold, {"true"}))) GTEST_SKIP() << "no containers here";
  Program& nameless = desktop.launch(in(noId, {"paplay", sound.tone().string()}));
  // Under its own name it knows itself.
  const std::filesystem::path renamed = desktop.runtimeDir() / "player";
  std::filesystem::copy_file(std::filesystem::canonical("/usr/bin/paplay"), renamed);
  Program& blind = desktop.launch(in(blindfold, {renamed.string(), sound.tone().string()}));
  expectHeard("without a machine id", nameless);
  expectHeard("without /proc", blind);
}

// Each has its own library for sound: an old SDL in the first, OpenAL or a newer SDL in the others.
TEST_F(Audio, HearsGamesAndATracker) {
  for (const std::vector<std::string>& app : {std::vector<std::string>{"kobodl", "-nofullscreen"},
                                              {"chromium-bsu", "-w"},
                                              {"milkytracker", sound.song()}}) {
    Program& plain = desktop.launch(app);
    expectHeard(app.front().c_str(), plain);
    plain.kill();
    Program& sandboxed = launchInSandbox(app);
    expectHeard((app.front() + " in a sandbox").c_str(), sandboxed);
    sandboxed.kill();
  }
}

TEST_F(Audio, HearsTheClientsOfJackWithoutPipeWire) {
  LinuxAudio jackToo(kernel, {"", "unix:/nothing-here"});
  const JackServer server(desktop);
  Program& metro = desktop.launch({"jack_metro", "--bpm", "120"});
  Program& sandboxed = launchInSandbox({"jack_metro", "--name", "inner", "--bpm", "60"});
  const auto isHeardNow = [&](const Program& program) { return isAmong(jackToo.runningOutput(), program); };
  EXPECT_TRUE(waitUntil([&] { return isHeardNow(metro); }));
  EXPECT_TRUE(waitUntil([&] { return isHeardNow(sandboxed); })) << "in a sandbox";
  const Program& bystander = desktop.launch({"sleep", "1000"});
  EXPECT_FALSE(isHeardNow(bystander));
  for (Program* client : {&metro, &sandboxed}) client->kill(); // the server then leaves nothing behind
}

// Nothing but its links says that it is heard: it has no stream of a player's kind.
TEST_F(Audio, HearsAJackClientOnceItIsConnected) {
  for (const bool isInSandbox : {false, true}) {
    const std::vector<std::string> command{"pw-jack", "jack_metro", "--bpm", "120"};
    Program& metro = isInSandbox ? launchInSandbox(command) : desktop.launch(command);
    ASSERT_TRUE(waitUntil([&] { return desktop.run({"sh", "-c", "pw-link -o | grep -q ^metro:"}); }));
    EXPECT_FALSE(isHeard(metro)) << "connected to nothing";
    ASSERT_TRUE(desktop.run({"pw-link", "metro:120_bpm", "null0:playback_FL"}));
    expectHeard("connected", metro);
    ASSERT_TRUE(desktop.run({"pw-link", "-d", "metro:120_bpm", "null0:playback_FL"}));
    expectSilent("not any more", metro);
    metro.kill();
    ASSERT_TRUE(waitUntil([&] { return !desktop.run({"sh", "-c", "pw-link -o | grep -q ^metro:"}); }));
  }
}

// All sound goes through it, so it must run as well as the players do.
TEST_F(Audio, HearsAFilterAndWhoPlaysThroughIt) {
  Program& filter = desktop.launch(
      {"pw-loopback", "--name", "filter", "--capture-props", "media.class=Audio/Sink node.name=equaliser"});
  ASSERT_TRUE(waitUntil([&] {
    return desktop.run({"sh", "-c", "pactl list short sinks | grep -q equaliser"});
  }));
  Program& player = desktop.launch({"paplay", "--device=equaliser", sound.tone().string()});
  expectHeard("the player", player);
  expectHeard("the filter", filter);
}

// Nothing but the filter's own word holds its two nodes together.
TEST_F(Audio, HearsWhoIsLinkedToAFilterThatCaptures) {
  Program& filter = desktop.launch({"pw-loopback", "--name", "filter", "--capture-props",
                                    "node.autoconnect=false node.name=filter-in", "--playback-props",
                                    "node.name=filter-out"});
  Program& player = desktop.launch(
      {"pw-play", "--target=0", "--properties", "{ node.name = linked }", sound.tone().string()});
  expectHeard("the filter", filter);
  ASSERT_TRUE(waitUntil([&] {
    return desktop.run({"sh", "-c", "pw-link $(pw-link -o | grep -m1 ^linked:) filter-in:input_FL"});
  }));
  expectHeard("the player", player);
  filter.kill();
  expectSilent("without the filter", player);
}

TEST_F(Audio, ARecorderIsNotHeard) {
  Program& player = desktop.launch({tonePlayer()});
  Program& recorder = desktop.launch({"parec", "--device=null0.monitor", "/dev/null"});
  expectHeard("the player", player);
  ASSERT_TRUE(waitUntil([&] {
    return desktop.run({"sh", "-c", "pactl list short source-outputs | grep -q ."});
  }));
  EXPECT_THAT(activity.runningOutput(), UnorderedElementsAre(player.pid()));
  EXPECT_TRUE(recorder.isRunning());
}

TEST_F(Audio, APausedPlayerIsNotHeard) {
  Program& player = desktop.launch({tonePlayer()});
  expectHeard("playing", player);
  player.signal(SIGUSR1);
  expectSilent("paused", player);
  player.signal(SIGUSR2);
  expectHeard("playing on", player);
}

TEST_F(Audio, WhoeverWasMadeSilentIsNotHeard) {
  LinuxAudio withoutPipeWire = asking("", sound.address());
  Program& player = desktop.launch({tonePlayer()});
  const auto heardByBoth = [&](bool expected) {
    return isHeard(player) == expected && isAmong(withoutPipeWire.runningOutput(), player) == expected;
  };
  EXPECT_TRUE(waitUntil([&] { return heardByBoth(true); }));
  const auto change = [&](const std::string& what, const std::string& value) {
    const std::string stream = "$(pactl list short sink-inputs | cut -f1) ";
    return desktop.run({"sh", "-c", "pactl set-sink-input-" + what + " " + stream + value});
  };
  ASSERT_TRUE(change("mute", "1"));
  EXPECT_TRUE(waitUntil([&] { return heardByBoth(false); })) << "muted";
  ASSERT_TRUE(change("mute", "0"));
  EXPECT_TRUE(waitUntil([&] { return heardByBoth(true); })) << "not any more";
  ASSERT_TRUE(change("volume", "0%"));
  EXPECT_TRUE(waitUntil([&] { return heardByBoth(false); })) << "turned down";
  ASSERT_TRUE(change("volume", "10%"));
  EXPECT_TRUE(waitUntil([&] { return heardByBoth(true); })) << "up again";
}

TEST_F(Audio, TheChildThatPlaysIsTheOneHeard) {
  Program& app = desktop.launch({"sh", "-c", tonePlayer() + "; true"});
  std::set<Pid> heard;
  ASSERT_TRUE(waitUntil([&] { return !(heard = activity.runningOutput()).empty(); }));
  EXPECT_THAT(heard, Not(Contains(app.pid())));
  EXPECT_TRUE(processesOf({app.pid()}).contains(*heard.begin()));
}

TEST_F(Audio, WhoHangsKeepsNobodyElseFromBeingAsked) {
  Program& player = desktop.launch({"pw-play", sound.tone().string()});
  expectHeard("before", player);
  sound.pulse().signal(SIGSTOP);
  LinuxAudio stranger = asking(sound.pipeWire(), sound.address());
  EXPECT_THAT(stranger.runningOutput(), Contains(player.pid()));
  EXPECT_THAT(activity.runningOutput(), Contains(player.pid()));
  sound.pulse().signal(SIGCONT);
}

TEST_F(Audio, PipeWireThatHangsIsNotWaitedForTwiceAndHeardAgainAtOnce) {
  Program& player = desktop.launch({"pw-play", sound.tone().string()});
  expectHeard("before", player);
  LinuxAudio alone = asking(sound.pipeWire(), "unix:/nothing-here");
  sound.server().signal(SIGSTOP);
  const auto start = std::chrono::steady_clock::now();
  for (int at = 0; at < 100; ++at) EXPECT_THAT(alone.runningOutput(), IsEmpty());
  EXPECT_LT(std::chrono::steady_clock::now() - start, farTooLong);
  sound.server().signal(SIGCONT);
  ASSERT_TRUE(desktop.run({"pw-cli", "info", "0"})) << "it has answered others that came later";
  EXPECT_THAT(alone.runningOutput(), Contains(player.pid()));
}

TEST_F(AudioWithoutPipeWire, HearsEveryKindOfPlayerAndItsEnd) {
  EXPECT_THAT(activity.runningOutput(), IsEmpty());
  const std::string tone = sound.tone().string();
  Program& pulse = desktop.launch({"paplay", tone});
  Program& native = desktop.launch({"pw-play", tone});
  Program& alsa = desktop.launch({"aplay", "-q", "-D", "pipewire", tone});
  Program& sandboxed = launchInSandbox({"paplay", tone});
  expectHeard("PulseAudio", pulse.pid());
  expectHeard("PipeWire", native.pid());
  expectHeard("ALSA", alsa.pid());
  EXPECT_TRUE(waitUntil([&] { return isAmong(activity.runningOutput(), sandboxed); })) << "in a sandbox";
  EXPECT_THAT(activity.runningOutput(), Not(Contains(sound.pulse().pid()))) << "the server itself";
  EXPECT_THAT(activity.runningOutput(), Not(Contains(1)));

  native.signal(SIGTERM);
  expectSilent("ended", native.pid());
  EXPECT_TRUE(isHeard(pulse.pid()));
}

TEST_F(AudioWithoutPipeWire, AServerThatDiesIsSilenceAndItsSuccessorIsFound) {
  Program& player = desktop.launch({tonePlayer()});
  expectHeard("before", player.pid());
  sound.pulse().kill();
  EXPECT_THAT(activity.runningOutput(), IsEmpty());
  EXPECT_LT(timeOfQuestion(), farTooLong);

  sound.startPulse();
  Program& next = desktop.launch({tonePlayer()});
  expectHeard("after", next.pid());
}

TEST_F(AudioWithoutPipeWire, AServerThatHangsIsSilenceWithoutWaitingTwice) {
  Program& player = desktop.launch({tonePlayer()});
  expectHeard("before", player.pid());
  sound.pulse().signal(SIGSTOP);
  EXPECT_LT(timeOfQuestion(), farTooLong);
  // A hundred questions that each waited would take twenty seconds.
  const auto start = std::chrono::steady_clock::now();
  for (int at = 0; at < 100; ++at) EXPECT_THAT(activity.runningOutput(), IsEmpty());
  EXPECT_LT(std::chrono::steady_clock::now() - start, farTooLong);
  sound.pulse().signal(SIGCONT);
}

// A decision is one question: what it misses is slowed until the next one.
TEST_F(AudioWithoutPipeWire, AfterOneSlowAnswerTheNextQuestionIsHeardAtOnce) {
  Program& player = desktop.launch({tonePlayer()});
  expectHeard("before", player.pid());
  LinuxAudio stranger = asking("", sound.address()); // has not been let in when the server goes slow
  sound.pulse().signal(SIGSTOP);
  EXPECT_THAT(activity.runningOutput(), IsEmpty());
  EXPECT_THAT(stranger.runningOutput(), IsEmpty());
  sound.pulse().signal(SIGCONT);
  ASSERT_TRUE(desktop.run({"pactl", "info"})) << "it has answered others that came later";
  EXPECT_THAT(activity.runningOutput(), Contains(player.pid()));
  EXPECT_THAT(stranger.runningOutput(), Contains(player.pid()));
}

TEST_F(AudioWithoutPipeWire, WithoutAServerThereIsSilenceAndNoneIsStarted) {
  const std::filesystem::path nowhere = desktop.runtimeDir() / "nothing-here";
  LinuxAudio nobody = asking(nowhere, "unix:" + nowhere.string());
  EXPECT_THAT(nobody.runningOutput(), IsEmpty());
  EXPECT_THAT(nobody.runningOutput(), IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(nowhere));
}

} // namespace
} // namespace vantle::desktop
