// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/FakeService.h"
#include "tests/support/PrivateSession.h"

#include <memory>
#include <string>

namespace vantle::desktop {

// A private Wayland desktop whose shell runs scripts: what it shows is asked, and changed, from inside.
class ShellDesktop : public PrivateSession {
 public:
  virtual ~ShellDesktop() = default;
  std::string waylandDisplay() const { return environment().at("WAYLAND_DISPLAY"); }
  std::string display() const { return environment().at("DISPLAY"); } // XWayland's, ":N"
  Program& compositor() { return *m_compositor; }

  // Runs a script in the shell, to its end. It may use `all`, the list of windows with a `pid` and a
  // `caption` each, `front()`, one of them or none, `activate(w)`, `minimize(w, isMinimized)` and
  // `fillScreen(w)`, and say something with `answer(TEXT)`; the last of that is returned.
  virtual std::string script(const std::string& text) = 0;

  // Brings the first window whose process, as the shell knows it, or whose title this is to the front, once
  // there is one; returns when it is there.
  void focus(const Program& program) { focusWhere("w.pid === " + std::to_string(program.pid())); }
  void focusTitled(const std::string& title) { focusWhere("w.caption === \"" + title + "\""); }
  // The same without a look at whether it is done.
  void activate(const Program& program) { activateWhere("w.pid === " + std::to_string(program.pid())); }
  // How many windows fulfil a condition of the script's language, e.g. "w.pid === 7".
  int windowsWhere(const std::string& condition);

 protected:
  explicit ShellDesktop(const Environment& added);

  FakeService& listener() { return *m_listener; } // on the session bus, to ask the shell and to be answered
  static constexpr const char* listenerName = "org.example.Listener";

  Program* m_compositor = nullptr;

 private:
  void focusWhere(const std::string& condition);
  bool activateWhere(const std::string& condition); // whether it is in front now

  std::unique_ptr<FakeService> m_listener;
};

} // namespace vantle::desktop
