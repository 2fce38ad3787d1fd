// SPDX-License-Identifier: MIT
#include "tests/realapps/Programs.h"

#include "tests/support/Props.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>
#include <unistd.h>

namespace vantle::realapps {

namespace {

namespace fs = std::filesystem;
using desktop::VirtualDesktop;

std::string shortcut(const std::string& name, const std::string& exec, const std::string& more) {
  return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + exec + "\n" + more + "\n";
}

std::string tone(const VirtualDesktop& desktop) { return desktop.folder().path() / "tone.wav"; }
std::string home(const VirtualDesktop& desktop) { return desktop.home().string(); }

// A shell that builds something for ever stands in the terminal.
void makeBuild(VirtualDesktop& desktop) {
  const std::string folder = home(desktop) + "/project";
  desktop.folder().write("home/project/Makefile",
                         "all: a b c d\na b c d:\n\twhile :; do :; done\n.PHONY: a b c d\n");
  desktop.folder().write("home/shell", "#!/bin/sh\nmake -j4 -C " + folder + "\n");
  desktop.run({"chmod", "700", home(desktop) + "/shell"});
  desktop.setEnvironment("SHELL", home(desktop) + "/shell");
}

// What people call an image is its runtime here, with what is in it beside it.
void makeImage(VirtualDesktop& desktop, const std::string& name, const std::string& start,
               const std::string& program) {
  desktop.folder().write("home/image/AppRun", "#!/bin/sh\n" + start + "\n");
  desktop.run({"sh", "-c",
               "cd && mkdir -p image/usr/bin && cp \"$2\" image/usr/bin && chmod 755 image/AppRun && "
               "cp \"$3\" \"$1.AppImage\" && chmod 755 \"$1.AppImage\" && "
               "mksquashfs image \"$1.squashfs\" -quiet -no-progress",
               "sh", name, program, IMAGE_RUNTIME});
}

// One whose first process waits for the app, and one whose first process becomes it.
void makeCalculatorImage(VirtualDesktop& desktop) {
  makeImage(desktop, "Calculator", "\"$APPDIR/usr/bin/galculator\" \"$@\"", "/usr/bin/galculator");
  desktop.installDesktopFile(
      "calculator-image",
      shortcut("Calculator image", home(desktop) + "/Calculator.AppImage", "Icon=galculator\n"));
}

void makeGameImage(VirtualDesktop& desktop) {
  makeImage(desktop, "Fine_Game",
            "exec \"$APPDIR/usr/bin/" + fs::path(desktop::testWindow()).filename().string() +
                "\" --class fine --title Fine",
            desktop::testWindow());
  desktop.installDesktopFile("fine-game-image", shortcut("Fine game", home(desktop) + "/Fine_Game.AppImage",
                                                         "Categories=Game;\nIcon=applications-games\n"));
}

// A page of its own, as a browser shows it without its bars: it names such windows after the address.
void makeWebGame(VirtualDesktop& desktop) {
  const std::string page = home(desktop) + "/web-game.html";
  std::string name = page.substr(1);
  std::replace(name.begin(), name.end(), '/', '_');
  desktop.folder().write("home/web-game.html", "<title>Web game</title><h1>Web game</h1>");
  desktop.installDesktopFile("web-game", shortcut("Web game", "chromium --no-first-run --app=file://" + page,
                                                  "Categories=Game;\nIcon=chromium\nStartupWMClass=" + name));
}

void makeOwnBrowser(VirtualDesktop& desktop) {
  desktop.folder().write("home/notes.html", "<title>Notes</title><h1>Notes</h1>");
  desktop.run(
      {"sh", "-c",
       "cd && mkdir apps && cp -r /usr/lib/chromium apps/Notes && mv apps/Notes/chromium apps/Notes/notes"});
  desktop.installDesktopFile(
      "notes",
      shortcut("Notes", home(desktop) + "/apps/Notes/notes --app=file://" + home(desktop) + "/notes.html",
               "Icon=chromium"));
}

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
    return "terminal";
  case Way::scope:
    return "scope";
  case Way::service:
    break;
  }
  return "service";
}

const std::vector<Program>& programs() {
  static const std::vector<Program> all{
      {.key = "chromium-bsu",
       .family = "SDL, OpenGL",
       .package = "chromium-bsu",
       .command = {"chromium-bsu", "-w", "-na"},
       .file = "chromium-bsu"},
      {.key = "kobodeluxe",
       .family = "SDL, setgid",
       .package = "kobodeluxe",
       .command = {"kobodl"},
       .file = "kobodeluxe"},
      {.key = "lbreakout2",
       .family = "SDL, setgid",
       .package = "lbreakout2",
       .command = {"lbreakout2"},
       .file = "lbreakout2"},
      {.key = "whichwayisup",
       .family = "Python",
       .package = "whichwayisup",
       .command = {"whichwayisup"},
       .file = "whichwayisup"},
      {.key = "monsterz",
       .family = "Python, setgid wrapper",
       .package = "monsterz",
       .command = {"monsterz"},
       .file = "monsterz"},
      {.key = "freecol", .family = "Java", .package = "freecol", .command = {"freecol"}, .file = "freecol"},
      {.key = "amazon-queen",
       .family = "ScummVM",
       .package = "flight-of-the-amazon-queen",
       .command = {"scummvm", "-p", "/usr/share/scummvm/flight-of-the-amazon-queen", "queen"},
       .file = "flight-of-the-amazon-queen"},
      {.key = "freedoom",
       .family = "Doom engine",
       .package = "freedoom",
       .command = {"freedoom1"},
       .file = "io.github.freedoom.Phase1"},
      {.key = "frozen-bubble",
       .family = "Perl",
       .package = "frozen-bubble",
       .command = {"frozen-bubble"},
       .file = "frozen-bubble"},
      {.key = "steel-sky",
       .family = "ScummVM, wrapper",
       .package = "beneath-a-steel-sky",
       .command = {"sky"},
       .file = "beneath-a-steel-sky"},
      {.key = "scummvm",
       .family = "engine alone",
       .package = "scummvm",
       .command = {"scummvm"},
       .file = "scummvm"},
      {.key = "chocolate-doom",
       .family = "Doom engine",
       .package = "chocolate-doom",
       .command = {"chocolate-doom", "-iwad", "/usr/share/games/doom/freedoom2.wad"},
       .file = "io.github.freedoom.Phase2"},
      {.key = "dosbox", .family = "DOSBox", .package = "dosbox", .command = {"dosbox"}, .file = "dosbox"},
      {.key = "stella",
       .family = "retro console",
       .package = "stella",
       .command = {"stella"},
       .file = "stella"},
      {.key = "neverball",
       .family = "SDL, OpenGL",
       .package = "neverball",
       .command = {"neverball"},
       .file = "neverball"},
      {.key = "armagetronad",
       .family = "SDL, OpenGL",
       .package = "armagetronad",
       .command = {"armagetronad"},
       .file = "org.armagetronad.armagetronad"},
      {.key = "xnethack",
       .family = "X toolkit, wrapper",
       .package = "nethack-x11",
       .command = {"xnethack"},
       .file = "nethack-x11"},
      {.key = "gnome-mines",
       .family = "GNOME",
       .package = "gnome-mines",
       .command = {"gnome-mines"},
       .file = "org.gnome.Mines"},
      {.key = "gnome-chess",
       .family = "GNOME, with an engine's process",
       .package = "gnome-chess",
       .command = {"gnome-chess"},
       .file = "org.gnome.Chess",
       .service = {"gnome-chess", "--gapplication-service"},
       .busName = "org.gnome.Chess"},
      {.key = "pychess",
       .family = "Python, GTK, with an engine's process",
       .package = "pychess",
       .command = {"pychess"},
       .file = "pychess"},
      {.key = "kmines",
       .family = "KDE",
       .package = "kmines",
       .command = {"kmines"},
       .file = "org.kde.kmines"},
      {.key = "kpat", .family = "KDE", .package = "kpat", .command = {"kpat"}, .file = "org.kde.kpat"},
      {.key = "winemine",
       .family = "Wine",
       .package = "wine",
       .command = {"wine", "winemine"},
       .file = "wine-winemine",
       .others = {"–"},
       .name = "Winemine",
       .prepare =
           [](VirtualDesktop& desktop) {
             desktop.setEnvironment("WINEPREFIX", home(desktop) + "/.wine");
             desktop.setEnvironment("WINEDLLOVERRIDES", "mscoree,mshtml=");
             desktop.installDesktopFile("wine-winemine", shortcut("WineMine", "wine winemine", ""));
             desktop.run({"sh", "-c", "wine wineboot --init && /usr/lib/wine/wineserver64 -w"});
           }},
      {.key = "web-game",
       .family = "web app window",
       .package = "chromium",
       .command = {"chromium", "--no-first-run", "--app=file://@HOME@/web-game.html"},
       .file = "web-game",
       .prepare = makeWebGame},
      {.key = "web-game-beside",
       .family = "web app window of a browser that runs already",
       .package = "chromium",
       .command = {"chromium", "--no-first-run", "--app=file://@HOME@/web-game.html"},
       .file = "web-game",
       .title = "Web game",
       .prepare = makeWebGame,
       .beside =
           [](VirtualDesktop& desktop) {
             desktop.launch({"chromium", "--no-first-run"});
             desktop::require("the browser", [&] {
               const auto windows = desktop.windows().list();
               return std::any_of(windows.begin(), windows.end(), [](const auto& window) {
                 return window.title.find("Chromium") != std::string::npos;
               });
             });
           }},
      {.key = "chromium",
       .family = "browser",
       .package = "chromium",
       .kind = Kind::app,
       .command = {"chromium", "--no-first-run"},
       .file = "chromium"},
      {.key = "firefox",
       .family = "browser",
       .package = "firefox-esr",
       .kind = Kind::app,
       .command = {"firefox-esr"},
       .file = "firefox-esr"},
      {.key = "writer",
       .family = "office, behind a wrapper that waits",
       .package = "libreoffice-writer",
       .kind = Kind::app,
       .command = {"libreoffice", "--writer"},
       .file = "libreoffice-writer",
       .title = "Writer"},
      {.key = "thunderbird",
       .family = "mail",
       .package = "thunderbird",
       .kind = Kind::app,
       .command = {"thunderbird"},
       .file = "thunderbird"},
      {.key = "emacs-daemon",
       .family = "daemon with windows",
       .package = "emacs-gtk",
       .kind = Kind::app,
       .command = {"emacsclient", "--alternate-editor=", "--create-frame"},
       .file = "emacsclient",
       .others = {"emacs"}},
      {.key = "gimp",
       .family = "app with processes of plug-ins",
       .package = "gimp",
       .kind = Kind::app,
       .command = {"gimp"},
       .file = "gimp"},
      {.key = "kwrite",
       .family = "KDE",
       .package = "kwrite",
       .kind = Kind::app,
       .command = {"kwrite"},
       .file = "org.kde.kwrite"},
      {.key = "jmol",
       .family = "Swing, behind a wrapper that waits",
       .package = "jmol",
       .kind = Kind::app,
       .command = {"jmol"},
       .file = "jmol"},
      {.key = "mpv",
       .family = "player with sound",
       .package = "mpv",
       .kind = Kind::app,
       .command = {"mpv", "--force-window", "--loop", "@HOME@/../tone.wav"},
       .file = "own-mpv",
       .others = {"mpv"},
       .title = "tone",
       .prepare =
           [](VirtualDesktop& desktop) {
             desktop.installDesktopFile(
                 "own-mpv", shortcut("Tone", "mpv --force-window --loop " + tone(desktop), "Icon=mpv"));
           },
       .isHeard = true},
      {.key = "vlc",
       .family = "player with sound",
       .package = "vlc",
       .kind = Kind::app,
       .command = {"vlc", "--no-qt-privacy-ask", "--loop", "@HOME@/../tone.wav"},
       .file = "own-vlc",
       .others = {"vlc"},
       .title = "tone",
       .prepare =
           [](VirtualDesktop& desktop) {
             desktop.installDesktopFile(
                 "own-vlc", shortcut("Tone", "vlc --no-qt-privacy-ask --loop " + tone(desktop), "Icon=vlc"));
           },
       .isHeard = true},
      {.key = "xfce4-terminal",
       .family = "terminal with a build",
       .package = "xfce4-terminal",
       .kind = Kind::app,
       .command = {"xfce4-terminal", "-x", "@HOME@/shell"},
       .file = "xfce4-terminal",
       .prepare = makeBuild},
      {.key = "image",
       .family = "AppImage-like: runs from a mount of its own",
       .package = "squashfuse",
       .kind = Kind::app,
       .command = {"@HOME@/Calculator.AppImage"},
       .file = "calculator-image",
       .others = {"galculator"},
       .prepare = makeCalculatorImage},
      {.key = "image-game",
       .family = "AppImage-like: a game",
       .package = "squashfuse",
       .command = {"@HOME@/Fine_Game.AppImage"},
       .file = "fine-game-image",
       .prepare = makeGameImage},
      {.key = "own-browser",
       .family = "Electron-like: an app with its own copy of a browser",
       .package = "chromium",
       .kind = Kind::app,
       .command = {"@HOME@/apps/Notes/notes", "--app=file://@HOME@/notes.html"},
       .file = "notes",
       .prepare = makeOwnBrowser},
  };
  return all;
}

std::string reasonFor(const Program& program, Way way, const std::string& seen) {
  struct Reason {
    const char* program; // empty for all
    std::optional<Way> way;
    const char* seen; // a part of it
    const char* words;
  };
  static const std::vector<Reason> reasons{
      {"web-game-beside",
       {},
       "found as chromium",
       "an app is known by its first window, which is the browser's ordinary one"},
      {"", Way::menu, "shared place",
       "Openbox starts programs in its own session: without a user manager the weight of that session is all "
       "there is to lower, and it is Openbox's as well"},
      {"",
       {},
       "no way back",
       "it runs with a group's rights: the kernel gives its files in /proc to root, and an ordinary user "
       "without a user manager has nothing that could be taken back"},
      {"emacs-daemon",
       {},
       "emacsclient",
       "the client that waits for the end of the frame belongs to nobody; it sleeps"},
      {"steel-sky",
       {},
       "found as scummvm",
       "its desktop file starts a script without arguments, and the window is called after the engine"},
      {"armagetronad",
       {},
       "no Boost",
       "its desktop file starts a script that ends in another program, armagetronad.real, and the window is "
       "called after that"},
  };
  std::string words;
  std::set<std::string> explained; // a program's own reasons stand first
  for (const Reason& reason : reasons) {
    const bool isMeant = reason.program[0] == '\0' || program.key == reason.program;
    if (!isMeant || (reason.way && *reason.way != way) || seen.find(reason.seen) == std::string::npos)
      continue;
    if (explained.insert(reason.seen).second)
      words += (words.empty() ? "" : "; ") + std::string(reason.words);
  }
  return words;
}

} // namespace vantle::realapps
