// SPDX-License-Identifier: MIT
#include "platform/linux/bus/BusConnection.h"

#include "platform/linux/bus/BusBatch.h"
#include "platform/linux/bus/BusQuestion.h"
#include "platform/linux/bus/BusQuestions.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/support/FakeService.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Wait.h"

#include <atomic>
#include <csignal>
#include <cstddef>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <utility>
#include <vector>

namespace vantle {
namespace {

using namespace std::chrono_literals;
using desktop::FakeService;
using desktop::guardLimit;
using desktop::PrivateBus;

constexpr BusMethod echo{"org.example.Echo", "/org/example", "org.example.Echo", "Echo"};

BusDeadline in(std::chrono::milliseconds time) { return std::chrono::steady_clock::now() + time; }

struct Bus : testing::Test {
  Bus() {
    service.answer("", "Echo", [](sd_bus_message* call, sd_bus_message* reply) {
      const char* text = "";
      sd_bus_message_read(call, "s", &text);
      sd_bus_message_append(reply, "s", text);
    });
  }

  BusMessage request(const char* text) {
    BusMessage message = connection.methodCall(echo);
    if (message) sd_bus_message_append(message.get(), "s", text);
    return message;
  }
  static std::string textOf(sd_bus_message* reply) {
    const char* text = "nothing";
    if (reply) sd_bus_message_read(reply, "s", &text);
    return text;
  }
  // Null on an error or when the deadline comes first.
  static BusMessage replyTo(BusConnection& asked, BusMessage message, BusDeadline deadline) {
    BusBatch batch(asked);
    const std::size_t place = batch.add(std::move(message));
    batch.wait(deadline);
    return BusMessage(sd_bus_message_ref(batch.reply(place)));
  }
  std::string ask(const char* text) {
    return textOf(replyTo(connection, request(text), in(guardLimit)).get());
  }

  PrivateBus bus;
  FakeService service{bus.address(), "org.example.Echo"};
  PollEventLoop loop;
  BusConnection connection{loop, bus.address()};
};

TEST_F(Bus, CallsAndWaits) {
  EXPECT_EQ(ask("one"), "one");
  EXPECT_EQ(ask("two"), "two");
}

TEST_F(Bus, AnErrorIsNoReply) {
  EXPECT_FALSE(replyTo(connection,
                       connection.methodCall({"org.example.Echo", "/", "org.example.Echo", "Unknown"}),
                       in(guardLimit)));
  EXPECT_FALSE(replyTo(connection,
                       connection.methodCall({"org.example.Nobody", "/", "org.example.Echo", "Echo"}),
                       in(guardLimit)));
  EXPECT_EQ(ask("still there"), "still there");
}

TEST_F(Bus, DeliversRepliesAndSignalsOnTheLoop) {
  int signals = 0;
  const BusSlot slot = connection.match(
      "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='org.example.New'",
      [&](sd_bus_message*) { ++signals; });
  ASSERT_TRUE(slot);
  std::string heard;
  ASSERT_TRUE(connection.callAsync(request("later"), guardLimit,
                                   [&](sd_bus_message* reply) { heard = textOf(reply); }));
  EXPECT_EQ(heard, "");
  EXPECT_TRUE(loop.runUntil([&] { return heard == "later"; }, guardLimit));

  const FakeService other(bus.address(), "org.example.New");
  EXPECT_TRUE(loop.runUntil([&] { return signals == 1; }, guardLimit));
}

TEST_F(Bus, AHungDaemonCostsNoMoreThanTheDeadline) {
  bus.daemon().signal(SIGSTOP);
  EXPECT_FALSE(replyTo(connection, request("handshake"), in(50ms))); // a daemon that does not even let in
  bus.daemon().signal(SIGCONT);
  EXPECT_EQ(ask("again"), "again");

  service.ignore("Echo");
  EXPECT_FALSE(replyTo(connection, request("no answer"), in(50ms)));
  bool failed = false;
  connection.callAsync(request("no answer"), 50ms, [&](sd_bus_message* reply) { failed = reply == nullptr; });
  EXPECT_TRUE(loop.runUntil([&] { return failed; }, guardLimit));
}

TEST_F(Bus, ALostDaemonIsNoticedAndItsSuccessorFound) {
  EXPECT_EQ(ask("before"), "before");
  int lost = 0;
  const auto registration = connection.onLost([&] { ++lost; });
  service.ignore("Echo");
  int replies = 0;
  bool gotReply = true;
  connection.callAsync(request("under way"), guardLimit, [&](sd_bus_message* reply) {
    ++replies;
    gotReply = reply != nullptr;
  });
  bus.kill();
  EXPECT_TRUE(loop.runUntil([&] { return lost == 1; }, guardLimit));
  EXPECT_EQ(replies, 1);
  EXPECT_FALSE(gotReply);
  EXPECT_FALSE(connection.isOpen());
  EXPECT_FALSE(replyTo(connection, request("nobody"), in(guardLimit)));

  bus.start();
  EXPECT_TRUE(replyTo(connection,
                      connection.methodCall({"org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetId"}),
                      in(guardLimit)));
}

TEST_F(Bus, ASuccessorIsFoundBeforeTheLoopRanAgain) {
  EXPECT_EQ(ask("before"), "before");
  bus.kill();
  bus.start();
  EXPECT_TRUE(replyTo(connection,
                      connection.methodCall({"org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetId"}),
                      in(guardLimit)));
}

TEST_F(Bus, TakesCallsToAnObjectAndRefusesThem) {
  EXPECT_EQ(connection.uniqueName(), "") << "the bus is not asked for it";
  EXPECT_EQ(ask("let in"), "let in");
  ASSERT_TRUE(connection.uniqueName().starts_with(":"));
  std::string heard;
  BusSlot slot = connection.answer("/org/example/own", [&](sd_bus_message* call) -> const char* {
    const char* text = "";
    if (sd_bus_message_read(call, "s", &text) <= 0) return SD_BUS_ERROR_INVALID_ARGS;
    heard = text;
    return nullptr;
  });
  ASSERT_TRUE(slot);
  BusConnection other(loop, bus.address());
  const auto callIt = [&](const char* text) {
    BusMessage message =
        other.methodCall({connection.uniqueName().c_str(), "/org/example/own", "org.example.Own", "Tell"});
    if (text != nullptr) sd_bus_message_append(message.get(), "s", text);
    std::string outcome;
    other.callAsync(std::move(message), guardLimit,
                    [&](sd_bus_message* reply) { outcome = reply == nullptr ? "refused" : "taken"; });
    loop.runUntil([&] { return !outcome.empty(); }, guardLimit);
    return outcome;
  };
  EXPECT_EQ(callIt("hello"), "taken");
  EXPECT_EQ(heard, "hello");
  EXPECT_EQ(callIt(nullptr), "refused");
  slot.reset();
  EXPECT_EQ(callIt("nobody is there"), "refused");
  EXPECT_EQ(heard, "hello");
}

// Somebody sends so fast that there is always more.
TEST_F(Bus, AFloodHoldsUpNobodyOnTheLoop) {
  bool isListening = false;
  const BusSlot slot = connection.match("type='signal',member='Flood'", [&](sd_bus_message*) {
    isListening = true;
    std::this_thread::sleep_for(5ms); // much longer than it takes to send another one
  });
  std::atomic<bool> isOver = false;
  constexpr std::size_t count = 3;
  std::vector<std::thread> senders;
  senders.reserve(count);
  while (senders.size() < count) {
    senders.emplace_back([&] {
      sd_bus* sender = nullptr;
      if (sd_bus_new(&sender) < 0) return;
      sd_bus_set_address(sender, bus.address().c_str());
      sd_bus_set_bus_client(sender, 1);
      sd_bus_start(sender);
      while (!isOver && sd_bus_emit_signal(sender, "/", "org.example.A", "Flood", "s", "text") >= 0)
        sd_bus_flush(sender);
      sd_bus_flush_close_unref(sender);
    });
  }
  EXPECT_TRUE(loop.runUntil([&] { return isListening; }, guardLimit));
  for (int turn = 0; turn < 20; ++turn) {
    bool isDue = false;
    const auto timer = loop.after(1ms, [&] { isDue = true; });
    EXPECT_TRUE(loop.runUntil([&] { return isDue; }, guardLimit));
  }
  EXPECT_FALSE(connection.runUntil([] { return false; }, in(50ms))) << "and a deadline is one";
  isOver = true;
  for (std::thread& sender : senders) sender.join();
}

TEST_F(Bus, WithoutABusThereIsNoMessage) {
  BusConnection nowhere(loop, "unix:path=/nonexistent/bus");
  EXPECT_FALSE(replyTo(nowhere, nowhere.methodCall(echo), in(50ms)));
  BusConnection nonsense(loop, "no address at all");
  EXPECT_FALSE(nonsense.methodCall(echo));
  EXPECT_FALSE(nonsense.match("type='signal'", [](sd_bus_message*) {}));
  EXPECT_FALSE(nonsense.callAsync(nullptr, 50ms, [](sd_bus_message*) { FAIL(); }));
}

// Asks several buses for what each of them can tell by itself.
class Asked : public BusQuestion {
 public:
  explicit Asked(std::vector<BusConnection*> buses) : BusQuestion(buses), m_buses(std::move(buses)) {}
  void ask() override {
    for (BusConnection* asked : m_buses) {
      BusMessage call = asked->methodCall({"org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetId"});
      asked->callAsync(std::move(call), guardLimit,
                       [this](sd_bus_message* reply) { answers += reply != nullptr ? 1 : 0; });
    }
  }
  bool isAsking() const override { return answers < wanted && canBeAnswered(); }
  void giveUp() override { isGivenUp = true; }

  int answers = 0;
  int wanted = 0;
  bool isGivenUp = false;

 private:
  std::vector<BusConnection*> m_buses;
};

TEST_F(Bus, SeveralConnectionsAreServedTogether) {
  PrivateBus otherBus;
  const FakeService otherService(otherBus.address(), "org.example.Echo");
  BusConnection other(loop, otherBus.address());
  BusConnection nowhere(loop, "unix:path=/nonexistent/bus");
  Asked question({&other, &connection, &nowhere});
  question.wanted = 2;
  askTogether({&question}, in(guardLimit));
  EXPECT_EQ(question.answers, 2);

  // The one hangs: the other is heard as ever, and then the time is over.
  otherBus.daemon().signal(SIGSTOP);
  question.wanted = 3;
  askTogether({&question}, in(guardLimit));
  EXPECT_EQ(question.answers, 3);
  EXPECT_FALSE(question.isGivenUp);
  question.wanted = 4;
  awaitTogether({&question}, in(50ms));
  EXPECT_TRUE(question.isGivenUp);
  otherBus.daemon().signal(SIGCONT);
  awaitTogether({&question}, in(guardLimit));
  EXPECT_EQ(question.answers, 4);

  // With nobody left there is nothing to wait for.
  otherBus.kill();
  bus.kill();
  question.wanted = 5;
  awaitTogether({&question}, in(guardLimit));
  EXPECT_EQ(question.answers, 4);
  EXPECT_FALSE(other.isOpen() || connection.isOpen());
}

// Whoever waits for one takes in what arrives for the other, for as long as it waits.
TEST_F(Bus, WhatIsAskedBesideSomethingElseIsAnsweredMeanwhile) {
  PrivateBus otherBus;
  BusConnection other(loop, otherBus.address());
  Asked hung({&other});
  hung.wanted = 1;
  otherBus.daemon().signal(SIGSTOP);
  Asked beside({&connection});
  beside.wanted = 1;
  beside.ask();
  EXPECT_TRUE(desktop::waitUntil([&] {
    askTogether({&hung}, in(50ms), {&beside});
    return beside.answers == 1;
  }));
  EXPECT_FALSE(beside.isGivenUp);
  EXPECT_TRUE(hung.isGivenUp);
}

TEST_F(Bus, AnAnswerMayLeadToFurtherQuestions) {
  BusQuestions questions(connection);
  std::vector<std::string> heard;
  questions.ask(request("first"), [&](sd_bus_message* reply) {
    heard.push_back(textOf(reply));
    questions.ask(request("second"), [&](sd_bus_message* next) { heard.push_back(textOf(next)); });
  });
  EXPECT_FALSE(questions.isAnswered());
  EXPECT_TRUE(connection.runUntil([&] { return questions.isAnswered(); }, in(guardLimit)));
  EXPECT_EQ(heard, (std::vector<std::string>{"first", "second"}));
}

TEST_F(Bus, AnAnswerThatNobodyWantsAnyMoreIsTakenIn) {
  std::string heard;
  const auto hear = [&](sd_bus_message* reply) { heard += textOf(reply); };
  BusQuestions questions(connection);
  questions.ask(request("given up"), hear);
  questions.giveUp();
  EXPECT_TRUE(connection.runUntil([&] { return questions.isAnswered(); }, in(guardLimit)));
  EXPECT_EQ(heard, "");
  questions.ask(nullptr, hear);
  EXPECT_TRUE(questions.isAnswered()) << "what cannot be asked is not waited for";
  std::optional<BusQuestions> gone(connection);
  gone->ask(request("nobody is left"), hear);
  gone.reset();
  EXPECT_EQ(ask("wanted"), "wanted");
  EXPECT_EQ(heard, "");
}

TEST_F(Bus, NobodyIsStartedToAnswer) {
  bool mayStart = true;
  service.answer("", "Echo", [&](sd_bus_message* call, sd_bus_message* reply) {
    mayStart = sd_bus_message_get_auto_start(call) != 0;
    sd_bus_message_append(reply, "s", "heard");
  });
  BusQuestions questions(connection);
  std::string heard;
  questions.ask(request(""), [&](sd_bus_message* reply) { heard = textOf(reply); });
  EXPECT_TRUE(connection.runUntil([&] { return questions.isAnswered(); }, in(guardLimit)));
  EXPECT_EQ(heard, "heard");
  EXPECT_FALSE(mayStart);
}

TEST_F(Bus, WhatArrivedMeanwhileIsTakenInWithoutWaiting) {
  EXPECT_EQ(ask("let in"), "let in");
  BusQuestions questions(connection);
  int answers = 0;
  for (int count = 0; count < 20; ++count)
    questions.ask(request("soon"), [&](sd_bus_message*) { ++answers; });
  EXPECT_TRUE(desktop::waitUntil([&] {
    connection.catchUp();
    return questions.isAnswered();
  }));
  EXPECT_EQ(answers, 20);
}

TEST_F(Bus, ABatchWaitsForAllOfItsCalls) {
  BusBatch batch(connection);
  const std::size_t first = batch.add(request("first"));
  const std::size_t none = batch.add(nullptr);
  const std::size_t error =
      batch.add(connection.methodCall({"org.example.Nobody", "/", "org.example.A", "B"}));
  const std::size_t last = batch.add(request("last"));
  EXPECT_TRUE(batch.wait(in(guardLimit)));
  EXPECT_EQ(textOf(batch.reply(first)), "first");
  EXPECT_EQ(batch.reply(none), nullptr);
  EXPECT_EQ(batch.reply(error), nullptr);
  EXPECT_EQ(textOf(batch.reply(last)), "last");
}

TEST_F(Bus, ABatchMayEndBeforeItsReplies) {
  {
    BusBatch batch(connection);
    batch.add(request("too late"));
    EXPECT_FALSE(batch.wait({}));
  }
  EXPECT_EQ(ask("next"), "next");
}

TEST_F(Bus, AKeptConnectionDoesNotWakeTheProgram) {
  EXPECT_EQ(ask("one"), "one");
  const auto switches = [] {
    rusage usage{};
    ::getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_nvcsw;
  };
  loop.runUntil([] { return false; }, 200ms); // what the conversation has left to do
  const long before = switches();
  loop.runUntil([] { return false; }, 500ms);
  EXPECT_LE(switches() - before, 3); // the one wait itself, and a disturbance by the machine
}

} // namespace
} // namespace vantle
