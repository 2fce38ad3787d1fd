// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/PrivateSession.h"
#include "tests/support/XWindows.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>

namespace vantle::desktop {

// A whole private X11 desktop of real parts, without a screen: an X server (Xvfb) on a display number of its
// own choice, a window manager (openbox), and what every session has. Ready in well under a second.
//
//   VirtualDesktop desktop;
//   desktop.installDesktopFile("org.example.Game", "[Desktop Entry]\nType=Application\n…");
//   Program& game = desktop.launch({"xterm"});
//   const auto window = desktop.waitForWindow(game.pid());
//   desktop.activate(window.id);
class VirtualDesktop : public PrivateSession {
 public:
  struct Options {
    std::optional<uid_t> user = {}; // whose desktop it is; see PrivateSession
    std::string screen = "1280x800x24";
    bool windowManager = true;
    bool sessionBus = true;
    Environment environment = {}; // added to everything that runs here
  };

  VirtualDesktop() : VirtualDesktop(Options{}) {}
  explicit VirtualDesktop(const Options& options);

  const std::string& display() const { return m_display; } // ":N"

  XWindows& windows() { return *m_windows; }
  // The first managed window of a process, once there is one.
  XWindows::Window waitForWindow(Pid pid);
  XWindows::Window waitForWindowTitled(const std::string& title);
  // Brings it to the front and waits until it is there.
  void activate(std::uint32_t window);
  void activate(const Program& program) { activate(waitForWindow(program.pid()).id); }

  bool screenshot(const std::filesystem::path& png);

  Program& xServer() { return *m_xServer; }
  Program& windowManager() { return *m_windowManager; }
  Program& startWindowManager();

 private:
  void startXServer(const std::string& screen);
  std::string readLine(int descriptor, const char* what);

  std::string m_display;
  Program* m_xServer = nullptr;
  Program* m_windowManager = nullptr;
  std::unique_ptr<XWindows> m_windows;
};

} // namespace vantle::desktop
