// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/ShellDesktop.h"

#include <filesystem>
#include <string>

namespace vantle::desktop {

// A whole private Wayland desktop: KWin, drawn in software without a screen, with XWayland for X clients. It
// belongs to who runs the tests.
//
//   KWinDesktop desktop;
//   Program& editor = desktop.launch({"mousepad"});
//   desktop.focus(editor);
class KWinDesktop : public ShellDesktop {
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
  ~KWinDesktop() override; // asks KWin to go, so that XWayland's display number is free again

  // Puts the upper left corner of that window there, once there is one, and gives it a size, if any.
  void place(const Program& program, int x, int y, int width = 0, int height = 0);
  // It may use `isNew`, for KWin 6, as well.
  std::string script(const std::string& text) override;
  bool hasScript(const std::string& name); // whether KWin keeps one of this name

  // Whether it can take pictures: from KWin 6 on it needs a graphics device for that.
  bool takesPictures();
  // What its screen shows; for a desktop with pictures.
  bool screenshot(const std::filesystem::path& png);

 private:
  void startCompositor(const Options& options);
  std::filesystem::path takenPicture(); // in the portable pixmap format
  bool runScript(const std::filesystem::path& file, const std::string& name);

  int m_scripts = 0; // so far
};

} // namespace vantle::desktop
