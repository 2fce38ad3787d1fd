// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/XWindows.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace vantle::desktop {

// A whole private desktop of real parts, without a screen: a home with all XDG folders, an X server (Xvfb) on
// a display number of its own choice, a window manager (openbox), and a session bus that starts nothing by
// itself. Ready in well under a second; nothing of the person's own session is seen or touched. Works as root
// and as an ordinary user; root can also have it belong to somebody else.
//
//   VirtualDesktop desktop;
//   desktop.installDesktopFile("org.example.Game", "[Desktop Entry]\nType=Application\n…");
//   Program& game = desktop.launch({"xterm"});
//   const auto window = desktop.waitForWindow(game.pid());
//   desktop.activate(window.id);
//
// Further parts (a sound server, a notification daemon, a panel) are programs like any other: `launch` them,
// then wait for their bus name, socket or window. Everything that was started, orphans included, is ended by
// pid in the destructor, also when a test fails; what it said is under `logs()`. A part that does not come up
// is an exception, which fails the test.
class VirtualDesktop {
 public:
  struct Options {
    std::optional<uid_t> user =
        {}; // whose desktop it is: an account that exists, for the bus; only root can name another
    std::string screen = "1280x800x24";
    bool windowManager = true;
    bool sessionBus = true;
    Environment environment = {}; // added to everything that runs here
  };

  VirtualDesktop() : VirtualDesktop(Options{}) {}
  explicit VirtualDesktop(Options options);
  ~VirtualDesktop();
  VirtualDesktop(const VirtualDesktop&) = delete;
  VirtualDesktop& operator=(const VirtualDesktop&) = delete;

  const TemporaryFolder& folder() const { return m_folder; } // all of the following are in it
  std::filesystem::path home() const { return m_folder.path() / "home"; }
  std::filesystem::path dataHome() const { return home() / ".local/share"; }
  std::filesystem::path configHome() const { return home() / ".config"; }
  std::filesystem::path runtimeDir() const { return m_folder.path() / "run"; }
  std::filesystem::path logs() const { return m_folder.path() / "log"; } // NUMBER-PROGRAM.log

  const std::string& display() const { return m_display; } // ":N"
  const std::string& busAddress() const { return m_busAddress; }
  const Environment& environment() const { return m_environment; }
  void setEnvironment(const std::string& name, const std::string& value) { m_environment[name] = value; }

  // Starts an app as a desktop does: a session of its own, the desktop's environment and user.
  Program& launch(std::vector<std::string> command, const Environment& added = {});
  Program& launchAs(std::optional<uid_t> user, std::vector<std::string> command,
                    const Environment& added = {});
  // Runs a small tool to its end; true when it succeeded.
  bool run(std::vector<std::string> command);
  // Writes DATA/applications/ID.desktop.
  std::filesystem::path installDesktopFile(const std::string& id, const std::string& text) const;
  bool hasBusName(const std::string& name);
  void waitForBusName(const std::string& name);

  XWindows& windows() { return *m_windows; }
  // The first managed window of a process, once there is one.
  XWindows::Window waitForWindow(Pid pid);
  XWindows::Window waitForWindowTitled(const std::string& part);
  // Brings it to the front and waits until it is there.
  void activate(std::uint32_t window);
  void activate(const Program& program) { activate(waitForWindow(program.pid()).id); }

  bool screenshot(const std::filesystem::path& png);

  Program& xServer() { return *m_xServer; }
  Program& windowManager() { return *m_windowManager; }
  Program& startWindowManager();
  Program& sessionBus() { return *m_sessionBus; }
  Program& startSessionBus(); // again as well, at the same address, after it was killed

 private:
  Start startOf(std::vector<std::string> command, const Environment& added);
  Program& started(const Start& start);
  void makeFolders();
  void startXServer(const std::string& screen);
  std::string readLine(int descriptor, const char* what);

  std::optional<uid_t> m_user;
  TemporaryFolder m_folder;
  Environment m_environment;
  std::string m_marker;
  std::string m_display;
  std::string m_busAddress;
  std::vector<std::unique_ptr<Program>> m_programs;
  Program* m_xServer = nullptr;
  Program* m_windowManager = nullptr;
  Program* m_sessionBus = nullptr;
  std::unique_ptr<XWindows> m_windows;
};

} // namespace vantle::desktop
