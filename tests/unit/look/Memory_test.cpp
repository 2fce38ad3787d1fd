// SPDX-License-Identifier: MIT
#include "look/LookEngine.h"
#include "tests/unit/look/MemoryDefaults.h"
#include "tests/unit/look/PlainDesktop.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <gtest/gtest.h>
#include <memory>

namespace vantle {
namespace {

class Engines : public ::testing::Test {
 protected:
  static bool draws(LookEngine& engine) {
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nimport Vantle.Look\nWords { color: Look.accent }", QUrl());
    const std::unique_ptr<QObject> object(component.create());
    if (!object) qWarning("%s", qPrintable(component.errorString()));
    return object != nullptr;
  }

  MemoryDefaults defaults;
  AppSettings settings{defaults};
  PlainIcons icons;
  CountedHeap heap;
};

TEST_F(Engines, OneGoesWithoutTheOther) {
  const auto window = std::make_unique<LookEngine>(settings, icons, linuxWords);
  EXPECT_TRUE(draws(*window));
  {
    LookEngine panel(settings, icons, linuxWords);
    EXPECT_TRUE(draws(panel));
  }
  giveMemoryBack(heap);
  EXPECT_TRUE(draws(*window));
}

TEST_F(Engines, ANewOneKnowsEverythingAfterTheLastHasGone) {
  for (int times = 0; times < 3; ++times) {
    {
      LookEngine engine(settings, icons, linuxWords);
      EXPECT_TRUE(draws(engine));
    }
    giveMemoryBack(heap);
  }
}

TEST_F(Engines, TakeTheToolkitsFontsWithThemWhenTheLastGoes) {
  int forgotten = 0;
  const auto connection = QObject::connect(qGuiApp, &QGuiApplication::fontDatabaseChanged, qGuiApp,
                                           [&forgotten] { ++forgotten; });
  {
    LookEngine engine(settings, icons, linuxWords);
    EXPECT_TRUE(draws(engine));
    giveMemoryBack(heap);
    EXPECT_EQ(forgotten, 0) << "they are in use";
  }
  giveMemoryBack(heap);
  EXPECT_GT(forgotten, 0);
  QObject::disconnect(connection);
}

} // namespace
} // namespace vantle
