// SPDX-License-Identifier: MIT
#include "look/KeptWindow.h"

#include "look/LookEngine.h"
#include "tests/unit/look/MemoryDefaults.h"
#include "tests/unit/look/PlainDesktop.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QPointer>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vantle {
namespace {

using std::chrono::milliseconds;

class CountedWindow final : public KeptWindow {
 public:
  explicit CountedWindow(const WindowParts& parts) : KeptWindow(parts, milliseconds(0)) {}

  void open() { keep(); }
  void close() { releaseLater(); }

  std::vector<std::string>* said = nullptr;
  int made = 0;
  int destroyed = 0;
  int renewed = 0;
  QPointer<LookEngine> engine;

 private:
  void make(LookEngine& views) override {
    ++made;
    if (said != nullptr) said->emplace_back("made");
    engine = &views;
  }
  void destroy() override {
    EXPECT_FALSE(engine.isNull()) << "it outlives the window";
    ++destroyed;
  }
  void renew(LookEngine&) override { ++renewed; }
};

class CountedFront final : public Front {
 public:
  explicit CountedFront(std::vector<std::string>& said) : m_said(said) {}
  void take() override { m_said.emplace_back("front"); }

 private:
  std::vector<std::string>& m_said;
};

class Kept : public testing::Test {
 protected:
  void waitForRelease() {
    const int before = heap.trims;
    while (heap.trims == before) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }

  MemoryDefaults defaults;
  AppSettings settings{defaults};
  PlainIcons icons;
  CountedHeap heap;
  CountedWindow window{{settings, icons, heap, linuxWords}};
};

TEST_F(Kept, WindowIsMadeWhenItIsFirstOpenedAndGoneAWhileAfterItWasClosed) {
  EXPECT_FALSE(window.holdsMemory());
  for (int times = 1; times <= 3; ++times) {
    window.open();
    EXPECT_EQ(window.made, times);
    EXPECT_TRUE(window.holdsMemory());
    window.close();
    EXPECT_TRUE(window.holdsMemory());
    waitForRelease();
    EXPECT_EQ(window.destroyed, times);
    EXPECT_FALSE(window.holdsMemory());
    EXPECT_TRUE(window.engine.isNull());
    EXPECT_EQ(heap.trims, times);
  }
}

TEST_F(Kept, WindowThatIsWantedAgainInTimeIsTheSame) {
  window.open();
  window.close();
  window.open();
  QCoreApplication::processEvents();
  EXPECT_EQ(window.made, 1);
  EXPECT_EQ(window.destroyed, 0);
  EXPECT_TRUE(window.holdsMemory());
}

TEST_F(Kept, WindowComesForwardByItsAppWhereDesktopsWantIt) {
  std::vector<std::string> said;
  CountedFront front(said);
  CountedWindow other{{settings, icons, heap, linuxWords, &front}};
  other.said = &said;
  EXPECT_EQ(said, std::vector<std::string>{});
  other.open();
  EXPECT_EQ(said, (std::vector<std::string>{"front", "made"}));
  other.open();
  EXPECT_EQ(said, (std::vector<std::string>{"front", "made", "front"})) << "it may be behind other apps";
}

TEST_F(Kept, WindowIsDrawnAnewWithAnotherFontAndOnlyThen) {
  const QFont before = QGuiApplication::font();
  QFont other = before;
  other.setPointSize(before.pointSize() + 7);
  const auto use = [](const QFont& font) {
    QGuiApplication::setFont(font);
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
  };
  use(other);
  EXPECT_EQ(window.renewed, 0) << "there is none";
  window.open();
  use(before);
  EXPECT_EQ(window.renewed, 1);
  use(before);
  EXPECT_EQ(window.renewed, 1);
}

} // namespace
} // namespace vantle
