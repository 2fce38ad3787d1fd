// SPDX-License-Identifier: MIT
#pragma once

#include "tests/desktop/BoostStage.h"
#include "tests/desktop/ShellApps.h"
#include "tests/support/Props.h"
#include "tests/support/ShellDesktop.h"

#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vantle::desktop {

// The program itself on a real shell.
class ShellBoosts : public BoostStage {
 protected:
  explicit ShellBoosts(std::unique_ptr<ShellDesktop> desktop)
      : BoostStage(*desktop), m_desktop(std::move(desktop)) {}
  void SetUp() override {
    m_desktop->installDesktopFile("org.example.Game",
                                  "[Desktop Entry]\nType=Application\nExec=/usr/bin/weston-flower\n"
                                  "Categories=Game;\nName=Game\nStartupWMClass=Game\n");
  }
  Program& shown(std::vector<std::string> command) {
    Program& program = m_desktop->launch(std::move(command));
    require("a window",
            [&] { return m_desktop->windowsWhere("w.pid === " + std::to_string(program.pid())) > 0; });
    return remembered(program);
  }
  Program& nativeApp() override { return shown({"weston-terminal", "--shell=/bin/cat"}); }
  Program& nativeGame() { return shown({"weston-flower"}); }
  Program& x11(const std::string& windowClass) override {
    const std::string title = windowClass + std::to_string(++m_titles);
    Program& program = m_desktop->launch(
        {testWindow(), "--class", windowClass, "--title", title, "--claim-pid", "1", "--outlive-display"});
    m_titlesOf[program.pid()] = title;
    require("an X window", [&] { return m_desktop->windowsWhere("w.caption === \"" + title + "\"") > 0; });
    return remembered(program);
  }
  void focus(const Program& program) override {
    const auto title = m_titlesOf.find(program.pid());
    if (title == m_titlesOf.end()) return m_desktop->focus(program);
    m_desktop->focusTitled(title->second);
  }

  std::unique_ptr<ShellDesktop> m_desktop;
  std::map<Pid, std::string> m_titlesOf; // of X clients, which claim another process
  int m_titles = 0;
};

// The Boosts that every shell has to see; each test program plays them on its own.
class BoostOnEachShell : public ShellBoosts, public testing::WithParamInterface<ShellStage> {
 protected:
  BoostOnEachShell() : ShellBoosts(GetParam().make()) {}
};

} // namespace vantle::desktop
