// SPDX-License-Identifier: MIT
// What a screen reader is told about the panel.
#include "tests/unit/look/ScreenReader.h"
#include "tests/unit/panel/PanelFixture.h"

#include <gmock/gmock.h>

namespace vantle {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::IsSupersetOf;
using ::testing::Not;

class PanelAccessibility : public PanelFixture {
 protected:
  std::set<std::string> told() const { return ScreenReader::linesOf(panel.window()); }

  ScreenReader reader;
  SampleDesktop desktop;
};

TEST_F(PanelAccessibility, IdleTellsEveryText) {
  machine.processes.find(machine.host.self)->footprint = 48'200'000;
  desktop = openSampleDesktop(machine);
  machine.processes.find(machine.host.self)->footprint = 48'200'000;
  open();
  EXPECT_THAT(told(),
              IsSupersetOf({"text: vantle", "button: Settings", "heading: Ready to boost",
                            "text: Starts on its own for games and any app you add, like your editor.",
                            "text: Boost off", "text: In front: Web Browser", "button: Boost Web Browser now",
                            "button: Always boost Web Browser", "heading: Your Mac", "text: Memory pressure",
                            "text: Normal", "text: Vantle itself", "text: 46 MB memory",
                            "switch: Start Boost automatically, checked", "button: Quit Vantle"}));
  EXPECT_THAT(told(), Not(Contains("button: Turn off Boost")));
}

TEST_F(PanelAccessibility, BoostTellsEveryText) {
  desktop = openSampleDesktop(machine);
  machine.activate(desktop.game);
  open();
  EXPECT_THAT(told(),
              IsSupersetOf({"heading: Asteroids", "text: Boost on", "text: 4 in background",
                            "text: 1 protected", "text: Normal memory pressure", "heading: In background",
                            "heading: Memory", "list: In background", "row: Web Browser, 1.17 GB",
                            "row: Mail, 236 MB", "heading: Not touched", "list: Not touched",
                            "text: Music · playing audio", "button: Turn off Boost", "button: Quit Vantle"}));
  EXPECT_THAT(told(), Not(Contains("heading: Your Mac")));
}

TEST_F(PanelAccessibility, EmptyBackgroundIsTold) {
  machine.launch({.name = "Asteroids",
                  .bundlePath = "/games/asteroids.desktop",
                  .category = "public.app-category.games"},
                 Opening::inFront);
  open();
  EXPECT_THAT(told(), Contains("text: No apps in the background right now."));
  EXPECT_THAT(told(), Not(Contains("list: Not touched")));
}

TEST_F(PanelAccessibility, AScreenReaderPressesAndSwitches) {
  open();
  const auto press = [this](const QString& label, const QString& action) {
    QAccessibleInterface* item = QAccessible::queryAccessibleInterface(itemNamed(label));
    ASSERT_NE(item, nullptr);
    ASSERT_TRUE(item->actionInterface()->actionNames().contains(action)) << action.toStdString();
    item->actionInterface()->doAction(action);
  };
  press("Start Boost automatically", QAccessibleActionInterface::toggleAction());
  EXPECT_FALSE(engine.automatic.get());
  EXPECT_THAT(told(), Contains("switch: Start Boost automatically"));
  press("Settings", QAccessibleActionInterface::pressAction());
  EXPECT_EQ(settingsOpened, 1);
}

class PanelOnLinux : public PanelFixture {
 protected:
  PanelOnLinux() : PanelFixture(linuxWords) {}

  ScreenReader reader;
};

TEST_F(PanelOnLinux, SpeaksOfAComputer) {
  const SampleDesktop desktop = openSampleDesktop(machine);
  open();
  const std::set<std::string> idle = ScreenReader::linesOf(panel.window());
  EXPECT_THAT(idle, Contains("heading: Your computer"));
  EXPECT_THAT(idle, Each(ofNoMac()));
  machine.activate(desktop.game);
  EXPECT_THAT(ScreenReader::linesOf(panel.window()), Each(ofNoMac()));
}

} // namespace
} // namespace vantle
