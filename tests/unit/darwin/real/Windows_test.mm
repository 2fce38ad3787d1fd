// SPDX-License-Identifier: MIT
#include "desktop/QtEventLoop.h"
#import "desktop/darwin/front/AppFront.h"
#import "desktop/darwin/heap/ZoneHeap.h"
#import "desktop/darwin/icons/BundleIcons.h"
#import "desktop/darwin/scheme/AppAppearance.h"
#import "desktop/darwin/tray/MenuBar.h"
#import "desktop/darwin/window/NativeWindow.h"
#import "desktop/darwin/window/PanelOverAll.h"
#include "platform/darwin/catalog/CocoaCatalog.h"
#include "platform/darwin/power/IokitPowerAssertions.h"
#include "platform/darwin/workspace/CocoaWorkspace.h"
#include "tests/unit/darwin/real/RealMac.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

namespace vantle {
namespace {

class RealWindows : public RealMac {
 protected:
  void SetUp() override {
    RealMac::SetUp();
    if (!IsSkipped() && qApp == nullptr) GTEST_SKIP() << "there is no session with windows here";
  }
  template <class Condition> static bool until(Condition holds) {
    const QDeadlineTimer guard(20'000);
    while (!holds() && !guard.hasExpired()) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return holds();
  }

  QtEventLoop loop;
};

TEST_F(RealWindows, AppsAreListed) {
  const CocoaWorkspace workspace;
  EXPECT_FALSE(workspace.runningApplications().empty());
  EXPECT_TRUE(CocoaCatalog().applicationForKey("com.apple.finder"));
  EXPECT_FALSE(CocoaCatalog().installedApplications().empty());
}

TEST_F(RealWindows, WhoKeepsTheMacAwakeIsAskedFor) {
  IokitPowerAssertions power;
  for (const auto& assertion : power.assertions()) EXPECT_GT(assertion.pid, 0);
}

TEST_F(RealWindows, AnIconHasAPicture) {
  const auto finder = CocoaCatalog().applicationForKey("com.apple.finder");
  ASSERT_TRUE(finder);
  const BundleIcons icons;
  for (const QString& source : {QString::fromStdString(finder->icon), icons.genericName()}) {
    const QImage picture = icons.pictureOf(source, 64);
    ASSERT_FALSE(picture.isNull()) << source.toStdString();
    EXPECT_GT(picture.pixelColor(32, 32).alpha(), 200) << source.toStdString();
    EXPECT_LT(picture.pixelColor(0, 0).alpha(), 50) << "its corner";
  }
}

TEST_F(RealWindows, TheAppearanceIsTheWantedOne) {
  AppAppearance scheme;
  int changes = 0;
  const auto observer = scheme.observe([&] { ++changes; });
  scheme.draw(true);
  EXPECT_TRUE(scheme.isDark());
  scheme.draw(false);
  EXPECT_FALSE(scheme.isDark());
  EXPECT_GT(changes, 0);
  scheme.draw(std::nullopt);
}

TEST_F(RealWindows, TheItemIsInTheMenuBar) {
  MenuBar bar(loop);
  std::optional<QRect> place;
  bool isClicked = false;
  const auto item = bar.add({.clicked =
                                 [&](std::optional<QRect> where) {
                                   isClicked = true;
                                   place = where;
                                 },
                             .middleClicked = [] {},
                             .menuWanted = [](QRect) {}});
  item->show({.picture = {}, .state = "Boost off", .symbol = "bolt"});
  item->offer({{.label = "A line", .chosen = [](auto) {}}, {}, {.label = "Only to be read"}});
  NSStatusBarButton* found = nil;
  for (NSWindow* window in [[NSApplication sharedApplication] windows]) {
    id const view = [window contentView];
    if ([view isKindOfClass:[NSStatusBarButton class]]) found = view;
    for (id each in [view subviews]) {
      if ([each isKindOfClass:[NSStatusBarButton class]]) found = each;
    }
  }
  if (found == nil) GTEST_SKIP() << "the button is not where it was looked for: please look for the bolt";
  [found performClick:nil];
  ASSERT_TRUE(until([&] { return isClicked; }));
  ASSERT_TRUE(place);
  EXPECT_LT(place->top(), 60) << "at the top of the screen";
  EXPECT_GT(place->width(), 0);
}

TEST_F(RealWindows, ThePanelIsOverFullScreenApps) {
  PanelOverAll surface(loop);
  AppFront front(loop);
  QWindow window;
  window.setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
  window.setGeometry(100, 100, 200, 100);
  front.take();
  surface.show(window);
  ASSERT_TRUE(until([&] { return window.isExposed(); }));
  NSWindow* const native = nativeWindow(window);
  ASSERT_NE(native, nil);
  EXPECT_EQ([native level], NSStatusWindowLevel);
  EXPECT_EQ([native collectionBehavior] & 0x101U, 0x101U);
  EXPECT_FALSE([native hidesOnDeactivate]);
  EXPECT_EQ(window.position(), QPoint(100, 100));
  surface.hide(window);
  EXPECT_TRUE(until([] { return ![[NSApplication sharedApplication] isActive]; }))
      << "the front is given back";
}

TEST_F(RealWindows, MemoryIsGivenBack) { ZoneHeap().trim(); }

} // namespace
} // namespace vantle
