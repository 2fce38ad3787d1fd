// SPDX-License-Identifier: MIT
#include "update/UpdateChecker.h"

#include "platform/simulated/SimulatedMachine.h"
#include "tests/unit/update/FeedServer.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <gtest/gtest.h>

namespace vantle {

namespace {

using namespace std::chrono_literals;
using testing_support::FeedServer;
using testing_support::makeCertificate;
using testing_support::TestCertificate;
using testing_support::Validity;

const update::State unexpected = update::Failed{"The update server sent an unexpected answer."};
const update::State unreachable = update::Failed{"Couldn't reach the update server."};
const std::string page = "https://localhost/get";
const std::string newer = R"({"version": "v1.10", "url": ")" + page + R"("})";
const update::State available = update::Available{"1.10", page};

const TestCertificate& goodCertificate() {
  static const TestCertificate certificate = makeCertificate("localhost");
  return certificate;
}

class UpdateCheckerTest : public testing::Test {
 protected:
  UpdateConfiguration configuration(const FeedServer& asked) const {
    return {.version = "1.9",
            .feed = asked.address(),
            .vendorHost = "localhost",
            .silence = 20s,
            .whole = 30s,
            .authorities = goodCertificate().pem};
  }
  void make(UpdateConfiguration configuration) {
    checker.emplace(std::move(configuration), settings, clock,
                    [this](const std::string& address) { opened.push_back(address); });
  }
  // Runs the loop until the check is over; the limit only keeps a broken test from hanging.
  update::State finished() {
    QElapsedTimer guard;
    guard.start();
    while (std::holds_alternative<update::Checking>(checker->state.get()) && guard.elapsed() < 60'000)
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    return checker->state.get();
  }
  update::State checked() {
    checker->check();
    return finished();
  }
  update::State checkedAgainst(FeedServer::Behaviour behaviour) {
    server.behaviour = std::move(behaviour);
    make(configuration(server));
    return checked();
  }

  SimulatedMachine machine;
  AppSettings settings{machine.defaults};
  SimulatedClock& clock = machine.clock;
  FeedServer server{goodCertificate()};
  std::vector<std::string> opened;
  std::optional<UpdateChecker> checker;
};

TEST_F(UpdateCheckerTest, StartsIdleAndWithoutTouchingTheNetwork) {
  make(configuration(server));
  EXPECT_EQ(checker->state.get(), update::State{update::Idle{}});
  EXPECT_EQ(checker->currentVersion, "1.9");
  EXPECT_EQ(server.connections(), 0);
}

TEST_F(UpdateCheckerTest, FindsANewerVersionAndRemembersWhen) {
  EXPECT_EQ(checkedAgainst([](QSslSocket& socket) { FeedServer::answer(socket, newer); }), available);
  EXPECT_EQ(settings.lastUpdateCheck(), std::chrono::floor<std::chrono::seconds>(clock.now()));
  checker->openDownloadPage();
  EXPECT_EQ(opened, std::vector{page});
}

TEST_F(UpdateCheckerTest, OpensNothingInAnyOtherState) {
  const std::string same = R"({"version": "1.9", "url": "https://localhost/get"})";
  const auto state = checkedAgainst([same](QSslSocket& socket) { FeedServer::answer(socket, same); });
  EXPECT_EQ(state, update::State{update::UpToDate{}});
  EXPECT_TRUE(settings.lastUpdateCheck().has_value());
  checker->openDownloadPage();
  EXPECT_TRUE(opened.empty());
}

TEST_F(UpdateCheckerTest, SendsAPlainGetThatTellsNothing) {
  checkedAgainst([](QSslSocket& socket) {
    FeedServer::answer(socket, newer, "200 OK", "Set-Cookie: id=1; Path=/\r\nETag: \"1\"\r\n");
  });
  EXPECT_EQ(checked(), available);
  ASSERT_EQ(server.requests().size(), 2U);
  for (const std::string& request : server.requests()) {
    EXPECT_TRUE(request.starts_with("GET /feed.json HTTP/1.1\r\n")) << request;
    // Qt 6.8 writes the names of headers in small letters.
    const std::string head = QByteArray::fromStdString(request).toLower().toStdString();
    EXPECT_NE(head.find("accept-language: *\r\n"), std::string::npos) << request;
    for (const char* header : {"cookie:", "authorization:", "referer:", "if-none-match:", "range:"})
      EXPECT_EQ(head.find(header), std::string::npos) << request;
  }
  EXPECT_EQ(server.requests().front(), server.requests().back());
}

TEST_F(UpdateCheckerTest, FeedsHostMayBeWrittenInCapitals) {
  server.behaviour = [](QSslSocket& socket) { FeedServer::answer(socket, newer); };
  UpdateConfiguration loud = configuration(server);
  loud.feed.replace(loud.feed.find("localhost"), 9, "LOCALHOST");
  make(loud);
  EXPECT_EQ(checked(), available);
}

TEST_F(UpdateCheckerTest, GivesNoCredentialsWhenAsked) {
  const auto state = checkedAgainst([](QSslSocket& socket) {
    FeedServer::answer(socket, newer, "401 Unauthorized", "WWW-Authenticate: Basic realm=\"x\"\r\n");
  });
  EXPECT_EQ(state, unexpected);
  EXPECT_EQ(server.requests().size(), 1U);
}

TEST_F(UpdateCheckerTest, TwoQuickChecksAreOneRequest) {
  server.behaviour = [](QSslSocket& socket) { FeedServer::answer(socket, newer); };
  make(configuration(server));
  checker->check();
  checker->check();
  EXPECT_EQ(finished(), available);
  EXPECT_EQ(server.requests().size(), 1U);
  checker->check();
  EXPECT_EQ(checker->state.get(), update::State{update::Checking{}});
  EXPECT_EQ(finished(), available);
  EXPECT_EQ(server.requests().size(), 2U);
}

TEST_F(UpdateCheckerTest, FollowsNoRedirect) {
  for (const char* status : {"301 Moved Permanently", "302 Found", "307 Temporary Redirect"}) {
    const std::string location = "Location: " + server.address() + "\r\n";
    const std::size_t before = server.requests().size();
    EXPECT_EQ(
        checkedAgainst([&](QSslSocket& socket) { FeedServer::answer(socket, newer, status, location); }),
        unexpected);
    EXPECT_EQ(server.requests().size(), before + 1) << status;
  }
  EXPECT_FALSE(settings.lastUpdateCheck().has_value());
}

TEST_F(UpdateCheckerTest, OtherStatusIsUnexpected) {
  for (const char* status : {"204 No Content", "206 Partial Content", "403 Forbidden", "404 Not Found",
                             "500 Internal Server Error", "503 Service Unavailable"})
    EXPECT_EQ(checkedAgainst([&](QSslSocket& socket) { FeedServer::answer(socket, newer, status); }),
              unexpected)
        << status;
}

TEST_F(UpdateCheckerTest, BrokenOrEmptyBodyIsUnexpected) {
  for (const char* body : {"", "{", "[]", R"({"version": 1})", "\xff\xfe"})
    EXPECT_EQ(checkedAgainst([&](QSslSocket& socket) { FeedServer::answer(socket, body); }), unexpected)
        << body;
}

TEST_F(UpdateCheckerTest, PageWithHttpIsUnexpectedAndHostInCapitalsIsNot) {
  const auto withPage = [&](const std::string& url) {
    const std::string body = R"({"version": "2", "url": ")" + url + R"("})";
    return checkedAgainst([body](QSslSocket& socket) { FeedServer::answer(socket, body); });
  };
  EXPECT_EQ(withPage("http://localhost/get"), unexpected);
  EXPECT_EQ(withPage("https://LOCALHOST/get"),
            (update::State{update::Available{"2", "https://LOCALHOST/get"}}));
}

TEST_F(UpdateCheckerTest, HugeBodyIsUnexpectedAndNotReadToItsEnd) {
  qint64 sent = 0;
  const auto state = checkedAgainst([&](QSslSocket& socket) {
    socket.write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n{\"version\": \"2\", \"url\": \"");
    const auto more = [&socket, &sent] {
      while (socket.encryptedBytesToWrite() + socket.bytesToWrite() < 65536)
        sent += socket.write(QByteArray(65536, 'a'));
    };
    QObject::connect(&socket, &QSslSocket::encryptedBytesWritten, &socket, more);
    more();
  });
  EXPECT_EQ(state, unexpected);
  EXPECT_GT(sent, 1 << 20);
  EXPECT_LT(sent, 32 << 20);
}

TEST_F(UpdateCheckerTest, BodyOfExactlyTheLimitIsRead) {
  std::string body = newer;
  body.resize(1 << 20, ' ');
  EXPECT_EQ(checkedAgainst([body](QSslSocket& socket) { FeedServer::answer(socket, body); }), available);
  body += ' ';
  EXPECT_EQ(checkedAgainst([body](QSslSocket& socket) { FeedServer::answer(socket, body); }), unexpected);
}

TEST_F(UpdateCheckerTest, LengthThatPromisesTooMuchIsALostConnection) {
  const auto state = checkedAgainst([](QSslSocket& socket) {
    socket.write(("HTTP/1.1 200 OK\r\nContent-Length: 9999\r\n\r\n" + newer).c_str());
    socket.disconnectFromHost();
  });
  EXPECT_EQ(state, unreachable);
}

TEST_F(UpdateCheckerTest, LengthThatPromisesTooLittleCutsTheBody) {
  const auto state = checkedAgainst([](QSslSocket& socket) {
    socket.write(("HTTP/1.1 200 OK\r\nContent-Length: 10\r\nConnection: close\r\n\r\n" + newer).c_str());
    socket.disconnectFromHost();
  });
  EXPECT_EQ(state, unexpected);
}

TEST_F(UpdateCheckerTest, ServerThatClosesWithoutAWordIsUnreachable) {
  EXPECT_EQ(checkedAgainst([](QSslSocket& socket) { socket.disconnectFromHost(); }), unreachable);
}

TEST_F(UpdateCheckerTest, SilentServerIsGivenUp) {
  server.behaviour = [](QSslSocket&) {};
  UpdateConfiguration impatient = configuration(server);
  impatient.silence = 200ms;
  make(impatient);
  EXPECT_EQ(checked(), unreachable);
}

TEST_F(UpdateCheckerTest, DrippingServerIsGivenUp) {
  QTimer drip;
  server.behaviour = [&](QSslSocket& socket) {
    socket.write("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n");
    QObject::connect(&drip, &QTimer::timeout, &socket, [&socket] { socket.write(" "); });
    drip.start(20ms);
  };
  UpdateConfiguration impatient = configuration(server);
  impatient.whole = 500ms;
  make(impatient);
  EXPECT_EQ(checked(), unreachable);
}

TEST_F(UpdateCheckerTest, SlowButSteadyServerIsHeardOut) {
  QTimer drip;
  std::size_t at = 0;
  server.behaviour = [&](QSslSocket& socket) {
    socket.write(("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(newer.size()) + "\r\n\r\n").c_str());
    QObject::connect(&drip, &QTimer::timeout, &socket, [&] {
      if (at < newer.size()) socket.write(newer.data() + at++, 1);
    });
    drip.start(1ms);
  };
  make(configuration(server));
  EXPECT_EQ(checked(), available);
}

TEST_F(UpdateCheckerTest, TrustsNoWrongCertificate) {
  const auto answers = [](QSslSocket& socket) { FeedServer::answer(socket, newer); };
  UpdateConfiguration strict = configuration(server);
  strict.authorities.clear(); // the system knows nothing of the test's certificate
  make(strict);
  server.behaviour = answers;
  EXPECT_EQ(checked(), unreachable);

  for (const TestCertificate& wrong :
       {makeCertificate("elsewhere.example"), makeCertificate("localhost", Validity::expired)}) {
    FeedServer imposter(wrong);
    imposter.behaviour = answers;
    UpdateConfiguration trusting = configuration(imposter);
    trusting.authorities = wrong.pem;
    make(trusting);
    EXPECT_EQ(checked(), unreachable);
    EXPECT_TRUE(imposter.requests().empty());
  }
  EXPECT_TRUE(server.requests().empty());
  EXPECT_FALSE(settings.lastUpdateCheck().has_value());
}

TEST_F(UpdateCheckerTest, NobodyListeningIsUnreachableAndChangesNoDate) {
  settings.setLastUpdateCheck(Date(42s));
  UpdateConfiguration lost = configuration(server);
  lost.feed = "https://localhost:1/feed.json";
  make(lost);
  EXPECT_EQ(checked(), unreachable);
  EXPECT_EQ(settings.lastUpdateCheck(), Date(42s));
}

TEST_F(UpdateCheckerTest, BuildWithoutUsableFeedSaysSo) {
  for (const char* feed : {"", "http://localhost/feed.json", "HTTPS://localhost/feed.json",
                           "https://elsewhere.example/feed.json", "feed"}) {
    UpdateConfiguration unusable = configuration(server);
    unusable.feed = feed;
    make(unusable);
    EXPECT_FALSE(checker->feed.has_value());
    checker->check();
    EXPECT_EQ(checker->state.get(), update::State{update::NotConfigured{}}) << feed;
  }
  EXPECT_EQ(server.connections(), 0);
}

TEST_F(UpdateCheckerTest, BuildWithoutVersionCountsAsZero) {
  server.behaviour = [](QSslSocket& socket) { FeedServer::answer(socket, newer); };
  UpdateConfiguration nameless = configuration(server);
  nameless.version.reset();
  make(nameless);
  EXPECT_EQ(checker->currentVersion, "0");
  EXPECT_EQ(checked(), available);
}

TEST_F(UpdateCheckerTest, ChecksByItselfOncePerDayAndOnlyWhenAllowed) {
  make(configuration(server));
  server.behaviour = [](QSslSocket& socket) { FeedServer::answer(socket, newer); };
  const Date now = std::chrono::floor<std::chrono::seconds>(clock.now());
  const auto startsWith = [&](bool allowed, std::optional<Date> last) {
    settings.checkUpdatesAutomatically.set(allowed);
    settings.setLastUpdateCheck(last);
    checker->checkIfDue();
    const bool started = std::holds_alternative<update::Checking>(checker->state.get());
    finished();
    return started;
  };
  EXPECT_FALSE(startsWith(false, std::nullopt));
  EXPECT_FALSE(startsWith(true, now - 23h));
  EXPECT_FALSE(startsWith(true, now - 24h + 1s));
  EXPECT_FALSE(startsWith(true, now + 48h)); // a clock that was set back
  EXPECT_TRUE(startsWith(true, now - 24h));
  EXPECT_TRUE(startsWith(true, std::nullopt));
  EXPECT_EQ(server.requests().size(), 2U);
}

TEST_F(UpdateCheckerTest, AnswerForACheckerThatIsGoneIsDropped) {
  bool over = false;
  server.behaviour = [&](QSslSocket& socket) {
    QObject::connect(&socket, &QSslSocket::disconnected, &socket, [&] { over = true; });
    checker.reset();
    FeedServer::answer(socket, newer);
  };
  make(configuration(server));
  checker->check();
  QElapsedTimer guard;
  guard.start();
  while (!over && guard.elapsed() < 60'000)
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
  EXPECT_TRUE(over);
  EXPECT_FALSE(settings.lastUpdateCheck().has_value());
  EXPECT_EQ(server.requests().size(), 1U);
}

} // namespace

} // namespace vantle
