// SPDX-License-Identifier: MIT
// The tray icon and the panel in real trays, clicked with a real pointer.
#include "desktop/linux/window/Compositing.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/desktop/HostedPanel.h"
#include "tests/support/FakeService.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Props.h"
#include "tests/support/VirtualDesktop.h"
#include "tests/support/X11Messages.h"
#include "tests/support/XfceTray.h"

#include <csignal>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <sys/stat.h>

namespace {

using namespace vantle;
using namespace vantle::desktop;
using testing::IsSupersetOf;

const std::string iconX = std::to_string(XfceTray::iconX); // the older tray puts it at the same place
const std::string iconY = std::to_string(XfceTray::iconY);

class Tray : public ::testing::Test, public HostedPanel {
 protected:
  Tray() = default;
  explicit Tray(const VirtualDesktop::Options& options) : desktop(options) {}

  VirtualDesktop desktop;

  void startHost() { HostedPanel::startHost(desktop, {{"QT_QPA_PLATFORM", "xcb"}}); }

  void click(const std::string& x, const std::string& y) {
    ASSERT_TRUE(desktop.run({"xdotool", "mousemove", x, y, "click", "1"}));
  }

  // An icon comes into a tray some time after both are there: clicks until it answers.
  bool clickUntilOpened(long before, const std::string& x = iconX, const std::string& y = iconY) {
    return waitUntil([&] {
      desktop.run({"xdotool", "mousemove", x, y, "click", "1"});
      return waitUntil([&] { return countOf("opened ") > before; }, std::chrono::milliseconds(1500));
    });
  }
};

TEST_F(Tray, AClickInXfceOpensThePanelUnderItAndClosesIt) {
  XfceTray(desktop).start();
  startHost();
  ASSERT_TRUE(clickUntilOpened(0));
  const std::vector<int> place = lastPlace();
  ASSERT_EQ(place.size(), 4U);
  EXPECT_LT(place[0], 20);
  EXPECT_GE(place[1], 15);
  EXPECT_LT(place[1], 60);
  EXPECT_EQ(place[2], 360);
  click("900", "700"); // the empty desktop: no window gets the keyboard
  EXPECT_TRUE(waitUntil([this] { return countOf("closed") == 1; }));
  ASSERT_TRUE(clickUntilOpened(1));
  ASSERT_TRUE(desktop.run({"xdotool", "key", "Escape"}));
  EXPECT_TRUE(waitUntil([this] { return countOf("closed") == 2; }));
}

TEST_F(Tray, InXfceItsMenuTurnsTheBoostOffAndTheMiddleButtonOnAgain) {
  XfceTray(desktop).start();
  startHost();
  ASSERT_TRUE(clickUntilOpened(0));
  ASSERT_TRUE(desktop.run({"xdotool", "key", "Escape"}));
  ASSERT_TRUE(waitUntil([this] { return countOf("closed") == 1; }));
  ASSERT_TRUE(tells("boost"));
  ASSERT_TRUE(becomes("Asteroids on"));
  // The first line that can be chosen: what only names the Boost app cannot.
  const auto chooses = [this](const std::vector<std::string>& keys, const char* result) {
    return waitUntil([&] {
      desktop.run({"xdotool", "mousemove", iconX, iconY, "click", "3"});
      std::vector<std::string> command{"xdotool", "key", "--delay", "50"};
      command.insert(command.end(), keys.begin(), keys.end());
      desktop.run(command);
      return becomes(result, std::chrono::milliseconds(1500));
    });
  };
  EXPECT_TRUE(chooses({"Down", "Return"}, "idle on"));
  EXPECT_TRUE(desktop.run({"xdotool", "mousemove", iconX, iconY, "click", "2"}));
  EXPECT_TRUE(becomes("Asteroids on"));
  EXPECT_TRUE(desktop.run({"xdotool", "mousemove", iconX, iconY, "click", "2"}));
  EXPECT_TRUE(becomes("idle on"));
}

TEST_F(Tray, TheIconIsBackAfterTheTrayRestarts) {
  XfceTray tray(desktop);
  Program& first = tray.start();
  startHost();
  ASSERT_TRUE(clickUntilOpened(0));
  ASSERT_TRUE(desktop.run({"xdotool", "key", "Escape"}));
  first.kill();
  require("the end of the tray", [this] { return !desktop.hasBusName("org.kde.StatusNotifierWatcher"); });
  tray.start();
  EXPECT_TRUE(clickUntilOpened(1));
  EXPECT_TRUE(m_host->isRunning());
}

TEST_F(Tray, AnOlderTrayEmbedsTheIconAlsoWhenItComesLate) {
  startHost();
  Program& tray = desktop.launch(
      {"trayer", "--edge", "top", "--align", "left", "--height", "30", "--widthtype", "request"});
  ASSERT_TRUE(clickUntilOpened(0));
  click("900", "700");
  EXPECT_TRUE(waitUntil([this] { return countOf("closed") == 1; }));
  tray.kill();
  desktop.launch({"trayer", "--edge", "top", "--align", "left", "--height", "30", "--widthtype", "request"});
  EXPECT_TRUE(clickUntilOpened(1));
}

TEST_F(Tray, InAnOlderTrayTheWheelDoesNothingAndTheMiddleButtonSwitchesTheBoost) {
  startHost();
  desktop.launch({"trayer", "--edge", "top", "--align", "left", "--height", "30", "--widthtype", "request"});
  // What is asked of the icon after a click is seen only after the click.
  const auto changesWith = [this](const char* state, std::chrono::milliseconds limit) {
    const auto pixel = [this] { return desktop.windows().pixel(XfceTray::iconX, XfceTray::iconY); };
    const std::uint32_t before = pixel();
    return tells(state) && waitUntil([&] { return pixel() != before; }, limit);
  };
  const std::chrono::milliseconds patience(1500);
  require("the icon", [&] { return changesWith("boost", patience) && changesWith("stop", patience); });
  for (const char* button : {"4", "5"})
    ASSERT_TRUE(desktop.run({"xdotool", "mousemove", iconX, iconY, "click", button}));
  // Once for the clicks themselves, and once for what they would lead to.
  ASSERT_TRUE(changesWith("boost", guardLimit) && changesWith("stop", guardLimit));
  ASSERT_TRUE(tells("boost"));
  ASSERT_TRUE(becomes("Asteroids on"));
  ASSERT_TRUE(desktop.run({"xdotool", "mousemove", iconX, iconY, "click", "2"}));
  EXPECT_TRUE(becomes("idle on"));
  ASSERT_TRUE(desktop.run({"xdotool", "mousemove", iconX, iconY, "click", "2"}));
  EXPECT_TRUE(becomes("Asteroids on"));
  EXPECT_EQ(countOf("opened ") + countOf("closed"), 0);
}

TEST_F(Tray, InAnOlderTrayTheThirdButtonShowsTheMenu) {
  startHost();
  desktop.launch({"trayer", "--edge", "top", "--align", "left", "--height", "30", "--widthtype", "request"});
  require("the icon", [this] {
    desktop.run({"xdotool", "mousemove", iconX, iconY, "click", "3"});
    return waitUntil([&] { return countOf("menu ") == 1; }, std::chrono::milliseconds(1500));
  });
  const std::vector<int> place = lastMenu();
  EXPECT_GT(place.at(1), 20) << "below the icon";
  EXPECT_LT(place.at(1), 60);
  EXPECT_GT(place.at(2), 180) << "room for its longest line";
  EXPECT_EQ(place.at(3), 4 * 30 + 9 + 8) << "four lines, and one between them";
  ASSERT_TRUE(desktop.run({"xdotool", "key", "Escape"}));
  ASSERT_TRUE(tells("boost"));
  const auto chooses = [this](const std::vector<std::string>& keys) {
    const long before = countOf("menu ");
    // A click right after the menu was closed counts as the one that has closed it.
    require("the menu", [&] {
      desktop.run({"xdotool", "mousemove", iconX, iconY, "click", "3"});
      return waitUntil([&] { return countOf("menu ") > before; }, std::chrono::milliseconds(1500));
    });
    const std::uint32_t window = desktop.waitForWindow(m_host->pid()).id;
    require("the keyboard", [&] { return desktop.windows().active() == window; });
    std::vector<std::string> command{"xdotool", "key", "--delay", "50"};
    command.insert(command.end(), keys.begin(), keys.end());
    ASSERT_TRUE(desktop.run(command));
  };
  chooses({"Return"}); // what names the Boost app is passed by
  EXPECT_TRUE(becomes("idle on"));
  chooses({"Down", "Down", "Return"});
  EXPECT_TRUE(becomes("idle off"));
  chooses({"Home", "Return"});
  EXPECT_TRUE(waitUntil([this] { return countOf("opened ") == 1; }));
  EXPECT_LT(lastPlace().at(1), 60) << "beside the icon";
  ASSERT_TRUE(desktop.run({"xdotool", "key", "Escape"}));
  EXPECT_TRUE(waitUntil([this] { return countOf("closed") == 1; }));
  chooses({"End", "Return"});
  EXPECT_TRUE(waitUntil([this] { return countOf("quit") == 1; }));
}

TEST_F(Tray, InAnOlderTrayATipSaysWhatIsGoingOn) {
  startHost();
  desktop.launch({"trayer", "--edge", "top", "--align", "left", "--height", "30", "--widthtype", "request"});
  const auto isShown = [this](const std::string& tip) {
    return desktop.run({"xdotool", "search", "--onlyvisible", "--name", "^" + tip});
  };
  require("the tip", [&] {
    desktop.run({"xdotool", "mousemove", "900", "700", "mousemove", iconX, iconY});
    return waitUntil([&] { return isShown("Boost off"); }, std::chrono::milliseconds(1500));
  });
  ASSERT_TRUE(tells("boost"));
  EXPECT_TRUE(waitUntil([&] { return isShown("Boost on"); })) << "also while it is shown";
  EXPECT_FALSE(isShown("Boost off"));
  ASSERT_TRUE(desktop.run({"xdotool", "mousemove", "900", "700"}));
  EXPECT_TRUE(waitUntil([&] { return !isShown("Boost on"); }));
}

TEST_F(Tray, ASecondTrayOfTheNewerKindTakesTheIconOver) {
  startHost();
  desktop.launch(
      {"trayer", "--edge", "bottom", "--align", "left", "--height", "30", "--widthtype", "request"});
  ASSERT_TRUE(clickUntilOpened(0, iconX, "785"));
  ASSERT_TRUE(desktop.run({"xdotool", "key", "Escape"}));
  EXPECT_TRUE(waitUntil([this] { return countOf("closed") == 1; }));
  XfceTray(desktop).start();
  EXPECT_TRUE(clickUntilOpened(1));
  EXPECT_TRUE(m_host->isRunning());
}

TEST_F(Tray, ThePanelOpensOnTheScreenOfItsIconAndLeavesItWhenThatIsUnplugged) {
  ASSERT_TRUE(desktop.run({"xrandr", "--setmonitor", "left", "640/200x800/200+0+0", "screen"}));
  ASSERT_TRUE(desktop.run({"xrandr", "--setmonitor", "right", "640/200x800/200+640+0", "none"}));
  startHost();
  desktop.launch({"trayer", "--edge", "bottom", "--align", "right", "--height", "30", "--widthtype",
                  "request", "--monitor", "1"});
  ASSERT_TRUE(clickUntilOpened(0, "1265", "785"));
  std::vector<int> place = lastPlace();
  ASSERT_EQ(place.size(), 4U);
  EXPECT_GE(place[0], 640);
  EXPECT_LE(place[0] + place[2], 1280);
  EXPECT_LE(place[1] + place[3], 800);
  EXPECT_GT(place[1], 200) << "it stands on the bar";
  ASSERT_TRUE(desktop.run({"xrandr", "--delmonitor", "right"}));
  EXPECT_TRUE(waitUntil([&] {
    place = lastPlace();
    return place[0] >= 0 && place[0] + place[2] <= 640;
  })) << place[0];
  EXPECT_TRUE(m_host->isRunning());
  EXPECT_EQ(countOf("closed"), 0);
  ASSERT_TRUE(desktop.run({"xdotool", "key", "Escape"}));
  EXPECT_TRUE(waitUntil([this] { return countOf("closed") == 1; }));
}

TEST_F(Tray, WithNoTrayTheAppMenuOpensThePanel) {
  startHost();
  desktop.waitForBusName("com.halvo.vantle");
  ASSERT_TRUE(desktop.callApplication("Activate"));
  EXPECT_TRUE(waitUntil([this] { return countOf("opened ") == 1; }));
  // Another window that comes to the front closes it.
  desktop.activate(desktop.launch({testWindow(), "--title", "other"}));
  EXPECT_TRUE(waitUntil([this] { return countOf("closed") == 1; }));
}

TEST_F(Tray, ThePanelIsInNoTaskBarAndNoPager) {
  startHost();
  desktop.waitForBusName("com.halvo.vantle");
  for (long round = 1; round <= 2; ++round) { // a window that is shown again has to say it again
    ASSERT_TRUE(desktop.callApplication("Activate"));
    ASSERT_TRUE(waitUntil([&] { return countOf("opened ") == round; }));
    const std::uint32_t panel = desktop.waitForWindow(m_host->pid()).id;
    EXPECT_THAT(desktop.windows().states(panel),
                IsSupersetOf({"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"}));
    ASSERT_TRUE(desktop.run({"xdotool", "key", "Escape"}));
    ASSERT_TRUE(waitUntil([&] { return countOf("closed") == round; }));
  }
}

const std::vector<std::string> barAtTheBottom{
    "trayer",  "--edge",  "bottom", "--align",           "left", "--height", "30", "--widthtype",
    "percent", "--width", "100",    "--SetPartialStrut", "true"};

TEST_F(Tray, AnAppMenuOpensThePanelOverABarAtTheBottom) {
  desktop.launch(barAtTheBottom);
  startHost();
  desktop.waitForBusName("com.halvo.vantle");
  ASSERT_TRUE(desktop.callApplication("Activate"));
  std::vector<int> place;
  EXPECT_TRUE(waitUntil([&] {
    place = lastPlace();
    return place.size() == 4 && place[0] + place[2] == 1276 && place[1] + place[3] == 766;
  })) << testing::PrintToString(place);
}

// Two screens side by side, of different heights. Bars are told of by windows that say what one takes.
class TwoScreens : public Tray {
 protected:
  TwoScreens() {
    require("two screens", [this] {
      return desktop.run({"xrandr", "--setmonitor", "left", "640/200x800/200+0+0", "screen"}) &&
             desktop.run({"xrandr", "--setmonitor", "right", "640/200x700/200+640+0", "none"});
    });
    m_bar = std::to_string(desktop.waitForWindow(desktop.launch({testWindow(), "--title", "bar"}).pid()).id);
  }

  // Left, right, top, bottom, and from where to where on each of them.
  void barTakes(const std::string& numbers) {
    ASSERT_TRUE(desktop.run({"xprop", "-id", m_bar, "-f", "_NET_WM_STRUT_PARTIAL", "32c", "-set",
                             "_NET_WM_STRUT_PARTIAL", numbers}));
  }
  void expectAt(int right, int bottom) {
    std::vector<int> place;
    EXPECT_TRUE(waitUntil([&] {
      place = lastPlace();
      return place.size() == 4 && place[0] + place[2] == right && place[1] + place[3] == bottom;
    })) << testing::PrintToString(place);
  }

 private:
  std::string m_bar;
};

TEST_F(TwoScreens, ThePanelStandsOnTheBarOfItsScreen) {
  barTakes("0,0,0,130,0,0,0,0,0,0,640,1279"); // 30 of the right one, over the 100 that it is lower
  startHost();
  desktop.waitForBusName("com.halvo.vantle");
  ASSERT_TRUE(desktop.callApplication("Activate"));
  expectAt(1276, 666);
  barTakes("0,0,0,50,0,0,0,0,0,0,0,639");
  ASSERT_TRUE(desktop.run({"xdotool", "key", "Escape"}));
  ASSERT_TRUE(waitUntil([this] { return countOf("closed") == 1; }));
  ASSERT_TRUE(desktop.callApplication("Activate"));
  expectAt(636, 746);
  barTakes("0,0,0,80,0,0,0,0,0,0,0,639"); // it grows under the panel
  expectAt(636, 716);
}

// It tiles windows, and tells nobody which bars there are.
class TrayOnI3 : public Tray {
 protected:
  TrayOnI3() : Tray({.user = {}, .windowManager = false}) {}

  void startI3(const std::string& edge) {
    const auto file =
        desktop.folder().write("i3.config", "# i3 config file (v4)\nbar {\nposition " + edge + "\n}\n");
    desktop.launch({"i3", "-c", file.string()});
    require("the window manager", [this] { return desktop.windows().hasWindowManager(); });
    startHost();
    desktop.waitForBusName("com.halvo.vantle");
  }
};

TEST_F(TrayOnI3, ThePanelFloatsOverTheBar) {
  startI3("bottom");
  ASSERT_TRUE(desktop.callApplication("Activate"));
  std::vector<int> place;
  EXPECT_TRUE(waitUntil([&] {
    place = lastPlace();
    return place.size() == 4 && place[0] + place[2] == 1276 && place[1] + place[3] > 750 &&
           place[1] + place[3] < 790;
  })) << testing::PrintToString(place);
  EXPECT_EQ(place[2], 360);
}

TEST_F(TrayOnI3, ThePanelHangsFromTheBar) {
  startI3("top");
  ASSERT_TRUE(desktop.callApplication("Activate"));
  std::vector<int> place;
  EXPECT_TRUE(waitUntil([&] {
    place = lastPlace();
    return place.size() == 4 && place[0] + place[2] == 1276 && place[1] > 12 && place[1] < 40;
  })) << testing::PrintToString(place);
}

TEST_F(Tray, ItsMenuOpensThePanelWhereThePointerIs) {
  desktop.launch(barAtTheBottom);
  startHost();
  const std::string item = "org.kde.StatusNotifierItem-" + std::to_string(m_host->pid()) + "-1";
  desktop.waitForBusName(item);
  ASSERT_TRUE(desktop.run({"xdotool", "mousemove", "--sync", "500", "690"}));
  ASSERT_TRUE(desktop.run({"gdbus", "call", "--session", "--dest", item, "--object-path", "/MenuBar",
                           "--method", "com.canonical.dbusmenu.Event", "5", "clicked", "<0>", "0"}));
  std::vector<int> place;
  EXPECT_TRUE(waitUntil([&] {
    place = lastPlace();
    return place.size() == 4 && std::abs(place[0] + place[2] / 2 - 500) <= 1 && place[1] + place[3] == 766;
  })) << testing::PrintToString(place);
}

struct OwnBus {
  PrivateBus bus;
};

class ReturningBus : public OwnBus, public Tray {
 protected:
  ReturningBus()
      : Tray(
            {.user = {}, .sessionBus = false, .environment = {{"DBUS_SESSION_BUS_ADDRESS", bus.address()}}}) {
  }

  std::unique_ptr<FakeService> startWatcher() {
    auto watcher = std::make_unique<FakeService>(bus.address(), "org.kde.StatusNotifierWatcher");
    watcher->answer("", "RegisterStatusNotifierItem", [](sd_bus_message*, sd_bus_message*) {});
    return watcher;
  }
  void expectToBeThere(const FakeService& watcher) {
    EXPECT_TRUE(waitUntil([&] { return watcher.calls("RegisterStatusNotifierItem") > 0; }));
    desktop.waitForBusName("com.halvo.vantle");
    const std::string pid = std::to_string(m_host->pid());
    expectOpening({"org.kde.StatusNotifierItem-" + pid + "-1", "--object-path", "/StatusNotifierItem",
                   "--method", "org.kde.StatusNotifierItem.Activate", "20", "10"});
    expectOpening({"com.halvo.vantle", "--object-path", "/com/halvo/vantle", "--method",
                   "org.freedesktop.Application.Activate", "{}"});
  }
  void expectOpening(std::vector<std::string> call) {
    const long opened = countOf("opened ");
    const std::vector<std::string> tool{"gdbus", "call", "--session", "--dest"};
    call.insert(call.begin(), tool.begin(), tool.end());
    // A click right after the panel was closed counts as the one that has closed it.
    EXPECT_TRUE(waitUntil([&] {
      desktop.run(call);
      return waitUntil([&] { return countOf("opened ") > opened; }, std::chrono::milliseconds(1500));
    }));
    close();
  }
  // Another window comes to the front.
  void close() {
    const long closed = countOf("closed");
    desktop.activate(desktop.launch({testWindow(), "--title", "other"}));
    EXPECT_TRUE(waitUntil([&] { return countOf("closed") > closed; }));
  }
};

TEST_F(ReturningBus, HasTheIconAndTheProgramsNameAgain) {
  std::unique_ptr<FakeService> watcher = startWatcher();
  startHost();
  expectToBeThere(*watcher);
  for (int round = 0; round < 3; ++round) {
    bus.kill();
    watcher.reset();
    bus.start();
    watcher = startWatcher();
    expectToBeThere(*watcher);
    ASSERT_TRUE(m_host->isRunning());
  }
}

TEST_F(ReturningBus, MayEndWhileSomebodyCalls) {
  std::unique_ptr<FakeService> watcher = startWatcher();
  startHost();
  expectToBeThere(*watcher);
  for (int round = 0; round < 3; ++round) {
    const long opened = countOf("opened ");
    Program& flood = desktop.launch({flooder(), "activate"});
    ASSERT_TRUE(waitUntil([&] { return countOf("opened ") > opened; }));
    bus.kill();
    EXPECT_EQ(flood.exitStatus(), 1);
    watcher.reset();
    bus.start();
    watcher = startWatcher();
    close();
    expectToBeThere(*watcher);
  }
}

TEST_F(ReturningBus, MayComeAfterTheProgram) {
  bus.kill();
  startHost();
  bus.start();
  const std::unique_ptr<FakeService> watcher = startWatcher();
  expectToBeThere(*watcher);
}

// The X server takes what it is sent and answers nothing any more, as when it hangs, or when a client that
// has it for itself does.
class HungServer {
 public:
  explicit HungServer(Program& server) : m_server(server) { m_server.signal(SIGSTOP); }
  ~HungServer() { m_server.signal(SIGCONT); }
  HungServer(const HungServer&) = delete;
  HungServer& operator=(const HungServer&) = delete;

 private:
  Program& m_server;
};

// As far as others can see one.
class Compositor {
 public:
  explicit Compositor(const std::string& display) : m_server(xcb_connect(display.c_str(), nullptr)) {
    const xcb_window_t window = xcb_generate_id(m_server);
    const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(m_server)).data;
    xcb_create_window(m_server, 0, window, screen.root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_set_selection_owner(m_server, window, internAtom(m_server, "_NET_WM_CM_S0"), XCB_CURRENT_TIME);
    settle(m_server);
  }
  ~Compositor() { xcb_disconnect(m_server); }
  Compositor(const Compositor&) = delete;
  Compositor& operator=(const Compositor&) = delete;

 private:
  xcb_connection_t* m_server;
};

TEST_F(Tray, AnEmbeddedIconChangesWithoutWaitingForAServerThatHangs) {
  startHost();
  desktop.launch({"trayer", "--edge", "top", "--align", "left", "--height", "30", "--widthtype", "request"});
  ASSERT_TRUE(clickUntilOpened(0));
  ASSERT_TRUE(desktop.run({"xdotool", "key", "Escape"}));
  EXPECT_TRUE(waitUntil([this] { return countOf("closed") == 1; }));
  {
    const HungServer hung(desktop.xServer());
    EXPECT_TRUE(tells("boost"));
    EXPECT_TRUE(tells("stop"));
    EXPECT_TRUE(tells("boost"));
  }
  EXPECT_TRUE(clickUntilOpened(1));
}

TEST_F(Tray, ThePanelIsTranslucentWhereTheScreenIsComposed) {
  PollEventLoop loop;
  EXPECT_FALSE(screenIsComposited(loop, desktop.display(), guardLimit));
  {
    const Compositor compositor(desktop.display());
    EXPECT_TRUE(screenIsComposited(loop, desktop.display(), guardLimit));
  }
  EXPECT_FALSE(screenIsComposited(loop, ":nowhere", guardLimit));
}

TEST_F(Tray, ThePanelDoesNotWaitForAServerThatHangs) {
  PollEventLoop loop;
  const HungServer hung(desktop.xServer());
  EXPECT_FALSE(screenIsComposited(loop, desktop.display()));
}

TEST_F(ReturningBus, MayLoseItsTrayBesideAServerThatHangs) {
  std::unique_ptr<FakeService> watcher = startWatcher();
  startHost();
  expectToBeThere(*watcher);
  {
    const HungServer hung(desktop.xServer());
    watcher.reset(); // from now on a tray of the older kind would do
    require("its end", [this] { return !desktop.hasBusName("org.kde.StatusNotifierWatcher"); });
    EXPECT_TRUE(desktop.run({"gdbus", "call", "--session", "--timeout", "5", "--dest", "com.halvo.vantle",
                             "--object-path", "/com/halvo/vantle", "--method",
                             "org.freedesktop.Application.ActivateAction", "none", "[]", "{}"}));
    EXPECT_TRUE(tells("boost"));
  }
  desktop.launch({"trayer", "--edge", "top", "--align", "left", "--height", "30", "--widthtype", "request"});
  EXPECT_TRUE(clickUntilOpened(countOf("opened ")));
}

} // namespace
