// SPDX-License-Identifier: MIT
#include "look/HeapTrim.h"
#include "look/LookEngine.h"
#include "tests/unit/look/MemoryDefaults.h"

#include <QQmlComponent>
#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <malloc.h>
#include <memory>

namespace vantle {
namespace {

TEST(HeapTrim, TakesWhatTheThreadHasSetAside) {
  constexpr std::size_t size = 1000;
  if (mallinfo2().arena == 0) GTEST_SKIP() << "not the C library's own heap";
  trimHeap();
  std::array<void*, 7> blocks{};
  for (void*& block : blocks) block = std::malloc(size);
  for (void* block : blocks) std::free(block);
  const std::size_t before = mallinfo2().uordblks; // what is set aside counts as in use
  trimHeap();
  EXPECT_LE(mallinfo2().uordblks + blocks.size() * size, before);
}

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
};

TEST_F(Engines, OneGoesWithoutTheOther) {
  const auto window = std::make_unique<LookEngine>(settings);
  EXPECT_TRUE(draws(*window));
  {
    LookEngine panel(settings);
    EXPECT_TRUE(draws(panel));
  }
  giveMemoryBack();
  EXPECT_TRUE(draws(*window));
}

TEST_F(Engines, ANewOneKnowsEverythingAfterTheLastHasGone) {
  for (int times = 0; times < 3; ++times) {
    {
      LookEngine engine(settings);
      EXPECT_TRUE(draws(engine));
    }
    giveMemoryBack();
  }
}

} // namespace
} // namespace vantle
