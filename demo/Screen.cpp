// SPDX-License-Identifier: MIT
#include "demo/Screen.h"

#include "demo/GnomeScreen.h"
#include "demo/KWinScreen.h"
#include "demo/SwayScreen.h"
#include "demo/X11Screen.h"

#include <chrono>
#include <fstream>

namespace vantle::demo {

namespace {

template <class Made> std::unique_ptr<Screen> make() { return std::make_unique<Made>(); }

} // namespace

const std::vector<Screen::Kind>& Screen::kinds() {
  static const std::vector<Kind> all{
      {"x11", false, make<X11Screen>},
      {"sway", true, make<SwayScreen>},
      {"kwin", true, make<KWinScreen>},
      {"gnome", true, make<GnomeScreen>},
  };
  return all;
}

std::vector<std::string> Screen::xTerminal(const std::string& name, const std::string& geometry,
                                           const std::string& script) {
  const std::string windowClass = asClass(name);
  callWindows(windowClass, name);
  return {"xterm", "-class", windowClass, "-T", name, "-geometry", geometry, "-e", "/bin/sh", "-c", script};
}

std::vector<std::string> Screen::nativeTerminal(const std::string& name, const std::string& geometry,
                                                const std::string& script) {
  return {"foot",
          "--app-id",
          callWindows(asClass(name), name),
          "--title",
          name,
          "--window-size-chars",
          geometry.substr(0, geometry.find('+')),
          "/bin/sh",
          "-c",
          script};
}

std::string Screen::asClass(std::string name) {
  std::erase(name, ' ');
  return name;
}

std::string Screen::callWindows(const std::string& windowClass, const std::string& name) {
  std::string id = "org.example." + windowClass;
  session().installDesktopFile(id, "[Desktop Entry]\nType=Application\nName=" + name +
                                       "\nExec=true\nStartupWMClass=" + windowClass + "\n");
  return id;
}

std::string Screen::versionOf(const std::string& program) {
  const auto file = session().folder().path() / "tmp/version";
  session().run({"sh", "-c", program + " --version >" + file.string()});
  std::string line;
  std::ifstream said(file);
  std::getline(said, line);
  return line;
}

std::optional<int> Screen::showPanel(const desktop::Program& vantle) {
  noteWithoutPanel();
  int asked = 0;
  const bool isShown = desktop::waitUntil([&] {
    ++asked;
    return askForPanel() && desktop::waitUntil([&] { return isPanelShown(vantle); }, std::chrono::seconds(5));
  });
  return isShown ? std::optional(asked) : std::nullopt;
}

bool Screen::hidePanel(const desktop::Program& vantle) {
  // One that is only just there may miss what should close it.
  return desktop::waitUntil([&] {
    sendPanelAway();
    return desktop::waitUntil([&] { return !isPanelShown(vantle); }, std::chrono::seconds(2));
  });
}

std::string ShellScreen::wayOf(const desktop::Program& program) {
  const std::string own = "w.pid === " + std::to_string(program.pid());
  return shell().windowsWhere(own + " && " + isOfX11()) > 0 ? ", through Xwayland" : ", a native app";
}

void ShellScreen::ask(const desktop::Program& program) {
  m_inFront = &program;
  shell().activate(program);
}

void ShellScreen::activate(const desktop::Program& program) {
  m_inFront = &program;
  shell().focus(program);
}

} // namespace vantle::demo
