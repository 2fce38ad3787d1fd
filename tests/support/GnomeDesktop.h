// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/PrivateBus.h"
#include "tests/support/ShellDesktop.h"

#include <filesystem>
#include <string>

namespace vantle::desktop {

// A whole private Wayland desktop: GNOME's shell, drawn in software without a screen, with XWayland for X
// clients. It belongs to who runs the tests, and knows nothing of the machine's login daemon.
//
//   GnomeDesktop desktop;
//   Program& editor = desktop.launch({"mousepad"});
//   desktop.focus(editor);
class GnomeDesktop : public ShellDesktop {
 public:
  // With an extension from the log-in on, when a folder is named in which there is one for each edition of
  // the shell: "43" (up to 44) and "45" (from there on).
  explicit GnomeDesktop(const std::filesystem::path& extensions = {}, const std::string& uuid = {},
                        int width = 1280, int height = 800);
  ~GnomeDesktop() override; // asks the shell to go, so that XWayland's display number is free again

  // With the first button, at that point of the screen, where the pointer stays.
  void click(int x, int y);
  // Moves it there; returns when the shell has seen it.
  void point(int x, int y);
  // The middle of an extension's icon in the bar, once it is drawn: how far from the left.
  int iconInBar(const std::string& uuid);
  bool screenshot(const std::filesystem::path& png);
  void logInAgain(); // ends the session's shell, and starts another
  // The windows' own objects are their `window`; `Main` is the shell's.
  std::string script(const std::string& text) override;

 private:
  void startShell();
  void endShell();
  std::string installedEdition();
  std::filesystem::path extensionFolder(const std::string& uuid) const;
  void installStage();
  void enable(const std::string& uuids); // from the log-in on

  int m_width;
  int m_height;
  PrivateBus m_systemBus; // of nobody
  std::string m_edition;  // of the shell: "43" or "45"
};

} // namespace vantle::desktop
