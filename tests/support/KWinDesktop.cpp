// SPDX-License-Identifier: MIT
#include "tests/support/KWinDesktop.h"

#include <csignal>
#include <fstream>
#include <stdexcept>

namespace vantle::desktop {

namespace fs = std::filesystem;

namespace {

constexpr const char* listenerName = "org.example.Listener";
constexpr const char* socketName = "wayland-kwin";

constexpr const char* shell = "org.kde.KWin";
constexpr const char* scripting = "org.kde.kwin.Scripting";

constexpr const char* before = R"js(
var isNew = workspace.windowList !== undefined;
var all = isNew ? workspace.windowList() : workspace.clientList();
var answered = "";
function answer(text) { answered = String(text); }
)js";

} // namespace

KWinDesktop::KWinDesktop()
    : PrivateSession({}, {{"XDG_SESSION_TYPE", "wayland"}, {"XDG_CURRENT_DESKTOP", "KDE"}}) {
  startSessionBus();
  m_listener = std::make_unique<FakeService>(busAddress(), listenerName);
  startCompositor();
}

KWinDesktop::~KWinDesktop() {
  m_compositor->signal(SIGTERM);
  m_compositor->waitForEnd();
}

void KWinDesktop::startCompositor() {
  // The installed one has a right of its own, with which it would take no path to its parts from us; a copy
  // under the same name has not.
  const fs::path program = folder().path() / "kwin_wayland";
  fs::copy_file("/usr/bin/kwin_wayland", program);
  const fs::path told = runtimeDir() / "kwin.names";
  const fs::path script = folder().write(
      "tell-names", "#!/bin/sh\nprintf '%s\\n' \"$DISPLAY\" \"$XAUTHORITY\" >'" + told.string() +
                        ".new' && mv '" + told.string() + ".new' '" + told.string() + "'\n");
  fs::permissions(script, fs::perms::owner_all);
  m_compositor = &launch({program.string(), "--virtual", "--no-lockscreen", "--xwayland", "--width", "1280",
                          "--height", "800", "--socket", socketName, script.string()},
                         {{"KWIN_COMPOSE", "Q"}});
  require("KWin", [&] { return fs::exists(told) || !m_compositor->isRunning(); });
  waitForBusName("org.kde.KWin");
  std::ifstream names(told);
  for (const char* variable : {"DISPLAY", "XAUTHORITY"}) {
    std::string name;
    if (!std::getline(names, name)) throw std::runtime_error("KWin did not come up");
    setEnvironment(variable, name);
  }
  setEnvironment("WAYLAND_DISPLAY", socketName);
}

std::string KWinDesktop::script(const std::string& text) {
  const std::string name = "test-" + std::to_string(++m_scripts);
  const fs::path file =
      folder().write(name + ".js", before + text + "\ncallDBus(\"" + listenerName + "\", \"/\", \"" +
                                       listenerName + "\", \"Answer\", \"" + name + "\", answered);\n");
  std::string heard;
  m_listener->answer("", "Answer", [&](sd_bus_message* call, sd_bus_message*) {
    const char* from = "";
    const char* said = "";
    if (sd_bus_message_read(call, "ss", &from, &said) > 0 && from == name) heard = std::string("=") + said;
  });
  if (!runScript(file, name)) throw std::runtime_error("KWin runs no script");
  require("what the script says", [&] {
    std::string now;
    m_listener->perform([&](sd_bus*) { now = heard; });
    return !now.empty();
  });
  return heard.substr(1);
}

bool KWinDesktop::hasScript(const std::string& name) {
  int isLoaded = 0;
  m_listener->perform([&](sd_bus* bus) {
    sd_bus_message* reply = nullptr;
    if (sd_bus_call_method(bus, shell, "/Scripting", scripting, "isScriptLoaded", nullptr, &reply, "s",
                           name.c_str()) >= 0) {
      sd_bus_message_read(reply, "b", &isLoaded);
    }
    sd_bus_message_unref(reply);
  });
  return isLoaded != 0;
}

bool KWinDesktop::runScript(const fs::path& file, const std::string& name) {
  bool isRun = false;
  m_listener->perform([&](sd_bus* bus) {
    sd_bus_message* reply = nullptr;
    int number = -1;
    if (sd_bus_call_method(bus, shell, "/Scripting", scripting, "loadScript", nullptr, &reply, "ss",
                           file.c_str(), name.c_str()) < 0 ||
        sd_bus_message_read(reply, "i", &number) <= 0) {
      return;
    }
    sd_bus_message_unref(reply);
    // Of KWin 6, then of 5.
    for (const char* folder : {"/Scripting/Script", "/"}) {
      const std::string path = folder + std::to_string(number);
      isRun = isRun || sd_bus_call_method(bus, shell, path.c_str(), "org.kde.kwin.Script", "run", nullptr,
                                          nullptr, nullptr) >= 0;
    }
    sd_bus_call_method(bus, shell, "/Scripting", scripting, "unloadScript", nullptr, nullptr, "s",
                       name.c_str());
  });
  return isRun;
}

int KWinDesktop::windowsWhere(const std::string& condition) {
  return std::stoi(script("answer(all.filter(function(w) { return " + condition + "; }).length);"));
}

void KWinDesktop::focusWhere(const std::string& condition) {
  require("a window", [&] { return windowsWhere(condition) > 0; });
  // A window that opens meanwhile may take the front; whoever wants it asks again.
  require("a window in front", [&] { return activateWhere(condition); });
}

bool KWinDesktop::activateWhere(const std::string& condition) {
  return script("var w = all.filter(function(w) { return " + condition +
                "; })[0];"
                "if (isNew) workspace.activeWindow = w; else workspace.activeClient = w;"
                "answer((isNew ? workspace.activeWindow : workspace.activeClient) === w);") == "true";
}

} // namespace vantle::desktop
