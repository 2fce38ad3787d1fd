// SPDX-License-Identifier: MIT
// The program itself as a person has it: its icon in a real tray, the panel, the settings window, and what a
// screen reader is told of them; clicked with a real pointer among real apps.
#include "tests/support/AccessibleTree.h"
#include "tests/support/KernelState.h"
#include "tests/support/Props.h"
#include "tests/support/XfceTray.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace vantle::desktop {
namespace {

constexpr const char* app = "vantle";

class Shell : public testing::Test {
 protected:
  Shell() {
    desktop.installDesktopFile(
        "org.example.Editor",
        "[Desktop Entry]\nType=Application\nName=Editor\nExec=true\nStartupWMClass=Editor\n");
    desktop.installDesktopFile(
        "org.example.Mail", "[Desktop Entry]\nType=Application\nName=Mail\nExec=true\nStartupWMClass=Mail\n");
    desktop.setEnvironment("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    desktop.setEnvironment("QT_QPA_PLATFORM", "xcb");
    tray.start();
  }

  void startVantle() {
    m_vantle = &desktop.launch({VANTLE_PROGRAM});
    require("Vantle", [&] { return desktop.hasBusName("com.halvo.vantle") || !m_vantle->isRunning(); });
    ASSERT_TRUE(m_vantle->isRunning()) << *m_vantle->exitStatus();
  }
  void endVantle() {
    m_vantle->signal(SIGTERM);
    ASSERT_EQ(m_vantle->exitStatus(), 0);
  }

  void clickAt(int x, int y) {
    ASSERT_TRUE(
        desktop.run({"xdotool", "mousemove", "--sync", std::to_string(x), std::to_string(y), "click", "1"}));
  }
  void click(const std::string& name) {
    std::optional<AccessibleTree::Node> found;
    // Where it was twice in a row: windows are placed, and then sometimes placed again.
    require(("there is " + name).c_str(), [&] {
      const auto before = found;
      found = tree.control(app, name);
      return before && found && before->x == found->x && before->y == found->y;
    });
    clickAt(found->x, found->y);
  }
  bool becomesShown(const std::string& name) {
    return waitUntil([&] { return tree.shows(app, name); });
  }
  bool becomesHidden(const std::string& name) {
    return waitUntil([&] { return !tree.shows(app, name); });
  }
  bool isChecked(const std::string& name) {
    const auto found = tree.control(app, name);
    return found && found->isChecked();
  }
  // An icon comes into a tray some time after both are there: clicks until it answers.
  void openPanel() {
    require("the panel", [&] {
      desktop.run({"xdotool", "mousemove", std::to_string(XfceTray::iconX), std::to_string(XfceTray::iconY),
                   "click", "1"});
      return waitUntil([&] { return tree.shows(app, "Quit Vantle"); }, std::chrono::milliseconds(1500));
    });
  }

  std::string storedSettings() const {
    std::ifstream file(desktop.configHome() / "com.halvo.vantle/defaults.json");
    return {std::istreambuf_iterator<char>(file), {}};
  }
  bool becomesStored(const std::string& part) {
    return waitUntil([&] { return storedSettings().find(part) != std::string::npos; });
  }

  Program& appOf(const char* windowClass) {
    Program& program = desktop.launch({testWindow(), "--class", windowClass, "--title", windowClass});
    desktop.waitForWindow(program.pid());
    return program;
  }

  VirtualDesktop desktop;
  AccessibleTree tree{desktop};
  XfceTray tray{desktop};
  Program* m_vantle = nullptr;
};

TEST_F(Shell, ASwitchIsFoundFromTheTrayAndSurvivesARestart) {
  startVantle();
  openPanel();
  EXPECT_TRUE(tree.shows(app, "Ready to boost"));
  click("Settings");
  desktop.waitForWindowTitled("Vantle Settings");
  EXPECT_TRUE(becomesHidden("Quit Vantle"));
  click("Updates");
  ASSERT_TRUE(becomesShown("Check for updates automatically"));
  EXPECT_TRUE(isChecked("Check for updates automatically"));
  click("Check for updates automatically");
  EXPECT_TRUE(becomesStored("\"checkUpdatesAutomatically\": false")) << storedSettings();
  EXPECT_TRUE(waitUntil([&] { return !isChecked("Check for updates automatically"); }));
  endVantle();

  startVantle();
  openPanel();
  click("Settings");
  desktop.waitForWindowTitled("Vantle Settings");
  click("Updates");
  ASSERT_TRUE(becomesShown("Check for updates automatically"));
  EXPECT_FALSE(isChecked("Check for updates automatically"));
  EXPECT_TRUE(becomesShown("Not checked yet"));
  click("Check Now");
  EXPECT_TRUE(becomesShown("Update checks aren't set up in this build."));
}

TEST_F(Shell, TheSettingsAreDrawnAsFrugallyWhenTheyAreTheFirstToOpen) {
  startVantle();
  ASSERT_TRUE(desktop.callApplication("ActivateAction", {"settings", "[]", "{}"}));
  ASSERT_TRUE(becomesShown("Boost these apps"));
  std::ifstream maps("/proc/" + std::to_string(m_vantle->pid()) + "/maps");
  const std::string loaded{std::istreambuf_iterator<char>(maps), {}};
  EXPECT_NE(loaded.find("libQt6Quick"), std::string::npos);
  EXPECT_EQ(loaded.find("_dri.so"), std::string::npos) << "it loaded a graphics driver";
  EXPECT_EQ(loaded.find("libpulse"), std::string::npos) << "it asked nobody who plays";
}

TEST_F(Shell, ThePanelStartsAndEndsABoost) {
  Program& mail = appOf("Mail");
  startVantle();
  Program& editor = appOf("Editor");
  desktop.activate(editor);
  openPanel();
  ASSERT_TRUE(becomesShown("In front: Editor"));
  click("Boost Editor now");
  EXPECT_TRUE(waitUntil([&] { return isSlowed(mail.pid()); }));
  EXPECT_TRUE(isAtFullSpeed(editor.pid()));
  EXPECT_TRUE(becomesShown("Boost on"));
  EXPECT_TRUE(waitUntil([&] { return tree.lists(app, "Mail"); }));
  click("Turn off Boost");
  EXPECT_TRUE(waitUntil([&] { return isAtFullSpeed(mail.pid()); }));
  EXPECT_TRUE(becomesShown("Ready to boost"));
}

TEST_F(Shell, ALineOfThePanelBringsItsAppToTheFrontAndProtectsIt) {
  Program& mail = appOf("Mail");
  startVantle();
  Program& editor = appOf("Editor");
  desktop.activate(editor);
  openPanel();
  click("Boost Editor now");
  ASSERT_TRUE(waitUntil([&] { return isSlowed(mail.pid()); }));
  const auto choose = [&](const char* entry) {
    std::optional<AccessibleTree::Node> line;
    require("Mail's line", [&] {
      for (AccessibleTree::Node& node : tree.shownBy(app)) {
        if (node.name.starts_with("Mail, ")) line = std::move(node);
      }
      return line.has_value();
    });
    ASSERT_TRUE(desktop.run(
        {"xdotool", "mousemove", "--sync", std::to_string(line->x), std::to_string(line->y), "click", "3"}));
    click(entry);
  };
  choose("Bring to front");
  const std::uint32_t window = desktop.waitForWindow(mail.pid()).id;
  EXPECT_TRUE(waitUntil([&] { return desktop.windows().active() == window; }));
  EXPECT_TRUE(waitUntil([&] { return isAtFullSpeed(mail.pid()); }));
  desktop.activate(editor);
  ASSERT_TRUE(waitUntil([&] { return isSlowed(mail.pid()); }));
  openPanel();
  choose("Never slow down");
  EXPECT_TRUE(waitUntil([&] { return isAtFullSpeed(mail.pid()); }));
  EXPECT_TRUE(becomesStored("org.example.Mail")) << storedSettings();
  EXPECT_TRUE(becomesHidden("Never slow down"));
}

TEST_F(Shell, AlwaysBoostShowsInThePanelAndInTheOpenSettings) {
  Program& mail = appOf("Mail");
  startVantle();
  openPanel();
  click("Settings");
  desktop.waitForWindowTitled("Vantle Settings");
  ASSERT_TRUE(becomesShown("None yet. Add an app here, or use “Always boost” in the panel."));
  desktop.activate(appOf("Editor"));
  openPanel();
  click("Always boost Editor");
  EXPECT_TRUE(waitUntil([&] { return isSlowed(mail.pid()); }));
  EXPECT_TRUE(becomesStored("org.example.Editor")) << storedSettings();
  EXPECT_TRUE(becomesShown("Remove Editor"));
  EXPECT_TRUE(becomesShown("Turn off Boost"));
  desktop.run({"xdotool", "key", "Escape"});
  EXPECT_TRUE(becomesHidden("Turn off Boost"));
  endVantle();
  EXPECT_TRUE(isAtFullSpeed(mail.pid()));
}

TEST_F(Shell, AScreenReaderFindsEverythingThatCanBeReachedAndPresses) {
  startVantle();
  openPanel();
  const auto expectNames = [&] {
    for (const AccessibleTree::Node& node : tree.shownBy(app)) {
      const bool named = !node.name.empty() || node.role == "frame" || node.role == "window";
      EXPECT_TRUE(named || !node.isFocusable()) << node.role << " at " << node.x << "," << node.y;
    }
  };
  expectNames();
  const auto gear = tree.control(app, "Settings");
  ASSERT_TRUE(gear);
  EXPECT_EQ(gear->description, "Settings");
  ASSERT_TRUE(tree.press(*gear));
  desktop.waitForWindowTitled("Vantle Settings");
  for (const char* pane : {"General", "Boost", "Appearance", "Updates", "About"}) {
    std::optional<AccessibleTree::Node> row;
    ASSERT_TRUE(waitUntil([&] { return (row = tree.control(app, pane)).has_value(); })) << pane;
    ASSERT_TRUE(tree.press(*row)) << pane;
    EXPECT_TRUE(waitUntil([&] { return tree.control(app, pane)->isSelected(); })) << pane;
    expectNames();
  }
}

// A value of the desktop file, wherever in it.
std::string inDesktopFile(const std::string& key) {
  std::ifstream file(VANTLE_DESKTOP_FILE);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(key + "=")) return line.substr(key.size() + 1);
  }
  return {};
}

TEST_F(Shell, ItsWindowsBelongToItsDesktopFileAndHaveItsIcon) {
  startVantle();
  ASSERT_EQ(inDesktopFile("Actions"), "settings;quit;");
  ASSERT_TRUE(desktop.callApplication("ActivateAction", {"settings", "[]", "{}"}));
  const auto window = desktop.waitForWindowTitled("Vantle Settings");
  EXPECT_EQ(desktop.windows().classOf(window.id), inDesktopFile("StartupWMClass"));
  EXPECT_EQ(desktop.windows().iconSides(window.id), (std::vector<int>{16, 24, 32, 48, 64, 128}));
  ASSERT_TRUE(desktop.callApplication("ActivateAction", {"quit", "[]", "{}"}));
  EXPECT_EQ(m_vantle->exitStatus(), 0);
}

} // namespace
} // namespace vantle::desktop
