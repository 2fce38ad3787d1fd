// SPDX-License-Identifier: MIT
#include "tests/realapps/Programs.h"

#include <filesystem>
#include <unistd.h>

namespace vantle::realapps {

namespace {

namespace fs = std::filesystem;
using desktop::VirtualDesktop;

std::string shortcut(const std::string& name, const std::string& exec, const std::string& more) {
  return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + exec + "\n" + more + "\n";
}

std::string home(const VirtualDesktop& desktop) { return desktop.home().string(); }

} // namespace

const char* textOf(Way way) {
  switch (way) {
  case Way::command:
    return "command";
  case Way::desktopFile:
    return "desktop file";
  case Way::menu:
    return "menu";
  case Way::terminal:
    break;
  }
  return "terminal";
}

const std::vector<Program>& programs() {
  static const std::vector<Program> all{
      {.key = "chromium-bsu", .family = "SDL, OpenGL", .package = "chromium-bsu",
       .command = {"chromium-bsu", "-w", "-na"}, .id = "chromium-bsu"},
      {.key = "kobodeluxe", .family = "SDL, setgid", .package = "kobodeluxe", .command = {"kobodl"},
       .id = "kobodeluxe"},
      {.key = "lbreakout2", .family = "SDL, setgid", .package = "lbreakout2", .command = {"lbreakout2"},
       .id = "lbreakout2"},
      {.key = "whichwayisup", .family = "Python", .package = "whichwayisup", .command = {"whichwayisup"},
       .id = "whichwayisup"},
      {.key = "monsterz", .family = "Python, setgid wrapper", .package = "monsterz", .command = {"monsterz"},
       .id = "monsterz"},
      {.key = "freecol", .family = "Java", .package = "freecol", .command = {"freecol"}, .id = "freecol"},
      {.key = "amazon-queen", .family = "ScummVM", .package = "flight-of-the-amazon-queen",
       .command = {"scummvm", "-p", "/usr/share/scummvm/flight-of-the-amazon-queen", "queen"},
       .id = "flight-of-the-amazon-queen"},
      {.key = "freedoom", .family = "Doom engine", .package = "freedoom", .command = {"freedoom1"},
       .id = "io.github.freedoom.Phase1"},
      {.key = "frozen-bubble", .family = "Perl", .package = "frozen-bubble", .command = {"frozen-bubble"},
       .id = "frozen-bubble"},
      {.key = "steel-sky", .family = "ScummVM, wrapper", .package = "beneath-a-steel-sky", .command = {"sky"},
       .id = "beneath-a-steel-sky"},
      {.key = "scummvm", .family = "engine alone", .package = "scummvm", .command = {"scummvm"},
       .id = "scummvm"},
      {.key = "chocolate-doom", .family = "Doom engine", .package = "chocolate-doom",
       .command = {"chocolate-doom", "-iwad", "/usr/share/games/doom/freedoom2.wad"},
       .id = "io.github.freedoom.Phase2"},
      {.key = "dosbox", .family = "DOSBox", .package = "dosbox", .command = {"dosbox"}, .id = "dosbox"},
      {.key = "stella", .family = "retro console", .package = "stella", .command = {"stella"}, .id = "stella"},
      {.key = "neverball", .family = "SDL, OpenGL", .package = "neverball", .command = {"neverball"},
       .id = "neverball"},
      {.key = "armagetronad", .family = "SDL, OpenGL", .package = "armagetronad", .command = {"armagetronad"},
       .id = "org.armagetronad.armagetronad"},
      {.key = "xnethack", .family = "X toolkit, wrapper", .package = "nethack-x11", .command = {"xnethack"},
       .id = "nethack-x11"},
      {.key = "gnome-mines", .family = "GNOME", .package = "gnome-mines", .command = {"gnome-mines"},
       .id = "org.gnome.Mines"},
      {.key = "gnome-chess", .family = "GNOME, with an engine's process", .package = "gnome-chess",
       .command = {"gnome-chess"}, .id = "org.gnome.Chess"},
      {.key = "pychess", .family = "Python, GTK, with an engine's process", .package = "pychess",
       .command = {"pychess"}, .id = "pychess"},
      {.key = "kmines", .family = "KDE", .package = "kmines", .command = {"kmines"}, .id = "org.kde.kmines"},
      {.key = "kpat", .family = "KDE", .package = "kpat", .command = {"kpat"}, .id = "org.kde.kpat"},
      {.key = "winemine", .family = "Wine", .package = "wine", .command = {"wine", "winemine"},
       .id = "wine-winemine", .name = "winemine.exe",
       .prepare =
           [](VirtualDesktop& desktop) {
             desktop.setEnvironment("WINEPREFIX", home(desktop) + "/.wine");
             desktop.setEnvironment("WINEDLLOVERRIDES", "mscoree,mshtml=");
             desktop.installDesktopFile("wine-winemine", shortcut("WineMine", "wine winemine", ""));
             desktop.run({"wine", "wineboot", "--init"});
           }},
      {.key = "web-game", .family = "web app window", .package = "chromium",
       .command = {"chromium", "--app=file://@HOME@/web-game.html"}, .id = "web-game", .name = "Web game",
       .prepare =
           [](VirtualDesktop& desktop) {
             desktop.installDesktopFile(
                 "web-game", shortcut("Web game", "chromium --app=file://" + home(desktop) + "/web-game.html",
                                      "Categories=Game;\nStartupWMClass=web-game"));
             desktop.folder().write("home/web-game.html", "<title>Web game</title><h1>Web game</h1>");
           }},
      {.key = "chromium", .family = "browser", .package = "chromium", .kind = Kind::app,
       .command = {"chromium", "--no-first-run"}, .id = "chromium"},
      {.key = "firefox", .family = "browser", .package = "firefox-esr", .kind = Kind::app,
       .command = {"firefox-esr"}, .id = "firefox-esr"},
      {.key = "writer", .family = "office, behind a wrapper that waits", .package = "libreoffice-writer",
       .kind = Kind::app, .command = {"libreoffice", "--writer"}, .id = "libreoffice-writer"},
      {.key = "thunderbird", .family = "mail", .package = "thunderbird", .kind = Kind::app,
       .command = {"thunderbird"}, .id = "thunderbird"},
      {.key = "emacs-daemon", .family = "daemon with windows", .package = "emacs-gtk", .kind = Kind::app,
       .command = {"emacsclient", "--alternate-editor=", "--create-frame"}, .id = "emacsclient"},
      {.key = "gimp", .family = "app with processes of plug-ins", .package = "gimp", .kind = Kind::app,
       .command = {"gimp"}, .id = "gimp"},
      {.key = "kwrite", .family = "KDE", .package = "kwrite", .kind = Kind::app, .command = {"kwrite"},
       .id = "org.kde.kwrite"},
      {.key = "jmol", .family = "Swing, behind a wrapper that waits", .package = "jmol", .kind = Kind::app,
       .command = {"jmol"}, .id = "jmol"},
      {.key = "mpv", .family = "player with sound", .package = "mpv", .kind = Kind::app,
       .command = {"mpv", "--force-window", "--loop"}, .id = "mpv", .isHeard = true},
      {.key = "vlc", .family = "player with sound", .package = "vlc", .kind = Kind::app,
       .command = {"vlc", "--no-qt-privacy-ask", "--loop"}, .id = "vlc", .isHeard = true},
      {.key = "xfce4-terminal", .family = "terminal with a build", .package = "xfce4-terminal",
       .kind = Kind::app, .command = {"xfce4-terminal"}, .id = "xfce4-terminal"},
  };
  return all;
}

} // namespace vantle::realapps
