// SPDX-License-Identifier: MIT
// The panel on a Wayland desktop with a layer shell: where it is, as the desktop's own pictures show it, and
// when it goes; with a real bar, pointer and keyboard.
#include "desktop/linux/wayland/LayerSurface.h"
#include "platform/posix/Descriptor.h"
#include "tests/desktop/HostedPanel.h"
#include "tests/support/NamedSocket.h"
#include "tests/support/Picture.h"
#include "tests/support/SwayDesktop.h"
#include "tests/support/VirtualDesktop.h"

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <unistd.h>
#include <utility>

namespace vantle::desktop {
namespace {

constexpr int screenWidth = 1280;
constexpr int screenHeight = 800;
constexpr int barHeight = 30;
constexpr int gap = 4;
constexpr int panelWidth = 360;

// A bar with a tray, whose one icon is at its right end.
std::string bar(const std::string& position) {
  return "bar {\n position " + position + "\n height " + std::to_string(barHeight) +
         "\n tray_output *\n status_command none\n workspace_buttons no\n}\n";
}

class LayerPanel : public testing::Test, public HostedPanel {
 protected:
  void startDesktop(const std::string& configuration, int screens = 1) {
    SwayDesktop::Options options;
    options.screens = screens;
    options.configuration = configuration;
    m_desktop = std::make_unique<SwayDesktop>(options);
    m_desktop->addPointer();
    m_desktop->addKeyboard();
  }
  void startHost() { HostedPanel::startHost(*m_desktop, {}); }

  // An icon comes into a tray some time after both are there: clicks until it answers.
  bool clickUntilOpened(int x, int y) {
    const long before = countOf("opened ");
    return waitUntil([&] {
      m_desktop->click(x, y);
      return waitUntil([&] { return countOf("opened ") > before; }, std::chrono::milliseconds(1500));
    });
  }
  // What lies under the panel hears of clicks a moment after it is shown.
  bool clickUntilClosed(int x, int y) {
    const long before = countOf("closed");
    return waitUntil([&] {
      m_desktop->click(x, y);
      return waitUntil([&] { return countOf("closed") > before; }, std::chrono::milliseconds(1500));
    });
  }
  bool pressUntilClosed(const char* key) {
    const long before = countOf("closed");
    return waitUntil([&] {
      m_desktop->press(key);
      return waitUntil([&] { return countOf("closed") > before; }, std::chrono::milliseconds(1500));
    });
  }
  // As an app menu does.
  bool activate() { return m_desktop->callApplication("Activate"); }
  bool openByMenu() {
    const long before = countOf("opened ");
    return activate() && waitUntil([&] { return countOf("opened ") > before; });
  }

  // Bars draw, and panels are shown, some time after they are there.
  Picture stillPicture() {
    Picture last = m_desktop->picture();
    require("a picture that stays", [&] {
      const Picture before = std::exchange(last, m_desktop->picture());
      return changedArea(before, last) == Area{};
    });
    return last;
  }
  // Of the panel that is open, by what is different when it is closed.
  Area panelArea() {
    const Picture open = stillPicture();
    EXPECT_TRUE(pressUntilClosed("Escape"));
    Area area;
    require("the panel's end", [&] { return (area = changedArea(open, stillPicture())).width() > 1; });
    return area;
  }

  std::unique_ptr<SwayDesktop> m_desktop;
};

constexpr int iconX = screenWidth - 16;
constexpr int topIconY = 15;
constexpr int bottomIconY = screenHeight - 15;

TEST_F(LayerPanel, OpensAtTheIconUnderABarAtTheTop) {
  startDesktop(bar("top"));
  startHost();
  ASSERT_TRUE(clickUntilOpened(iconX, topIconY));
  const Area area = panelArea();
  EXPECT_EQ(area.top, barHeight + gap);
  EXPECT_EQ(area.right, screenWidth - gap - 1);
  EXPECT_EQ(area.width(), panelWidth);
}

TEST_F(LayerPanel, OpensAtTheIconOverABarAtTheBottom) {
  startDesktop(bar("bottom"));
  startHost();
  ASSERT_TRUE(clickUntilOpened(iconX, bottomIconY));
  const Area area = panelArea();
  EXPECT_EQ(area.bottom, screenHeight - barHeight - gap - 1);
  EXPECT_EQ(area.right, screenWidth - gap - 1);
  EXPECT_EQ(area.width(), panelWidth);
}

TEST_F(LayerPanel, FromAMenuIsInTheCornerWhereTraysAre) {
  startDesktop({});
  startHost();
  ASSERT_TRUE(openByMenu());
  ASSERT_TRUE(openByMenu()) << "again, while it is open";
  EXPECT_EQ(countOf("closed"), 0);
  const Area area = panelArea();
  EXPECT_EQ(area.top, gap);
  EXPECT_EQ(area.right, screenWidth - gap - 1);
  EXPECT_EQ(area.width(), panelWidth);
}

TEST_F(LayerPanel, HasAnIconThatCanBeReadOnTheBlackBar) {
  startDesktop(bar("bottom"));
  startHost();
  const auto isLight = [](std::uint32_t pixel) {
    return (pixel & 0xffU) > 0xc0 && (pixel >> 8U & 0xffU) > 0xc0 && pixel >> 16U > 0xc0;
  };
  EXPECT_TRUE(waitUntil([&] {
    const Picture now = m_desktop->picture();
    for (int y = screenHeight - barHeight; y < screenHeight; ++y) {
      for (int x = screenWidth - barHeight; x < screenWidth; ++x) {
        if (isLight(now.pixel(x, y))) return true;
      }
    }
    return false;
  }));
}

// The toolkit would ask it about frames of windows, for 10 MB.
TEST_F(LayerPanel, AsksNoGraphicsDriver) {
  startDesktop({});
  startHost();
  ASSERT_TRUE(openByMenu());
  std::ifstream maps("/proc/" + std::to_string(m_host->pid()) + "/maps");
  const std::string libraries{std::istreambuf_iterator<char>(maps), {}};
  EXPECT_NE(libraries.find("libQt6WaylandClient"), std::string::npos);
  EXPECT_EQ(libraries.find("wayland-graphics-integration-client"), std::string::npos);
}

TEST_F(LayerPanel, TakesClicksAndGoesAtOneAnywhereElse) {
  startDesktop(bar("bottom"));
  Program& terminal = m_desktop->launch({"foot"});
  startHost();
  m_desktop->waitForWindow(terminal.pid());
  ASSERT_TRUE(clickUntilOpened(iconX, bottomIconY));
  EXPECT_TRUE(clickUntilClosed(400, 300)) << "in an app's window";
  ASSERT_TRUE(clickUntilOpened(iconX, bottomIconY));
  EXPECT_TRUE(clickUntilClosed(400, bottomIconY)) << "in the bar";
  terminal.kill();
  require("the end of the app", [&] { return m_desktop->windows().empty(); });
  ASSERT_TRUE(clickUntilOpened(iconX, bottomIconY));
  EXPECT_TRUE(clickUntilClosed(400, 300)) << "on the empty desktop";
  ASSERT_TRUE(clickUntilOpened(iconX, bottomIconY));
  EXPECT_TRUE(clickUntilClosed(iconX, bottomIconY)) << "on its own icon";

  ASSERT_TRUE(clickUntilOpened(iconX, bottomIconY));
  const Area area = panelArea();
  ASSERT_TRUE(clickUntilOpened(iconX, bottomIconY));
  const Picture before = stillPicture();
  const long closed = countOf("closed");
  m_desktop->click(area.right - 28, area.bottom - 57); // the switch
  require("the switch moves", [&] { return changedArea(before, m_desktop->picture()).width() > 1; });
  EXPECT_EQ(countOf("closed"), closed);
  m_desktop->click(area.left + panelWidth / 2, area.bottom - 22); // its last line
  require("the end", [&] { return countOf("quit") == 1; });
  EXPECT_EQ(m_host->exitStatus(), 0);
}

TEST_F(LayerPanel, GoesOnEscape) {
  startDesktop(bar("top"));
  startHost();
  for (int time = 0; time < 3; ++time) {
    ASSERT_TRUE(clickUntilOpened(iconX, topIconY));
    EXPECT_TRUE(pressUntilClosed("Escape"));
  }
}

TEST_F(LayerPanel, GoesWhenSomethingElseTakesTheKeyboard) {
  startDesktop(bar("top"));
  startHost();
  ASSERT_TRUE(clickUntilOpened(iconX, topIconY));
  EXPECT_EQ(countOf("closed"), 0);
  m_desktop->launch({"swaylock"}); // which lets the compositor give it back at once
  EXPECT_TRUE(waitUntil([this] { return countOf("closed") == 1; }));
  EXPECT_TRUE(m_host->isRunning());
}

// The panel is higher than what the bar leaves of the screen.
TEST_F(LayerPanel, StaysOffTheBarOnASmallScreenAndIsSharpAtScaleTwo) {
  startDesktop("output * scale 2\n" + bar("bottom"));
  HostedPanel::startHost(*m_desktop, {{"WAYLAND_DEBUG", "client"}});
  ASSERT_TRUE(clickUntilOpened(iconX, bottomIconY));
  const Area area = panelArea();
  EXPECT_EQ(area.width(), 2 * panelWidth);
  EXPECT_EQ(area.top, 2 * gap);
  EXPECT_EQ(area.bottom, screenHeight - 2 * (barHeight + gap) - 1);
  std::ifstream log(m_log);
  const std::string said{std::istreambuf_iterator<char>(log), {}};
  EXPECT_NE(said.find("0, " + std::to_string(2 * panelWidth) + ", "), std::string::npos)
      << "drawn with the pixels of the screen";
}

TEST_F(LayerPanel, OpensOnTheScreenOfTheIconAndGoesAtAClickOnAnother) {
  startDesktop("output HEADLESS-1 position 0 0\noutput HEADLESS-2 position 1280 0\n" + bar("bottom"), 2);
  startHost();
  ASSERT_EQ(m_desktop->picture().width(), 2 * screenWidth);
  ASSERT_TRUE(clickUntilOpened(screenWidth + iconX, bottomIconY));
  EXPECT_EQ(panelArea().right, 2 * screenWidth - gap - 1);
  ASSERT_TRUE(clickUntilOpened(screenWidth + iconX, bottomIconY));
  EXPECT_TRUE(clickUntilClosed(400, 300));
  ASSERT_TRUE(clickUntilOpened(iconX, bottomIconY));
  EXPECT_EQ(panelArea().right, screenWidth - gap - 1);
  ASSERT_TRUE(clickUntilOpened(iconX, bottomIconY));
  EXPECT_TRUE(clickUntilClosed(screenWidth + 400, 300));
}

TEST_F(LayerPanel, GoesWithItsScreen) {
  startDesktop("output HEADLESS-1 position 0 0\noutput HEADLESS-2 position 1280 0\n" + bar("bottom"), 2);
  startHost();
  ASSERT_TRUE(clickUntilOpened(screenWidth + iconX, bottomIconY));
  if (!m_desktop->command("output HEADLESS-2 unplug")) GTEST_SKIP() << "this sway keeps its screens";
  EXPECT_TRUE(waitUntil([this] { return countOf("closed") == 1; }));
  EXPECT_TRUE(openByMenu());
  EXPECT_TRUE(m_host->isRunning());
}

// Nothing can be shown then; the program goes on with everything else.
TEST_F(LayerPanel, WaitsForNoCompositorThatHangs) {
  startDesktop({});
  startHost();
  m_desktop->compositor().signal(SIGSTOP);
  for (int time = 0; time < 3; ++time) {
    const long before = countOf("closed");
    ASSERT_TRUE(activate());
    EXPECT_TRUE(waitUntil([&] { return countOf("closed") > before; }));
    EXPECT_TRUE(tells("boost"));
  }
  m_desktop->compositor().signal(SIGCONT);
  EXPECT_TRUE(openByMenu());
  EXPECT_TRUE(m_host->isRunning());
}

class ToolkitChoice : public testing::Test, public HostedPanel {};

TEST_F(ToolkitChoice, IsWaylandWhereItsWindowsCanHaveAPlace) {
  SwayDesktop desktop;
  startHost(desktop, {});
  EXPECT_EQ(countOf("ready wayland"), 1);
}

TEST_F(ToolkitChoice, IsThePersonsOwn) {
  SwayDesktop desktop;
  startHost(desktop, {{"QT_QPA_PLATFORM", "xcb"}});
  EXPECT_EQ(countOf("ready xcb"), 1);
}

TEST_F(ToolkitChoice, IsWaylandWhereThereIsNoXServer) {
  SwayDesktop desktop;
  startHost(desktop, {{"DISPLAY", ""}});
  EXPECT_EQ(countOf("ready wayland"), 1);
}

TEST_F(ToolkitChoice, WaitsForNoCompositorThatHangs) {
  VirtualDesktop desktop;
  const auto path = desktop.runtimeDir() / "wayland-9";
  const Descriptor silent(listeningSocket(path.string()));
  ASSERT_TRUE(silent);
  startHost(desktop, {{"WAYLAND_DISPLAY", "wayland-9"}});
  EXPECT_EQ(countOf("ready xcb"), 1);
}

TEST_F(ToolkitChoice, IsTheXServerWhereTheCompositorIsGone) {
  VirtualDesktop desktop;
  startHost(desktop, {{"WAYLAND_DISPLAY", "wayland-9"}});
  EXPECT_EQ(countOf("ready xcb"), 1);
}

TEST(PanelLayerPlace, IsAtTheEdgeOfTheBarThatTheIconIsIn) {
  constexpr std::uint32_t top = 1;
  constexpr std::uint32_t bottom = 2;
  constexpr std::uint32_t left = 4;
  constexpr std::uint32_t right = 8;
  const QSize size(360, 470);
  const QRect screen(1280, 0, 1280, 800);
  const QSize underBar(1280, 770);
  const QSize besideBar(1240, 800);
  const auto icon = [](int x, int y) { return QRect(1280 + x, y, 1, 1); };
  EXPECT_EQ(panelLayerPlace(icon(640, 10), size, screen, underBar),
            (LayerPlace{.edges = top | left, .top = 4, .left = 460}));
  EXPECT_EQ(panelLayerPlace(icon(640, 790), size, screen, underBar),
            (LayerPlace{.edges = bottom | left, .bottom = 4, .left = 460}));
  EXPECT_EQ(panelLayerPlace(icon(1270, 790), size, screen, underBar),
            (LayerPlace{.edges = bottom | left, .bottom = 4, .left = 916}));
  EXPECT_EQ(panelLayerPlace(icon(3, 10), size, screen, underBar),
            (LayerPlace{.edges = top | left, .top = 4, .left = 4}));
  EXPECT_EQ(panelLayerPlace(icon(20, 400), size, screen, besideBar),
            (LayerPlace{.edges = top | left, .top = 165, .left = 4}));
  EXPECT_EQ(panelLayerPlace(icon(1260, 790), size, screen, besideBar),
            (LayerPlace{.edges = top | right, .top = 326, .right = 4}));
}

} // namespace
} // namespace vantle::desktop
