// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/ShellDesktop.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantle::demo {

// The desktop that the demo plays on, 1600 by 1200 pixels, where one desktop differs from another.
class Screen {
 public:
  struct Kind {
    const char* name; // of the command line
    bool refusesRoot;
    std::unique_ptr<Screen> (*make)();
  };
  // One line for each desktop; the first is the one where none is asked for.
  static const std::vector<Kind>& kinds();

  // Where an app's window stands on a desktop that can be told so; without a size it keeps its own.
  struct Place {
    int x;
    int y;
    int width = 0;
    int height = 0;
  };

  virtual ~Screen() = default;
  virtual desktop::PrivateSession& session() = 0;
  virtual std::string about() { return {}; } // what the report says of it, if anything

  // The command of a terminal window that is an app of its own, with its own desktop file: an X client, and
  // where there is one that can be used a native app of this desktop. The geometry is xterm's, in letters.
  std::vector<std::string> xTerminal(const std::string& name, const std::string& geometry,
                                     const std::string& script);
  virtual std::vector<std::string> terminal(const std::string& name, const std::string& geometry,
                                            const std::string& script) {
    return xTerminal(name, geometry, script);
  }
  // Foot, for desktops where it runs.
  std::vector<std::string> nativeTerminal(const std::string& name, const std::string& geometry,
                                          const std::string& script);
  // Whether apps can be something else than X clients here.
  virtual bool hasNativeApps() { return false; }

  // Returns when the program has a window, and that has its place.
  virtual void settle(const desktop::Program& program, const Place& place) = 0;
  // How its window reaches the desktop, where there is more than one way: ", a native app".
  virtual std::string wayOf(const desktop::Program& /*program*/) { return {}; }
  // Has it brought to the front, as a click on a task bar does.
  virtual void ask(const desktop::Program& program) = 0;
  // The same; returns when it is there.
  virtual void activate(const desktop::Program& program) = 0;

  virtual std::string whyNoPictures() { return {}; } // empty where it takes some
  virtual bool screenshot(const std::filesystem::path& png) = 0;
  // Vantle's panel, opened as people do here. How often it was asked for until it could be seen: a desktop
  // that is too busy to answer in a fifth of a second gets none. Absent when it never could.
  std::optional<int> showPanel(const desktop::Program& vantle);
  bool hidePanel(const desktop::Program& vantle); // true when it is gone

 protected:
  // Asked before it is first looked for, while it is away.
  virtual void noteWithoutPanel() {}
  virtual bool isPanelShown(const desktop::Program& vantle) = 0;
  // Without a tray: as an app menu does.
  virtual bool askForPanel() { return session().callApplication("Activate"); }
  virtual void sendPanelAway() = 0;

  // A name as the class of windows.
  static std::string asClass(std::string name);
  // A desktop file that calls the windows of that class, or of that app id, by a name. The id.
  std::string callWindows(const std::string& windowClass, const std::string& name);
  // What the program says when it is asked for its version.
  std::string versionOf(const std::string& program);
};

// One on which the panel is seen by what it covers.
class PixelScreen : public Screen {
 protected:
  // A point that only the panel ever covers.
  struct Point {
    int x;
    int y;
  };
  virtual Point inPanel() const = 0;
  virtual std::uint32_t pixel(Point point) = 0; // as 0xRRGGBB

  void noteWithoutPanel() override { m_withoutPanel = pixel(inPanel()); }
  bool isPanelShown(const desktop::Program& /*vantle*/) override {
    return pixel(inPanel()) != m_withoutPanel;
  }

 private:
  std::uint32_t m_withoutPanel = 0; // the colour of that point
};

// One whose shell tells what it shows.
class ShellScreen : public Screen {
 public:
  desktop::PrivateSession& session() override { return shell(); }
  bool hasNativeApps() override { return true; }
  std::string wayOf(const desktop::Program& program) override;
  void ask(const desktop::Program& program) override;
  void activate(const desktop::Program& program) override;

 protected:
  virtual desktop::ShellDesktop& shell() = 0;
  virtual std::string isOfX11() const = 0; // the condition of a window `w` that comes through Xwayland
  bool isPanelShown(const desktop::Program& vantle) override {
    return shell().windowsWhere("w.pid === " + std::to_string(vantle.pid())) > 0;
  }
  // There is no key to press here, but it goes when something else takes the front.
  void sendPanelAway() override { activate(*m_inFront); }

 private:
  const desktop::Program* m_inFront = nullptr; // who was asked for last
};

} // namespace vantle::demo
