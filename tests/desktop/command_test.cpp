// SPDX-License-Identifier: MIT
// What `vantle COMMAND` says, of a copy that runs a Boost among real apps, and where none runs.
#include "base/Json.h"
#include "tests/support/KernelState.h"
#include "tests/support/Props.h"
#include "tests/support/User.h"
#include "tests/support/VirtualDesktop.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace vantle::desktop {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct Said {
  std::optional<int> status;
  std::string output;
  std::string errors;
};

std::string contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class Command : public testing::Test {
 protected:
  void SetUp() override {
    VirtualDesktop::Options options;
    if (test::runsAsRoot()) options.user = test::nobody;
    m_desktop = std::make_unique<VirtualDesktop>(options);
    install("Game", "Categories=Game;\n");
    install("Mail", "");
    install("Music", "");
  }

  void install(const std::string& name, const std::string& more) {
    m_desktop->installDesktopFile("org.example." + name,
                                  "[Desktop Entry]\nType=Application\nExec=true\nName=" + name +
                                      "\nStartupWMClass=" + name + "\n" + more);
  }
  Program& app(const std::string& name) {
    Program& program = m_desktop->launch({testWindow(), "--class", name, "--background"});
    m_desktop->waitForWindow(program.pid());
    return program;
  }
  void startVantle() {
    m_vantle = &m_desktop->launch({VANTLE_PROGRAM});
    require("Vantle", [&] { return m_desktop->hasBusName("com.halvo.vantle") || !m_vantle->isRunning(); });
    ASSERT_TRUE(m_vantle->isRunning()) << *m_vantle->exitStatus();
  }
  // Mail in the background of a game that is in front.
  void startBoost() {
    m_mail = &app("Mail");
    m_game = &app("Game");
    startVantle();
    m_desktop->activate(*m_game);
    require("the Boost", [&] { return isSlowed(m_mail->pid()); });
  }

  // A command's output as it grows.
  std::filesystem::path outputOf(int number) const {
    return m_desktop->folder().path() / ("tmp/said" + std::to_string(number));
  }
  Program& launchCommand(const std::vector<std::string>& arguments) {
    const std::filesystem::path output = outputOf(++m_commands);
    std::vector<std::string> command{"/bin/sh", "-c",
                                     R"(said=$1; shift; exec "$0" "$@" >"$said" 2>"$said.errors")"};
    command.insert(command.end(), {VANTLE_PROGRAM, output.string()});
    command.insert(command.end(), arguments.begin(), arguments.end());
    return m_desktop->launch(std::move(command));
  }
  Said vantle(const std::vector<std::string>& arguments) {
    const auto status = launchCommand(arguments).exitStatus();
    const std::filesystem::path output = outputOf(m_commands);
    return {status, contents(output), contents(output.string() + ".errors")};
  }
  Json statusJson() {
    const Said said = vantle({"status", "--json"});
    EXPECT_EQ(said.status, 0) << said.errors;
    const std::optional<Json> json = Json::parse(said.output);
    EXPECT_TRUE(json) << said.output;
    return json.value_or(Json());
  }
  // Of the app in the list; null when it is not there.
  static Json appIn(const Json& status, const Program& program) {
    for (const Json& app : status.arrayAt("apps")) {
      if (app.integerAt("pid") == program.pid()) return app;
    }
    return {};
  }

  std::unique_ptr<VirtualDesktop> m_desktop;
  Program* m_vantle = nullptr;
  Program* m_mail = nullptr;
  Program* m_game = nullptr;
  int m_commands = 0;
};

TEST_F(Command, StatusTellsOfABoostAsJson) {
  ASSERT_NO_FATAL_FAILURE(startBoost());
  const Json status = statusJson();
  EXPECT_EQ(*status.find("running"), Json(true));
  const Json& boost = *status.find("boost");
  EXPECT_EQ(*boost.find("active"), Json(true));
  EXPECT_EQ(boost.find("app")->textAt("name"), "Game");
  EXPECT_EQ(boost.find("app")->textAt("id"), "org.example.Game");
  EXPECT_EQ(boost.find("app")->integerAt("pid"), m_game->pid());
  EXPECT_EQ(appIn(status, *m_game).textAt("state"), "boost app");
  const Json mail = appIn(status, *m_mail);
  EXPECT_EQ(mail.textAt("state"), "in background");
  EXPECT_EQ(mail.textAt("reason"), "slowed");
  EXPECT_EQ(mail.unsignedAt("processes"), 1U);
  EXPECT_TRUE(mail.textAt("lever"));
}

} // namespace
} // namespace vantle::desktop
