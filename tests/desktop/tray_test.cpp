// SPDX-License-Identifier: MIT
// The tray icon and the panel in real trays, clicked with a real pointer.
#include "tests/desktop/harness/VirtualDesktop.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace {

using namespace vantle;
using namespace vantle::desktop;

constexpr const char* panelSettings = R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="true"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="30"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray"/>
  </property>
</channel>
)";

constexpr const char* iconPlace[] = {"14", "15"}; // the one icon at the left end of a bar at the top

class Tray : public ::testing::Test {
 protected:
  VirtualDesktop desktop;

  Program& startXfcePanel() {
    if (m_xfconf == nullptr) {
      desktop.folder().write("home/.config/xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml", panelSettings);
      m_xfconf = &desktop.launch({"/usr/lib/x86_64-linux-gnu/xfce4/xfconf/xfconfd"});
      desktop.waitForBusName("org.xfce.Xfconf");
    }
    Program& panel = desktop.launch({"xfce4-panel", "--disable-wm-check"});
    desktop.waitForBusName("org.kde.StatusNotifierWatcher");
    return panel;
  }

  void startHost() {
    m_log = desktop.folder().path() / "host.log";
    m_host = &desktop.launch({"sh", "-c", "exec \"$0\" >\"$1\" 2>&1", VANTLE_PANEL_HOST, m_log.string()},
                             {{"QT_QPA_PLATFORM", "xcb"}});
    require("the host", [this] { return countOf("ready") == 1; });
  }

  long countOf(const std::string& start) const {
    std::ifstream log(m_log);
    long count = 0;
    for (std::string line; std::getline(log, line);) count += line.starts_with(start) ? 1 : 0;
    return count;
  }

  // The panel's rectangle when it was last opened.
  std::vector<int> lastPlace() const {
    std::ifstream log(m_log);
    std::vector<int> place;
    for (std::string line; std::getline(log, line);) {
      if (!line.starts_with("opened ")) continue;
      std::istringstream words(line.substr(7));
      place.assign(std::istream_iterator<int>(words), {});
    }
    return place;
  }

  void click(const std::string& x, const std::string& y) {
    ASSERT_TRUE(desktop.run({"xdotool", "mousemove", x, y, "click", "1"}));
  }

  // An icon comes into a tray some time after both are there: clicks until it answers.
  bool clickUntilOpened(long before) {
    return waitUntil([&] {
      desktop.run({"xdotool", "mousemove", iconPlace[0], iconPlace[1], "click", "1"});
      return waitUntil([&] { return countOf("opened ") > before; }, std::chrono::milliseconds(1500));
    });
  }

  std::filesystem::path m_log;
  Program* m_host = nullptr;
  Program* m_xfconf = nullptr;
};

TEST_F(Tray, AClickInXfceOpensThePanelUnderItAndClosesIt) {
  startXfcePanel();
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

TEST_F(Tray, TheIconIsBackAfterTheTrayRestarts) {
  Program& first = startXfcePanel();
  startHost();
  ASSERT_TRUE(clickUntilOpened(0));
  ASSERT_TRUE(desktop.run({"xdotool", "key", "Escape"}));
  first.kill();
  require("the end of the tray", [this] { return !desktop.hasBusName("org.kde.StatusNotifierWatcher"); });
  startXfcePanel();
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

TEST_F(Tray, WithNoTrayTheAppMenuOpensThePanel) {
  startHost();
  desktop.waitForBusName("com.halvo.vantle");
  ASSERT_TRUE(desktop.run({"gdbus", "call", "--session", "--dest", "com.halvo.vantle", "--object-path",
                           "/com/halvo/vantle", "--method", "org.freedesktop.Application.Activate", "{}"}));
  EXPECT_TRUE(waitUntil([this] { return countOf("opened ") == 1; }));
  // Another window that comes to the front closes it.
  desktop.activate(desktop.launch({testWindow(), "--title", "other"}));
  EXPECT_TRUE(waitUntil([this] { return countOf("closed") == 1; }));
}

} // namespace
