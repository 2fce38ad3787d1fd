// SPDX-License-Identifier: MIT
#pragma once

#include "tests/desktop/WatchedApps.h"
#include "tests/support/Props.h"
#include "tests/support/ShellDesktop.h"

#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace vantle::desktop {

// The apps of a real shell, native ones and X clients, as the workspace sees them.
class ShellApps : public WatchedApps {
 protected:
  // The desktop, and what its source is called.
  ShellApps(std::unique_ptr<ShellDesktop> desktop, std::string source)
      : m_desktop(std::move(desktop)), m_source(std::move(source)) {
    // Of the X server, which wants to know who connects.
    ::setenv("XAUTHORITY", m_desktop->environment().at("XAUTHORITY").c_str(), 1);
  }

  Program& native() { return shown({"weston-terminal", "--shell=/bin/cat"}); }
  Program& x11(std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.begin(), testWindow());
    const std::string title = "window " + std::to_string(++m_titles);
    arguments.insert(arguments.end(), {"--title", title});
    Program& program = m_desktop->launch(std::move(arguments));
    m_titlesOf[program.pid()] = title;
    require("an X window", [&] { return m_desktop->windowsWhere("w.caption === \"" + title + "\"") > 0; });
    return program;
  }
  Program& shown(std::vector<std::string> command) {
    Program& program = m_desktop->launch(std::move(command));
    require("a window", [&] { return windowsOf(program) > 0; });
    return program;
  }
  // As the shell knows them, which may be wrong for X clients.
  int windowsOf(const Program& program) {
    return m_desktop->windowsWhere("w.pid === " + std::to_string(program.pid()));
  }
  void focus(const Program& program) {
    const auto title = m_titlesOf.find(program.pid());
    if (title == m_titlesOf.end()) return m_desktop->focus(program);
    m_desktop->focusTitled(title->second);
  }
  DesktopSource find() { return WatchedApps::find(*m_desktop); }
  void watch() {
    DesktopSource source = find();
    const auto name = source.name;
    WatchedApps::watch(*m_desktop, std::move(source));
    EXPECT_TRUE(runUntil([&] { return *name == m_source; })) << *name;
  }
  std::unique_ptr<ShellDesktop> m_desktop;
  std::string m_source;
  std::map<Pid, std::string> m_titlesOf; // of X clients
  int m_titles = 0;
};

struct ShellStage {
  const char* name;
  const char* source;
  std::function<std::unique_ptr<ShellDesktop>()> make;
};
inline std::ostream& operator<<(std::ostream& stream, const ShellStage& stage) {
  return stream << stage.name;
}

// The cases that every shell has to pass; each test program plays them on its own.
class OnEachShell : public ShellApps, public testing::WithParamInterface<ShellStage> {
 protected:
  OnEachShell() : ShellApps(GetParam().make(), GetParam().source) {}
};

} // namespace vantle::desktop
