// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/FakeService.h"
#include "tests/support/Picture.h"
#include "tests/support/PrivateSession.h"

#include <filesystem>
#include <memory>
#include <string>

namespace vantle::desktop {

// A whole private Wayland desktop: KWin, drawn in software without a screen, with XWayland for X clients. It
// belongs to who runs the tests.
//
//   KWinDesktop desktop;
//   Program& editor = desktop.launch({"mousepad"});
//   desktop.focus(editor);
class KWinDesktop : public PrivateSession {
 public:
  struct Options {
    int width = 1280; // of its one screen
    int height = 800;
    // Drawn in the one way that lets KWin take pictures of it, which costs more of the machine, and these
    // for everybody who asks.
    bool pictures = false;
  };

  KWinDesktop() : KWinDesktop(Options{}) {}
  explicit KWinDesktop(const Options& options);
  ~KWinDesktop(); // asks KWin to go, so that XWayland's display number is free again

  std::string waylandDisplay() const { return environment().at("WAYLAND_DISPLAY"); }
  std::string display() const { return environment().at("DISPLAY"); } // XWayland's, ":N"
  Program& compositor() { return *m_compositor; }

  // Brings the first window whose process, as KWin knows it, or whose title this is to the front, once there
  // is one; returns when it is there.
  void focus(const Program& program) { focusWhere("w.pid === " + std::to_string(program.pid())); }
  void focusTitled(const std::string& title) { focusWhere("w.caption === \"" + title + "\""); }
  // The same without a look at whether it is done.
  void activate(const Program& program) { activateWhere("w.pid === " + std::to_string(program.pid())); }
  // Puts the upper left corner of that window there, once there is one, and gives it a size, if any.
  void place(const Program& program, int x, int y, int width = 0, int height = 0);
  // How many windows fulfil a condition of the script's language, e.g. "w.pid === 7".
  int windowsWhere(const std::string& condition);
  // Runs a script in KWin, to its end. It may use `all`, the list of windows, `isNew`, for KWin 6, and say
  // something with `answer(TEXT)`; the last of that is returned.
  std::string script(const std::string& text);
  bool hasScript(const std::string& name); // whether KWin keeps one of this name

  // What its screen shows; for a desktop with pictures.
  Picture picture() { return Picture(takenPicture()); }
  bool screenshot(const std::filesystem::path& png);

 private:
  void startCompositor(const Options& options);
  std::filesystem::path takenPicture(); // in the portable pixmap format
  void focusWhere(const std::string& condition);
  bool activateWhere(const std::string& condition); // whether it is in front now
  bool runScript(const std::filesystem::path& file, const std::string& name);

  Program* m_compositor = nullptr;
  std::unique_ptr<FakeService> m_listener; // whom scripts answer
  int m_scripts = 0;                       // so far
};

} // namespace vantle::desktop
