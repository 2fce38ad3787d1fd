// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct xcb_connection_t;

namespace vantle::desktop {

// A test's own look at a display, as a panel or a pager has it.
class XWindows {
 public:
  struct Window {
    std::uint32_t id = 0;
    Pid pid = 0; // as the X server knows it; 0 when it does not
    std::string title;
  };

  // An exception when the display does not answer.
  explicit XWindows(const std::string& display);
  ~XWindows();
  XWindows(const XWindows&) = delete;
  XWindows& operator=(const XWindows&) = delete;

  // The windows that the window manager manages, oldest first.
  std::vector<Window> list();
  std::vector<Window> ofProcess(Pid pid);
  std::uint32_t active(); // 0 for none
  // What the window asks of the window manager or has been given (_NET_WM_STATE), by name.
  std::vector<std::string> states(std::uint32_t window);
  std::string classOf(std::uint32_t window);        // the second word of WM_CLASS
  std::vector<int> iconSides(std::uint32_t window); // in pixels, of the pictures that it offers
  std::uint32_t pixel(int x, int y);                // of the screen, as 0xRRGGBB
  // Asks the window manager, as a click on a task bar does.
  void activate(std::uint32_t window);
  void minimise(std::uint32_t window);
  // True when one has answered a question of an earlier call: ask until it does.
  bool hasWindowManager();

 private:
  std::vector<std::uint32_t> property(std::uint32_t window, const char* name);
  std::uint32_t atom(const char* name);
  void ask(std::uint32_t window, const char* message, std::uint32_t first);
  Pid pidOf(std::uint32_t window);

  xcb_connection_t* m_connection = nullptr;
  std::uint32_t m_root = 0;
  std::uint32_t m_probe = 0;
};

} // namespace vantle::desktop
