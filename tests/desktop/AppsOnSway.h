// SPDX-License-Identifier: MIT
#pragma once

#include "tests/desktop/WatchedApps.h"
#include "tests/support/Props.h"
#include "tests/support/SwayDesktop.h"
#include "tests/support/User.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vantle::desktop {

// Apps of both kinds on a real sway, which is asked for its windows in one way or another.
class AppsOnSway : public WatchedApps {
 protected:
  void SetUp() override {
    ASSERT_FALSE(test::runsAsRoot()) << "another user's apps are none of the program's";
    m_desktop.emplace();
  }

  static std::vector<std::string> nativeApp(const std::string& name) {
    return {"foot", "--app-id", name, "--title", name, "sleep", "1000"};
  }
  Program& native(const std::string& name = "foot") { return shown(nativeApp(name)); }
  Program& x11(std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.begin(), testWindow());
    return shown(std::move(arguments));
  }
  Program& shown(std::vector<std::string> command) {
    Program& program = m_desktop->launch(std::move(command));
    m_desktop->waitForWindow(program.pid());
    return program;
  }

  std::optional<SwayDesktop> m_desktop;
};

} // namespace vantle::desktop
