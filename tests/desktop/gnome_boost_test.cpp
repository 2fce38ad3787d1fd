// SPDX-License-Identifier: MIT
// The program itself on a real GNOME, with its extension in the shell.
#include "tests/desktop/ShellBoosts.h"
#include "tests/support/FakeService.h"
#include "tests/support/GnomeDesktop.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>

namespace vantle::desktop {
namespace {

std::unique_ptr<GnomeDesktop> withExtension() {
  return std::make_unique<GnomeDesktop>(VANTLE_GNOME_EXTENSIONS, "vantle@halvo.com");
}

INSTANTIATE_TEST_SUITE_P(Gnome, BoostOnEachShell, testing::Values(ShellStage{"Gnome", "", withExtension}));

class PanelOnGnome : public ShellBoosts {
 protected:
  PanelOnGnome() : ShellBoosts(withExtension()) {}
  GnomeDesktop& gnome() { return static_cast<GnomeDesktop&>(*m_desktop); }

  bool isPanelInFront() {
    return gnome().script("answer(front()?.pid === " + std::to_string(m_vantle->pid()) + ");") == "true";
  }
  void openPanel() {
    ASSERT_TRUE(gnome().callApplication("Activate", {"{}"}));
    ASSERT_TRUE(waitUntil([&] { return isPanelInFront(); }));
  }
  bool isPanelGone() {
    return waitUntil(
        [&] { return gnome().windowsWhere("w.pid === " + std::to_string(m_vantle->pid())) == 0; });
  }
};

TEST_F(PanelOnGnome, OpensUnderTheIconInTheBarWhereThereIsNoTray) {
  startVantle();
  const int middle = gnome().iconInBar("vantle@halvo.com");
  gnome().click(middle, 12);
  ASSERT_TRUE(waitUntil([&] { return isPanelInFront(); }));
  EXPECT_EQ(gnome().script("const area = front().window.get_frame_rect();"
                           "answer(area.x <= " +
                           std::to_string(middle) + " && " + std::to_string(middle) +
                           " < area.x + area.width);"),
            "true");
  gnome().click(middle, 12);
  EXPECT_TRUE(isPanelGone());
  const FakeService tray(gnome().busAddress(), "org.kde.StatusNotifierWatcher");
  require("no icon",
          [&] { return gnome().script("answer(Main.panel.statusArea['vantle@halvo.com'])") == "undefined"; });
}

TEST_F(PanelOnGnome, GoesAtAClickOnTheBarOrTheEmptyDesktop) {
  startVantle();
  for (const auto& [x, y] : {std::pair{300, 12}, {40, 760}}) {
    ASSERT_NO_FATAL_FAILURE(openPanel());
    gnome().click(x, y);
    EXPECT_TRUE(isPanelGone()) << x << ", " << y;
  }
}

TEST_F(PanelOnGnome, StaysAtAClickIntoIt) {
  Program& app = nativeApp();
  startVantle();
  focus(app);
  ASSERT_NO_FATAL_FAILURE(openPanel());
  const std::string title = gnome().script("const area = front().window.get_frame_rect();"
                                           "answer((area.x + (area.width >> 1)) + ' ' + (area.y + 20));");
  gnome().click(std::stoi(title), std::stoi(title.substr(title.find(' '))));
  EXPECT_TRUE(isPanelInFront());
}

} // namespace
} // namespace vantle::desktop
