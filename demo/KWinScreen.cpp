// SPDX-License-Identifier: MIT
#include "demo/KWinScreen.h"

namespace vantle::demo {

namespace {

desktop::KWinDesktop::Options options() {
  desktop::KWinDesktop::Options chosen;
  chosen.width = 1600;
  chosen.height = 1200;
  chosen.pictures = true;
  return chosen;
}

} // namespace

KWinScreen::KWinScreen() : m_desktop(options()) {}

std::string KWinScreen::about() {
  return "the desktop: " + versionOf((session().folder().path() / "kwin_wayland").string()) +
         ", which has no bar without the rest of Plasma";
}

// The one native terminal that runs on every KWin without a screen; all of its windows have the same app id.
std::vector<std::string> KWinScreen::terminal(const std::string& name, const std::string& /*geometry*/,
                                              const std::string& script) {
  callWindows("org.freedesktop.weston.wayland-terminal", name);
  const auto file =
      session().folder().write("shell", "#!/bin/sh\nprintf '\\033]0;" + name + "\\007'\n" + script + "\n");
  std::filesystem::permissions(file, std::filesystem::perms::owner_all);
  return {"weston-terminal", "--shell=" + file.string()};
}

void KWinScreen::settle(const desktop::Program& program, const Place& place) {
  m_desktop.place(program, place.x, place.y, place.width, place.height);
}

std::string KWinScreen::isOfX11() const { return R"(/^KWin::(X11|Xwayland)Window\(/.test(String(w)))"; }

} // namespace vantle::demo
