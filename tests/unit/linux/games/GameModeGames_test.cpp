// SPDX-License-Identifier: MIT
#include "platform/linux/games/GameModeGames.h"

#include "platform/linux/bus/BusBatch.h"
#include "platform/linux/kernel/ProcKernel.h"
#include "platform/linux/process/ProcfsProcessTable.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/support/FakeService.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/User.h"
#include "tests/support/Wait.h"

#include <chrono>
#include <climits>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

namespace vantle {
namespace {

using desktop::FakeService;
using desktop::guardLimit;
using desktop::Program;
using testing::IsEmpty;

constexpr const char* gameMode = "com.feralinteractive.GameMode";
constexpr const char* gameModePath = "/com/feralinteractive/GameMode";

struct Sleeper : Program {
  Sleeper() : Sleeper(std::nullopt) {}
  explicit Sleeper(std::optional<uid_t> user) : Program({.command = {"/bin/sleep", "1h"}, .user = user}) {}
};

// The daemon is a thread of this very process, which the bus takes for its process.
class RegisteredGamesTest : public testing::Test {
 protected:
  void startDaemon(const std::vector<Pid>& list = {}) {
    daemon = std::make_unique<FakeService>(bus.address(), gameMode);
    listGames(list);
  }
  void listGames(const std::vector<Pid>& list) {
    daemon->answer(gameModePath, "ListGames", [list](sd_bus_message*, sd_bus_message* reply) {
      sd_bus_message_open_container(reply, 'a', "(io)");
      for (const Pid pid : list) sd_bus_message_append(reply, "(io)", pid, gameModePath);
      sd_bus_message_close_container(reply);
    });
  }
  void say(const char* member, const std::vector<Pid>& pids) {
    daemon->perform([&](sd_bus* from) {
      for (const Pid pid : pids) {
        sd_bus_emit_signal(from, gameModePath, gameMode, member, "io", pid, gameModePath);
      }
    });
  }
  void follow() {
    source = games.watch([this] { ++told; });
  }
  std::vector<Pid> known() const {
    std::vector<Pid> pids;
    for (const ProcessIdentity& process : source->processes()) pids.push_back(process.pid);
    return pids;
  }
  bool becomes(const std::vector<Pid>& pids) {
    return loop.runUntil([&] { return known() == pids; }, guardLimit);
  }
  // Until the daemon is followed: the bus has said who it is, and it was asked for its list.
  bool isAsked(int times = 1) {
    // The loop is not woken by a daemon that answers nothing.
    return desktop::waitUntil([&] {
      return loop.runUntil([&] { return daemon->calls("ListGames") >= times; },
                           std::chrono::milliseconds(10));
    });
  }

  desktop::PrivateBus bus;
  std::unique_ptr<FakeService> daemon;
  PollEventLoop loop;
  BusConnection connection{loop, bus.address()};
  std::shared_ptr<ProcKernel> kernel = std::make_shared<ProcKernel>();
  ProcfsProcessTable processes{BootEpoch(0), kernel};
  GameModeGames games{loop, connection, *kernel, processes};
  std::unique_ptr<RegisteredGames::Source> source;
  int told = 0;
  Sleeper game;
  Sleeper other;
};

TEST_F(RegisteredGamesTest, ThoseThatADaemonHasAlreadyAreKnown) {
  startDaemon({game.pid(), other.pid()});
  follow();
  EXPECT_THAT(known(), IsEmpty()) << "nobody is waited for";
  EXPECT_TRUE(becomes({game.pid(), other.pid()}));
  EXPECT_TRUE(loop.runUntil([&] { return told == 1; }, guardLimit));
  const std::optional<ProcessRecord> record = processes.record(game.pid());
  ASSERT_TRUE(record);
  EXPECT_EQ(source->processes().front(), identityOf(*record));
}

TEST_F(RegisteredGamesTest, TheyComeAndGo) {
  startDaemon();
  follow();
  ASSERT_TRUE(isAsked());
  say("GameRegistered", {game.pid()});
  EXPECT_TRUE(becomes({game.pid()}));
  say("GameRegistered", {other.pid(), game.pid()});
  EXPECT_TRUE(becomes({game.pid(), other.pid()})) << "each once";
  say("GameUnregistered", {game.pid()});
  EXPECT_TRUE(becomes({other.pid()}));
  EXPECT_TRUE(loop.runUntil([&] { return told >= 2; }, guardLimit));
}

TEST_F(RegisteredGamesTest, ADaemonThatComesLaterIsHeard) {
  follow();
  const auto isConnected = [&] { return !connection.uniqueName().empty(); };
  ASSERT_TRUE(loop.runUntil(isConnected, guardLimit));
  startDaemon({game.pid()});
  EXPECT_TRUE(becomes({game.pid()}));
}

TEST_F(RegisteredGamesTest, GamesOutliveTheirDaemonAndTheNextOneAddsItsOwn) {
  startDaemon({game.pid()});
  follow();
  ASSERT_TRUE(becomes({game.pid()}));
  daemon.reset();
  startDaemon({other.pid()});
  EXPECT_TRUE(becomes({game.pid(), other.pid()}));
  say("GameUnregistered", {game.pid()});
  EXPECT_TRUE(becomes({other.pid()}));
}

TEST_F(RegisteredGamesTest, NumbersThatAreNobodysOfThisUsersAreNotBelieved) {
  std::optional<Sleeper> ofNobody;
  if (test::runsAsRoot()) ofNobody.emplace(test::nobody);
  const Pid somebodyElses = ofNobody ? ofNobody->pid() : 1;
  Sleeper ended;
  ended.kill();
  const std::vector<Pid> wrong{0, 1, -1, INT_MIN, INT_MAX, somebodyElses, ended.pid()};
  startDaemon(wrong);
  follow();
  ASSERT_TRUE(isAsked());
  say("GameRegistered", wrong);
  say("GameRegistered", {game.pid()});
  EXPECT_TRUE(becomes({game.pid()}));
}

TEST_F(RegisteredGamesTest, NobodyElseSpeaksForTheDaemon) {
  startDaemon();
  follow();
  ASSERT_TRUE(isAsked());
  FakeService stranger(bus.address(), "org.example.Stranger");
  stranger.perform([&](sd_bus* from) {
    sd_bus_message* message = nullptr;
    sd_bus_message_new_signal(from, &message, gameModePath, gameMode, "GameRegistered");
    sd_bus_message_append(message, "io", other.pid(), gameModePath);
    sd_bus_send_to(from, message, connection.uniqueName().c_str(), nullptr);
    sd_bus_message_unref(message);
    sd_bus_emit_signal(from, gameModePath, gameMode, "GameRegistered", "io", other.pid(), gameModePath);
    sd_bus_flush(from);
  });
  say("GameRegistered", {game.pid()});
  EXPECT_TRUE(becomes({game.pid()}));
}

TEST_F(RegisteredGamesTest, ADaemonThatDoesNotAnswerIsBelievedWhenItSpeaks) {
  startDaemon();
  daemon->ignore("ListGames");
  follow();
  ASSERT_TRUE(isAsked());
  say("GameRegistered", {game.pid()});
  EXPECT_TRUE(becomes({game.pid()}));
  EXPECT_EQ(daemon->calls("ListGames"), 1) << "one question at a time";
}

TEST_F(RegisteredGamesTest, AListThatWasRefusedIsAskedForAgainWhenTheDaemonSpeaks) {
  daemon = std::make_unique<FakeService>(bus.address(), gameMode); // knows no such method
  follow();
  ASSERT_TRUE(isAsked());
  // Its refusal comes before what it says next.
  listGames({other.pid()});
  say("GameRegistered", {game.pid()});
  EXPECT_TRUE(becomes({game.pid(), other.pid()}));
}

TEST_F(RegisteredGamesTest, WhatMakesNoSenseIsOverheard) {
  startDaemon();
  daemon->answer(gameModePath, "ListGames",
                 [](sd_bus_message*, sd_bus_message* reply) { sd_bus_message_append(reply, "s", "none"); });
  follow();
  ASSERT_TRUE(isAsked());
  daemon->perform([&](sd_bus* from) {
    sd_bus_emit_signal(from, gameModePath, gameMode, "GameRegistered", "s", "game");
    sd_bus_emit_signal(from, gameModePath, gameMode, "GameRegistered", "");
    sd_bus_emit_signal(from, gameModePath, gameMode, "GamePaused", "io", other.pid(), gameModePath);
    sd_bus_emit_signal(from, gameModePath, gameMode, "GameUnregistered", "u", 7U);
  });
  say("GameRegistered", {game.pid()});
  EXPECT_TRUE(becomes({game.pid()}));
}

TEST_F(RegisteredGamesTest, AFloodIsToldOnceASecond) {
  startDaemon();
  follow();
  ASSERT_TRUE(isAsked());
  const auto begin = std::chrono::steady_clock::now();
  for (int round = 0; round < 500; ++round) {
    say("GameRegistered", {game.pid()});
    say("GameUnregistered", {game.pid()});
  }
  say("GameRegistered", {other.pid()});
  EXPECT_TRUE(becomes({other.pid()}));
  EXPECT_TRUE(loop.runUntil([&] { return told > 0; }, guardLimit));
  const auto seconds = std::chrono::ceil<std::chrono::seconds>(std::chrono::steady_clock::now() - begin);
  EXPECT_LE(told, seconds.count() + 1);
}

TEST_F(RegisteredGamesTest, WhoIsToldMayAskOthersOnTheSameBus) {
  startDaemon({game.pid()});
  bool isAnswered = false;
  source = games.watch([&] {
    BusBatch batch(connection);
    batch.add(connection.methodCall({gameMode, gameModePath, gameMode, "ListGames"}));
    isAnswered = batch.wait(std::chrono::steady_clock::now() + guardLimit);
  });
  EXPECT_TRUE(loop.runUntil([&] { return isAnswered; }, guardLimit));
}

TEST_F(RegisteredGamesTest, ABusThatComesBackIsFollowedAgain) {
  startDaemon({game.pid()});
  follow();
  ASSERT_TRUE(becomes({game.pid()}));
  daemon.reset();
  bus.kill();
  bus.start();
  startDaemon({other.pid()});
  EXPECT_TRUE(becomes({game.pid(), other.pid()}));
}

TEST_F(RegisteredGamesTest, ASourceMayEndAtAnyTime) {
  startDaemon({game.pid()});
  follow();
  source.reset(); // before it has an answer
  follow();
  ASSERT_TRUE(becomes({game.pid()}));
  const std::unique_ptr<RegisteredGames::Source> longer = games.watch([] {});
  ASSERT_TRUE(isAsked(2)); // the first one never was
  source.reset();          // perhaps before it has told
  const int before = told;
  say("GameRegistered", {other.pid()});
  EXPECT_TRUE(loop.runUntil([&] { return longer->processes().size() == 2; }, guardLimit));
  EXPECT_EQ(told, before);
}

// Processes of this user's that no test wants to start.
class RegisteredInFakeProc : public RegisteredGamesTest {
 protected:
  void add(Pid pid, const std::string& numbers) {
    const std::string name = std::to_string(pid);
    const std::string user = std::to_string(::geteuid());
    proc.write(name + "/stat", name + " (x) S 1 1 1 0 -1 0 0 0 0 0 17 23 0 0 20 0 1 0 " + name + " 0 0 0\n");
    proc.write(name + "/status", "Name:\tx\nUid:\t" + user + "\t" + user + "\t" + user + "\t" + user +
                                     "\nNSpid:\t" + numbers + "\n");
  }

  desktop::TemporaryFolder proc;
  std::shared_ptr<ProcKernel> fakeKernel = std::make_shared<ProcKernel>(proc.path().string());
  ProcfsProcessTable fakeProcesses{BootEpoch(0), fakeKernel};
  GameModeGames fakeGames{loop, connection, *fakeKernel, fakeProcesses};
};

TEST_F(RegisteredInFakeProc, MoreThanAnybodyPlaysAreNotKept) {
  add(::getpid(), std::to_string(::getpid()));
  std::vector<Pid> many;
  for (Pid pid = 100'001; pid <= 100'100; ++pid) {
    add(pid, std::to_string(pid));
    many.push_back(pid);
  }
  startDaemon();
  source = fakeGames.watch([] {});
  ASSERT_TRUE(isAsked());
  say("GameRegistered", many);
  say("GameUnregistered", {100'001});
  std::vector<Pid> kept;
  for (Pid pid = 100'002; pid <= 100'064; ++pid) kept.push_back(pid);
  EXPECT_TRUE(becomes(kept));
  say("GameRegistered", {100'100});
  kept.push_back(100'100);
  EXPECT_TRUE(becomes(kept));
  std::filesystem::remove_all(proc.path() / "100002");
  say("GameRegistered", {100'099});
  kept.erase(kept.begin());
  kept.push_back(100'099);
  EXPECT_TRUE(becomes(kept)) << "one that has ended makes room";
}

TEST_F(RegisteredInFakeProc, ADaemonThatNumbersProcessesOtherwiseIsNotBelieved) {
  add(::getpid(), std::to_string(::getpid()) + "\t7");
  add(game.pid(), std::to_string(game.pid()));
  startDaemon({game.pid()});
  const std::unique_ptr<RegisteredGames::Source> deaf = fakeGames.watch([] {});
  follow(); // behind that one, in everything
  ASSERT_TRUE(becomes({game.pid()}));
  EXPECT_EQ(daemon->calls("ListGames"), 1);
  say("GameUnregistered", {game.pid()});
  say("GameRegistered", {game.pid()});
  EXPECT_TRUE(loop.runUntil([&] { return told > 0; }, guardLimit));
  EXPECT_THAT(deaf->processes(), IsEmpty());
}

} // namespace
} // namespace vantle
