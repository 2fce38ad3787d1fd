// SPDX-License-Identifier: MIT
// The panel and the tray's words in another language, which is longer.
#include "look/Notices.h"
#include "tests/unit/look/PseudoLanguage.h"
#include "tests/unit/look/ScreenReader.h"
#include "tests/unit/panel/PanelFixture.h"

namespace vantle {
namespace {

class PanelTranslated : public PanelFixture {
 protected:
  void expectTranslated() const {
    PseudoLanguage::expectEverywhere(
        *panel.window()->view(), {"vantle", "Asteroids", "Web Browser", "1.17 GB", "Chat", "347 MB", "Mail",
                                  "236 MB", "Text Editor", "58 MB", "Music \u00B7 playing audio"});
  }

  PseudoLanguage language;
  SampleDesktop desktop;
};

TEST_F(PanelTranslated, HasRoomForEveryTextAndMissesNone) {
  desktop = openSampleDesktop(machine);
  engine.startPause(std::chrono::minutes(30));
  open();
  expectTranslated();
  for (const int level : {2, 4}) {
    panel.close();
    machine.pressure.kernelLevel = level;
    open();
    expectTranslated();
  }
  engine.endPause();
  machine.activate(desktop.game);
  expectTranslated();
  EXPECT_TRUE(panel.window()->model().leftAlone().startsWith("[On your list: Music"));
}

TEST(Notices, AreTranslatedAndNameTheSamePlaces) {
  EXPECT_EQ(noticeWords(), NoticeWords()) << "without another language";
  const PseudoLanguage language;
  const NoticeWords words = noticeWords();
  for (const std::string& text : {words.almostFull, words.runningLow, words.usingMost, words.quitting})
    EXPECT_TRUE(text.starts_with("[")) << text;
  for (const std::string& text : {words.usingMost, words.quitting})
    EXPECT_NE(text.find("%1"), std::string::npos) << text;
}

TEST_F(PanelTranslated, IsSoInTheIconsMenuToo) {
  panel.toggleMenu({10, 4, 22, 22},
                   {{.label = "[Boost onoo]"}, {.label = "[Start Boost automaticallyoooooo oo]"}});
  PseudoLanguage::expectEverywhere(*panel.menu().window()->contentItem(), {});
}

} // namespace
} // namespace vantle
