// SPDX-License-Identifier: MIT
// The words and the button of every state of the update check, brought about by a real server.
#include "settings/model/UpdatesModel.h"

#include "platform/simulated/SimulatedMachine.h"
#include "tests/unit/update/FeedServer.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <gtest/gtest.h>

namespace vantle {

namespace {

using testing_support::FeedServer;
using testing_support::TestCertificate;

class UpdatesModelTest : public testing::Test {
 protected:
  void finish() {
    const QDeadlineTimer guard(60'000);
    while (model.isChecking() && !guard.hasExpired())
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
  }
  void checkAgainst(const std::string& version) {
    server.behaviour = [version](QSslSocket& socket) {
      FeedServer::answer(socket, R"({"version": ")" + version + R"(", "url": "https://localhost/get"})");
    };
    model.act();
    finish();
  }

  TestCertificate certificate = testing_support::makeCertificate("localhost");
  FeedServer server{certificate};
  SimulatedMachine machine;
  AppSettings settings{machine.defaults};
  std::vector<std::string> opened;
  UpdateChecker checker{
      {.version = "1.9", .feed = server.address(), .vendorHost = "localhost", .authorities = certificate.pem},
      settings,
      machine.clock,
      [this](const std::string& address) { opened.push_back(address); }};
  UpdatesModel model{checker, settings};
};

TEST_F(UpdatesModelTest, CheckingSaysSoAndKeepsItsButton) {
  server.behaviour = [](QSslSocket&) {};
  int told = 0;
  QObject::connect(&model, &UpdatesModel::changed, [&told] { ++told; });
  EXPECT_EQ(model.tone(), UpdatesModel::Tone::quiet);
  model.act();
  EXPECT_EQ(told, 1);
  EXPECT_TRUE(model.isChecking());
  EXPECT_EQ(model.status(), "Checking…");
  EXPECT_EQ(model.symbol(), "");
  EXPECT_EQ(model.tone(), UpdatesModel::Tone::quiet);
  EXPECT_EQ(model.action(), "Check Now");
}

TEST_F(UpdatesModelTest, UpToDateIsGood) {
  checkAgainst("1.9");
  EXPECT_EQ(model.status(), "Vantle is up to date");
  EXPECT_EQ(model.symbol(), "checkmark.circle.fill");
  EXPECT_EQ(model.tone(), UpdatesModel::Tone::good);
  EXPECT_EQ(model.action(), "Check Now");
}

TEST_F(UpdatesModelTest, NewerVersionOffersItsPage) {
  checkAgainst("v1.10");
  EXPECT_EQ(model.status(), "Version 1.10 is available");
  EXPECT_EQ(model.symbol(), "arrow.down.circle.fill");
  EXPECT_EQ(model.tone(), UpdatesModel::Tone::plain);
  EXPECT_TRUE(model.isAvailable());
  EXPECT_EQ(model.action(), "Open Download Page");
  model.act();
  EXPECT_EQ(opened, std::vector<std::string>{"https://localhost/get"});
  EXPECT_FALSE(model.isChecking());
}

TEST_F(UpdatesModelTest, FailureIsAWarningAndCanBeTriedAgain) {
  server.behaviour = [](QSslSocket& socket) { FeedServer::answer(socket, "?"); };
  model.act();
  finish();
  EXPECT_EQ(model.status(), "The update server sent an unexpected answer.");
  EXPECT_EQ(model.symbol(), "exclamationmark.triangle.fill");
  EXPECT_EQ(model.tone(), UpdatesModel::Tone::warning);
  EXPECT_EQ(model.action(), "Check Now");
  checkAgainst("1.9");
  EXPECT_EQ(model.status(), "Vantle is up to date");
}

} // namespace

} // namespace vantle
