// SPDX-License-Identifier: MIT
// The apps of a real GNOME, with Vantle's extension in its shell.
#include "desktop/linux/extension/GnomeShellExtension.h"
#include "tests/desktop/ShellApps.h"
#include "tests/support/GnomeDesktop.h"

#include <QCoreApplication>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vantle::desktop {
namespace {

using testing::Contains;
using testing::ElementsAre;

constexpr const char* uuid = "vantle@halvo.com";
constexpr const char* xwayland = "Xwayland (X11 apps only)";
constexpr const char* gnome = "GNOME (native apps and X11 apps)";

std::unique_ptr<GnomeDesktop> withExtension() {
  return std::make_unique<GnomeDesktop>(VANTLE_GNOME_EXTENSIONS, uuid);
}

INSTANTIATE_TEST_SUITE_P(Gnome, OnEachShell, testing::Values(ShellStage{"Gnome", gnome, withExtension}));

class Gnome : public ShellApps {
 protected:
  Gnome() : ShellApps(withExtension(), gnome) {}

  // By the person, in the shell.
  void switchExtension(bool isOn) {
    m_desktop->script(std::string("Main.extensionManager.") + (isOn ? "enable" : "disable") + "Extension('" +
                      uuid + "');");
  }
  // Says something to the extension, as somebody else than Vantle does.
  bool isObeyed(const std::vector<std::string>& what) {
    std::vector<std::string> command{"gdbus",
                                     "call",
                                     "--session",
                                     "--dest",
                                     "org.gnome.Shell",
                                     "--object-path",
                                     "/com/halvo/vantle/shell",
                                     "--method"};
    command.insert(command.end(), what.begin(), what.end());
    return m_desktop->run(command);
  }
};

TEST_F(Gnome, WhileTheScreenIsLockedEverythingStays) {
  Program& app = native();
  Program& game = x11();
  focus(game);
  watch();
  ASSERT_TRUE(becomesFront(game));
  ASSERT_NE(appOf(app), nullptr);
  m_events.clear();
  m_desktop->script("Main.sessionMode.pushMode('unlock-dialog');");
  require("the extension's rest", [&] { return !m_desktop->hasBusName("com.halvo.vantle.shell"); });
  Program& late = native(); // nobody hears of it
  m_desktop->script("Main.sessionMode.popMode('unlock-dialog');");
  ASSERT_NE(appOf(late), nullptr);
  focus(app);
  ASSERT_TRUE(becomesFront(app));
  EXPECT_EQ(m_events.back(), event("activated", app));
  for (const std::string& told : m_events) EXPECT_FALSE(told.starts_with("terminated")) << told;
}

TEST_F(Gnome, WithoutTheExtensionThereAreXWindowsAndWithItAll) {
  Program& app = native();
  Program& game = x11();
  switchExtension(false);
  DesktopSource source = find();
  const auto name = source.name;
  EXPECT_EQ(*name, xwayland);
  WatchedApps::watch(*m_desktop, std::move(source));
  ASSERT_NE(appOf(game), nullptr);
  EXPECT_EQ(m_workspace->runningApplications().size(), 1U);
  focus(game);
  ASSERT_TRUE(becomesFront(game));
  m_events.clear();
  switchExtension(true);
  ASSERT_NE(appOf(app), nullptr);
  EXPECT_EQ(*name, gnome);
  focus(app);
  ASSERT_TRUE(becomesFront(app));
  EXPECT_THAT(m_events, ElementsAre(event("launched", app), event("activated", app)))
      << "the X client's app is the same as before";
  m_events.clear();
  switchExtension(false);
  ASSERT_TRUE(runUntil([&] { return m_workspace->runningApplication(app.pid()) == nullptr; }));
  EXPECT_EQ(*name, xwayland);
  EXPECT_THAT(m_events, Contains(event("terminated", app))) << "nobody would hear of its coming to the front";
  ASSERT_NE(appOf(game), nullptr);
  focus(game);
  EXPECT_TRUE(becomesFront(game));
  EXPECT_EQ(m_losses, 0);
}

TEST_F(Gnome, TheExtensionObeysNobodyElse) {
  Program& app = native();
  const std::string sync = "com.halvo.vantle.DesktopShell.Sync";
  EXPECT_FALSE(isObeyed({sync})) << "there is no Vantle";
  watch();
  ASSERT_TRUE(becomesFront(app));
  EXPECT_FALSE(isObeyed({sync}));
  const std::string window = m_desktop->script("answer(front().window.get_id())");
  for (const char* order : {"Close", "Front"})
    EXPECT_FALSE(isObeyed({std::string("com.halvo.vantle.DesktopShell.") + order, window}));
  EXPECT_TRUE(appOf(app)->terminate()) << "Vantle is";
  EXPECT_TRUE(runUntil([&] { return m_workspace->runningApplications().empty(); }));
}

TEST_F(Gnome, ADialogIsItsAppsOwn) {
  const auto file = m_desktop->home() / "text";
  ASSERT_TRUE(m_desktop->run({"sh", "-c", "echo saved >" + file.string()}));
  Program& editor = shown({"mousepad", file.string()});
  watch();
  ASSERT_TRUE(becomesFront(editor));
  m_events.clear();
  require("the dialog", [&] {
    m_desktop->run({"gdbus", "call", "--session", "--dest", "org.xfce.mousepad", "--object-path",
                    "/org/xfce/mousepad/window/1", "--method", "org.gtk.Actions.Activate", "help.about", "[]",
                    "{}"});
    return windowsOf(editor) > 1;
  });
  Program& app = native();
  ASSERT_TRUE(becomesFront(app)) << "which all that was told before has come before";
  EXPECT_THAT(m_events, ElementsAre(event("launched", app), event("activated", app)));
}

// The switch in the settings, with GNOME's own settings.
TEST(GnomeExtensionSwitch, PutsInPlaceWhatTheNextLogInStarts) {
  GnomeDesktop desktop;
  for (const char* name : {"DBUS_SESSION_BUS_ADDRESS", "GSETTINGS_BACKEND", "HOME", "WAYLAND_DISPLAY",
                           "XDG_CONFIG_HOME", "XDG_DATA_HOME"}) {
    ::setenv(name, desktop.environment().at(name).c_str(), 1);
  }
  int count = 0;
  const QCoreApplication application(count, nullptr);
  SessionBus bus;
  GnomeShellExtension extension(bus);
  using State = ShellExtension::State;
  const auto becomes = [&](State state) {
    return waitUntil([&] {
      QCoreApplication::processEvents();
      return extension.state() == state;
    });
  };
  extension.reload();
  ASSERT_TRUE(becomes(State::out));
  extension.install();
  ASSERT_TRUE(becomes(State::waiting));
  desktop.logInAgain();
  desktop.waitForBusName("com.halvo.vantle.shell");
  extension.reload();
  ASSERT_TRUE(becomes(State::atWork));
  extension.remove();
  ASSERT_TRUE(becomes(State::out));
  require("the extension's end", [&] { return !desktop.hasBusName("com.halvo.vantle.shell"); });
  extension.install();
  EXPECT_TRUE(waitUntil([&] {
    QCoreApplication::processEvents();
    return extension.state() != State::out;
  }));
  desktop.waitForBusName("com.halvo.vantle.shell"); // which knows it by now
}

} // namespace
} // namespace vantle::desktop
