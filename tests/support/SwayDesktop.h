// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/Picture.h"
#include "tests/support/PrivateSession.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace vantle::desktop {

// A whole private Wayland desktop: sway, drawn in software without a screen, with XWayland for X clients (it
// starts with the first of them). It refuses root; where root runs the tests it is somebody else's. There is
// no pointer and no keyboard until a client brings one (zwlr_virtual_pointer_manager_v1, wtype).
//
//   SwayDesktop desktop;
//   Program& terminal = desktop.launch({"foot"});
//   desktop.focus(desktop.waitForWindow(terminal.pid()).id);
class SwayDesktop : public PrivateSession {
 public:
  struct Options {
    std::optional<uid_t> user = {}; // absent: who runs the tests, unless that is root
    std::string screen = "1280x800";
    int screens = 1;
    std::string configuration = {}; // lines of sway's own configuration: bars, scales, places of screens
    Environment environment = {};   // added to everything that runs here
  };

  struct Window {
    std::uint64_t id = 0; // sway's con_id
    Pid pid = 0;
    std::string title;
    std::string applicationId; // of native windows
    std::string windowClass;   // of X windows
    bool isFocused = false;
    bool isX11 = false;
  };

  SwayDesktop() : SwayDesktop(Options{}) {}
  explicit SwayDesktop(const Options& options);
  ~SwayDesktop(); // asks sway to go, so that XWayland's display number is free again

  uid_t user() const;
  std::string waylandDisplay() const { return environment().at("WAYLAND_DISPLAY"); }
  std::string display() const { return environment().at("DISPLAY"); } // XWayland's, ":N"
  std::string socket() const { return environment().at("SWAYSOCK"); } // of its IPC
  Program& compositor() { return *m_compositor; }

  // Runs a command of sway's; false when it, or a part of it, fails.
  bool command(const std::string& text);
  std::vector<Window> windows(); // all that are open, on every workspace
  std::vector<Window> ofProcess(Pid pid);
  // The first window of a process, once there is one.
  Window waitForWindow(Pid pid);
  Window waitForWindowTitled(const std::string& title);
  // Brings it to the front and waits until it is there.
  void focus(std::uint64_t window);
  void focus(const Program& program) { focus(waitForWindow(program.pid()).id); }

  bool screenshot(const std::filesystem::path& png);
  // What its screens show, or a part of it: "X,Y WIDTHxHEIGHT".
  Picture picture(const std::string& part = {});
  // One that stays: without any, nothing has the keyboard.
  void addKeyboard() { launch({"wtype", "-s", "100000000"}); }
  void press(const std::string& key) { run({"wtype", "-k", key}); }
  // One that stays; no click without it.
  void addPointer();
  // At a point of all screens together; returns when sway has taken it in.
  void click(int x, int y);

 private:
  // One question on a connection of its own; the answer is JSON.
  std::string ask(std::uint32_t type, const std::string& payload) const;
  Program& startCompositor(const Options& options);
  long clicks() const; // so far

  Program* m_compositor = nullptr;
  std::string m_screen; // "WIDTHxHEIGHT" of each
  int m_screens;
};

} // namespace vantle::desktop
