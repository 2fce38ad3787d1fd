// SPDX-License-Identifier: MIT
// Servers that behave as no PipeWire would. The good ones are real, in tests/desktop.
#include "platform/linux/audio/pipewire/PipeWireQuestion.h"

#include "platform/posix/Descriptor.h"
#include "tests/support/NamedSocket.h"
#include "tests/support/TemporaryFolder.h"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <sys/socket.h>

namespace vantle {
namespace {

using namespace std::chrono_literals;

std::string word(std::uint32_t value) { return {reinterpret_cast<const char*>(&value), sizeof value}; }

std::string done(std::int32_t sequence) {
  PodWriter answer;
  answer.int32(0).int32(sequence);
  const std::string body = PodWriter().structure(answer).bytes();
  return word(pipeWireCore) + word(1U << 24U | static_cast<std::uint32_t>(body.size())) + word(0) + word(0) +
         body;
}

struct Misbehaving : testing::Test {
  // The server's side of the connection that was made last.
  Descriptor taken() const { return Descriptor(::accept4(server.get(), nullptr, nullptr, SOCK_CLOEXEC)); }
  static void say(const Descriptor& to, const std::string& bytes) {
    EXPECT_EQ(::send(to.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
  }

  desktop::TemporaryFolder folder;
  std::string path = folder.path() / "pipewire-0";
  Descriptor server{desktop::listeningSocket(path)};
  PipeWireQuestion question{path};
};

TEST_F(Misbehaving, AWholeAnswerOfNobody) {
  question.ask();
  const Descriptor other = taken();
  say(other, done(1));
  question.advance();
  EXPECT_TRUE(question.isAsking());
  say(other, done(2));
  question.advance();
  EXPECT_FALSE(question.isAsking());
  ASSERT_TRUE(question.players());
  EXPECT_TRUE(question.players()->empty());
}

TEST_F(Misbehaving, AnAnswerToSomethingElseIsNone) {
  question.ask();
  const Descriptor other = taken();
  say(other, done(2) + done(7) + done(-1));
  question.advance();
  EXPECT_TRUE(question.isAsking());
  EXPECT_FALSE(question.players());
}

TEST_F(Misbehaving, AnEndInTheMiddleIsNoAnswer) {
  question.ask();
  say(taken(), done(1));
  question.advance();
  EXPECT_FALSE(question.isAsking());
  EXPECT_FALSE(question.players());
}

TEST_F(Misbehaving, NonsenseIsNoAnswer) {
  question.ask();
  const Descriptor other = taken();
  say(other, std::string(4096, '\xff'));
  question.advance();
  EXPECT_FALSE(question.players());
}

// Real servers end, and this one never would: it is let go after so many bytes.
TEST_F(Misbehaving, AFloodEndsTheQuestion) {
  question.ask();
  const Descriptor other = taken();
  const std::string flood = word(9) + word(60000) + word(0) + word(0) + std::string(60000, '\0');
  for (int messages = 0; messages < 1000 && question.isAsking(); ++messages) {
    if (::send(other.get(), flood.data(), flood.size(), MSG_NOSIGNAL) < 0) break;
    question.advance();
  }
  EXPECT_FALSE(question.isAsking());
  EXPECT_FALSE(question.players());
}

TEST_F(Misbehaving, WhoWasSilentIsNotWaitedForUntilItSpeaks) {
  question.ask();
  const Descriptor silent = taken();
  question.giveUp();
  question.ask();
  EXPECT_FALSE(question.isAsking()) << "still silent";
  say(silent, done(1));
  question.ask();
  EXPECT_TRUE(question.isAsking());
  const Descriptor again = taken();
  say(again, done(1) + done(2));
  question.advance();
  EXPECT_TRUE(question.players());
}

TEST_F(Misbehaving, WhoWasSilentAndHungUpIsAskedAgain) {
  question.ask();
  { const Descriptor silent = taken(); }
  question.giveUp();
  question.ask();
  EXPECT_TRUE(question.isAsking());
}

TEST(AskTogether, TheDeadlineHoldsWhateverTheServerDoes) {
  const desktop::TemporaryFolder folder;
  const std::string path = folder.path() / "pipewire-0";
  const Descriptor server(desktop::listeningSocket(path));
  PipeWireQuestion question(path);
  askTogether({&question}, std::chrono::steady_clock::now() + 1ms);
  EXPECT_FALSE(question.isAsking());
  EXPECT_FALSE(question.players());
}

TEST(PipeWireSocket, IsWhereClientsLook) {
  static std::map<std::string, std::string> variables;
  const auto socketWith = [](std::map<std::string, std::string> set) {
    variables = std::move(set);
    return pipeWireSocket([](const char* name) -> const char* {
      const auto found = variables.find(name);
      return found == variables.end() ? nullptr : found->second.c_str();
    });
  };
  EXPECT_EQ(socketWith({{"XDG_RUNTIME_DIR", "/run/user/1"}}), "/run/user/1/pipewire-0");
  EXPECT_EQ(socketWith({{"XDG_RUNTIME_DIR", "/run/user/1"}, {"PIPEWIRE_RUNTIME_DIR", "/run/pw"}}),
            "/run/pw/pipewire-0");
  EXPECT_EQ(socketWith({{"XDG_RUNTIME_DIR", "/run/user/1"}, {"PIPEWIRE_REMOTE", "studio"}}),
            "/run/user/1/studio");
  EXPECT_EQ(socketWith({{"PIPEWIRE_REMOTE", "/tmp/there"}}), "/tmp/there");
  EXPECT_EQ(socketWith({}), "");
}

} // namespace
} // namespace vantle
