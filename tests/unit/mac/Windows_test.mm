// SPDX-License-Identifier: MIT
#import "desktop/darwin/front/AppFront.h"
#import "desktop/darwin/window/NativeWindow.h"
#import "desktop/darwin/window/PanelOverAll.h"
#import "tests/unit/mac/MacFixture.h"
#include "tests/unit/panel/PanelFixture.h"

#include <QGuiApplication>
#include <QScreen>

namespace vantle {
namespace {

constexpr NSInteger overBars = 25;
constexpr NSInteger overOwnWindows = 3; // where the toolkit puts tool windows
constexpr NSUInteger everySpaceAndOverFullScreen = 0x101;

// The toolkit says what it wants of a window when it shows it.
class ToolkitsMind final : public QObject {
 public:
  explicit ToolkitsMind(StandInAppKit& appKit) : m_appKit(appKit) { qApp->installEventFilter(this); }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Show) {
      NSWindow* const native = m_appKit.windowOf(static_cast<QWindow*>(watched));
      m_appKit.levelWhenShown = [native level];
      m_appKit.behaviourWhenShown = [native collectionBehavior];
      m_appKit.wasSeenWhenShown = m_appKit.canBeSeen(native);
      m_appKit.calls.emplace_back("shown");
      [native setLevel:overOwnWindows];
      [native setCollectionBehavior:0];
      [native setHidesOnDeactivate:YES];
    }
    return false;
  }

 private:
  StandInAppKit& m_appKit;
};

// A window that counts the clicks outside of it.
class ClickedWindow final : public QWindow {
 public:
  int clicksElsewhere = 0;

 protected:
  void mousePressEvent(QMouseEvent* event) override {
    if (!QRect(QPoint(), size()).contains(event->position().toPoint())) ++clicksElsewhere;
  }
};

class PanelOverAllTest : public MacTest {
 protected:
  ToolkitsMind toolkit{appKit};
  PanelOverAll surface{loop};
  ClickedWindow window;
};

TEST_F(PanelOverAllTest, IsOverFullScreenAppsInEverySpaceWhateverTheToolkitThinks) {
  surface.show(window);
  NSWindow* const native = nativeWindow(window);
  EXPECT_EQ(appKit.levelWhenShown, overBars);
  EXPECT_EQ(appKit.behaviourWhenShown, everySpaceAndOverFullScreen);
  EXPECT_EQ([native level], overBars);
  EXPECT_EQ([native collectionBehavior], everySpaceAndOverFullScreen);
  surface.hide(window);
  EXPECT_FALSE(window.isVisible());
}

TEST_F(PanelOverAllTest, IsSeenThoughTheSystemLeavesAnotherAppInFront) {
  surface.show(window);
  EXPECT_FALSE(appKit.isActive);
  EXPECT_TRUE(appKit.wasSeenWhenShown);
  EXPECT_TRUE(appKit.canBeSeen(nativeWindow(window)));
  surface.hide(window);
}

TEST_F(PanelOverAllTest, StandsWhereItIsPut) {
  QScreen& screen = *QGuiApplication::primaryScreen();
  surface.place(window, screen, {100, 0, 30, 24}, {50, 30, 360, 200});
  EXPECT_EQ(window.geometry(), QRect(50, 30, 360, 200));
  EXPECT_EQ(surface.roomOn(screen), screen.availableSize());
  EXPECT_TRUE(surface.isTranslucent());
}

TEST_F(PanelOverAllTest, HearsOfPressesElsewhereAndOnlyWhileItIsShown) {
  EXPECT_EQ(appKit.monitored(), 0U);
  surface.show(window);
  EXPECT_EQ(appKit.monitored(), (1ULL << 1) | (1ULL << 3) | (1ULL << 25));
  surface.show(window);
  EXPECT_EQ(appKit.callsOf("shown").size(), 1U) << "once is enough";
  appKit.pressElsewhere();
  EXPECT_EQ(window.clicksElsewhere, 0) << "the system waits";
  turn();
  EXPECT_EQ(window.clicksElsewhere, 1);
  appKit.pressElsewhere();
  surface.hide(window);
  turn();
  EXPECT_EQ(window.clicksElsewhere, 1) << "it has gone";
  EXPECT_EQ(appKit.monitored(), 0U);
  EXPECT_EQ(appKit.callsOf("removed"), Calls{});
}

TEST_F(PanelOverAllTest, LeavesNoMonitorBehind) {
  {
    PanelOverAll other(loop);
    other.show(window);
    EXPECT_NE(appKit.monitored(), 0U);
  }
  EXPECT_EQ(appKit.monitored(), 0U);
}

class AppFrontTest : public MacTest {
 protected:
  static bool focus(QWindow& window) {
    window.show();
    window.requestActivate();
    for (int times = 0; times < 100 && QGuiApplication::focusWindow() != &window; ++times) turn();
    return QGuiApplication::focusWindow() == &window;
  }

  AppFront front{loop};
};

TEST_F(AppFrontTest, IsTakenWhateverOtherAppsDo) {
  front.take();
  EXPECT_EQ(appKit.calls, Calls{"activate"});
  appKit.calls.clear();
  appKit.isHidden = true;
  front.take();
  EXPECT_EQ(appKit.calls, (Calls{"unhide", "activate"}));
}

TEST_F(AppFrontTest, IsGivenBackWithTheLastWindow) {
  QWindow panel;
  QWindow settings;
  front.take();
  ASSERT_TRUE(focus(panel));
  panel.hide();
  ASSERT_TRUE(focus(settings)) << "which the panel has opened";
  turn();
  EXPECT_EQ(appKit.calls, Calls{"activate"});
  settings.hide();
  turn();
  EXPECT_EQ(appKit.calls, (Calls{"activate", "hide"}));
}

TEST_F(AppFrontTest, IsNotGivenBackByAnAppThatHasItNotAnyMore) {
  QWindow panel;
  front.take();
  ASSERT_TRUE(focus(panel));
  appKit.isActive = false; // the person has turned to another app
  panel.hide();
  turn();
  EXPECT_EQ(appKit.calls, Calls{"activate"});
}

class PanelInFront : public PanelFixture {
 protected:
  ~PanelInFront() override { [m_pool release]; }

  StandInAppKit appKit;

 private:
  NSAutoreleasePool* m_pool = [[NSAutoreleasePool alloc] init];
};

TEST_F(PanelInFront, TheAppComesForwardBeforeItsPanel) {
  QtEventLoop loop;
  AppFront front(loop);
  ToolkitsMind toolkit(appKit);
  PanelOverAll overAll(loop);
  PanelController controller(
      engine, {settings, icons, heap, words, &front}, overAll, [] {}, [] {});
  controller.show();
  EXPECT_EQ(appKit.calls, (Calls{"activate", "shown"}));
  EXPECT_EQ(appKit.levelWhenShown, overBars);
  ASSERT_TRUE(until([&] { return QGuiApplication::focusWindow() == controller.window(); }));
  appKit.pressElsewhere();
  ASSERT_TRUE(until([&] { return !controller.isOpen(); }));
  ASSERT_TRUE(until([&] { return !appKit.callsOf("hide").empty(); }));
  EXPECT_EQ(appKit.callsOf("removed"), Calls{});
}

} // namespace
} // namespace vantle
