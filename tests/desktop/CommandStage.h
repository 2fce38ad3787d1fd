// SPDX-License-Identifier: MIT
#pragma once

#include "base/Json.h"
#include "tests/support/KernelState.h"
#include "tests/support/Props.h"
#include "tests/support/User.h"
#include "tests/support/VirtualDesktop.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vantle::desktop {

struct Said {
  std::optional<int> status;
  std::string output;
  std::string errors;
};

inline std::string contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The program itself on an X11 desktop of an ordinary user, and commands that ask it.
class CommandStage : public testing::Test {
 protected:
  void SetUp() override { makeDesktop(test::runsAsRoot() ? std::optional(test::nobody) : std::nullopt); }

  void makeDesktop(std::optional<uid_t> user) {
    VirtualDesktop::Options options;
    options.user = user;
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
  // How often a command that follows has told the status.
  long linesOf(int number) const {
    const std::string text = contents(outputOf(number));
    return std::count(text.begin(), text.end(), '\n');
  }
  std::string lastLineOf(int number) const {
    std::string text = contents(outputOf(number));
    if (text.empty() || text.back() != '\n') return {};
    text.pop_back();
    return text.substr(text.rfind('\n') + 1);
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
  int m_commands = 0; // so many were started; the last one's number
};

} // namespace vantle::desktop
