// SPDX-License-Identifier: MIT
#include "tests/support/KWinDesktop.h"

#include <array>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <stdexcept>
#include <unistd.h>

namespace vantle::desktop {

namespace fs = std::filesystem;

namespace {

constexpr const char* socketName = "wayland-kwin";

constexpr const char* shell = "org.kde.KWin";
constexpr const char* screenShotPath = "/org/kde/KWin/ScreenShot2";
constexpr const char* scripting = "org.kde.kwin.Scripting";

constexpr const char* before = R"js(
var isNew = workspace.windowList !== undefined;
var all = isNew ? workspace.windowList() : workspace.clientList();
var answered = "";
function answer(text) { answered = String(text); }
function front() { return isNew ? workspace.activeWindow : workspace.activeClient; }
function activate(w) { if (isNew) workspace.activeWindow = w; else workspace.activeClient = w; }
function minimize(w, isMinimized) { w.minimized = isMinimized; }
function fillScreen(w) { w.fullScreen = true; }
)js";

// What a picture is, as KWin says it beside the pixels: four bytes each, blue first.
struct Shape {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t stride = 0; // bytes a line
};

void readEntry(sd_bus_message* reply, Shape& shape) {
  const char* name = "";
  sd_bus_message_read(reply, "s", &name);
  const std::map<std::string, std::uint32_t*> wanted{
      {"width", &shape.width}, {"height", &shape.height}, {"stride", &shape.stride}};
  const auto found = wanted.find(name);
  if (found == wanted.end()) {
    sd_bus_message_skip(reply, "v");
  } else {
    sd_bus_message_read(reply, "v", "u", found->second);
  }
}

Shape shapeIn(sd_bus_message* reply) {
  Shape shape;
  sd_bus_message_enter_container(reply, 'a', "{sv}");
  while (sd_bus_message_enter_container(reply, 'e', "sv") > 0) {
    readEntry(reply, shape);
    sd_bus_message_exit_container(reply);
  }
  return shape;
}

std::string readToEnd(int descriptor) {
  std::string bytes;
  std::array<char, 65'536> part{};
  ssize_t count = 0;
  while ((count = ::read(descriptor, part.data(), part.size())) > 0) {
    bytes.append(part.data(), static_cast<std::size_t>(count));
  }
  return bytes;
}

// In the binary form of the portable pixmap format.
std::string pixmap(const Shape& shape, const std::string& pixels) {
  if (shape.width == 0 || pixels.size() < std::size_t{shape.stride} * shape.height) {
    throw std::runtime_error("KWin takes no picture");
  }
  std::string bytes = "P6\n" + std::to_string(shape.width) + " " + std::to_string(shape.height) + "\n255\n";
  for (std::size_t y = 0; y < shape.height; ++y) {
    for (std::size_t x = 0; x < shape.width; ++x) {
      const std::size_t at = y * shape.stride + 4 * x;
      bytes += {pixels[at + 2], pixels[at + 1], pixels[at]};
    }
  }
  return bytes;
}

} // namespace

KWinDesktop::KWinDesktop(const Options& options)
    : ShellDesktop({{"XDG_SESSION_TYPE", "wayland"}, {"XDG_CURRENT_DESKTOP", "KDE"}}) {
  startCompositor(options);
}

KWinDesktop::~KWinDesktop() {
  m_compositor->signal(SIGTERM);
  m_compositor->waitForEnd();
}

void KWinDesktop::startCompositor(const Options& options) {
  // The installed one has a right of its own, with which it would take no path to its parts from us; a copy
  // under the same name has not.
  const fs::path program = folder().path() / "kwin_wayland";
  fs::copy_file("/usr/bin/kwin_wayland", program);
  const fs::path told = runtimeDir() / "kwin.names";
  const fs::path script = folder().write(
      "tell-names", "#!/bin/sh\nprintf '%s\\n' \"$DISPLAY\" \"$XAUTHORITY\" >'" + told.string() +
                        ".new' && mv '" + told.string() + ".new' '" + told.string() + "'\n");
  fs::permissions(script, fs::perms::owner_all);
  Environment added{{"KWIN_COMPOSE", "Q"}};
  if (options.pictures) added = {{"KWIN_COMPOSE", "O2"}, {"KWIN_SCREENSHOT_NO_PERMISSION_CHECKS", "1"}};
  m_compositor = &launch({program.string(), "--virtual", "--no-lockscreen", "--xwayland", "--width",
                          std::to_string(options.width), "--height", std::to_string(options.height),
                          "--socket", socketName, script.string()},
                         added);
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
  listener().answer("", "Answer", [&](sd_bus_message* call, sd_bus_message*) {
    const char* from = "";
    const char* said = "";
    if (sd_bus_message_read(call, "ss", &from, &said) > 0 && from == name) heard = std::string("=") + said;
  });
  if (!runScript(file, name)) throw std::runtime_error("KWin runs no script");
  require("what the script says", [&] {
    std::string now;
    listener().perform([&](sd_bus*) { now = heard; });
    return !now.empty();
  });
  return heard.substr(1);
}

bool KWinDesktop::hasScript(const std::string& name) {
  int isLoaded = 0;
  listener().perform([&](sd_bus* bus) {
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
  listener().perform([&](sd_bus* bus) {
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

void KWinDesktop::place(const Program& program, int x, int y, int width, int height) {
  const std::string condition = "w.pid === " + std::to_string(program.pid());
  require("a window", [&] { return windowsWhere(condition) > 0; });
  const auto orOwn = [](int length, const char* own) {
    return std::to_string(length) + " || w.frameGeometry." + own;
  };
  script("var w = all.filter(function(w) { return " + condition +
         "; })[0]; w.frameGeometry = {x: " + std::to_string(x) + ", y: " + std::to_string(y) +
         ", width: " + orOwn(width, "width") + ", height: " + orOwn(height, "height") + "};");
}

bool KWinDesktop::takesPictures() {
  bool hasObject = false;
  listener().perform([&](sd_bus* bus) {
    hasObject = sd_bus_call_method(bus, shell, screenShotPath, "org.freedesktop.DBus.Introspectable",
                                   "Introspect", nullptr, nullptr, "") >= 0;
  });
  return hasObject;
}

fs::path KWinDesktop::takenPicture() {
  std::array<int, 2> ends{-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  Shape shape;
  listener().perform([&](sd_bus* bus) {
    sd_bus_message* reply = nullptr;
    if (sd_bus_call_method(bus, shell, screenShotPath, "org.kde.KWin.ScreenShot2", "CaptureActiveScreen",
                           nullptr, &reply, "a{sv}h", 0, ends[1]) >= 0) {
      shape = shapeIn(reply);
    }
    sd_bus_message_unref(reply);
  });
  ::close(ends[1]);
  // The pixels come after the answer; a refusal has none.
  const std::string pixels = readToEnd(ends[0]);
  ::close(ends[0]);
  return folder().write("tmp/picture.ppm", pixmap(shape, pixels));
}

bool KWinDesktop::screenshot(const fs::path& png) {
  return takePicture({"convert", takenPicture().string()}, png);
}

} // namespace vantle::desktop
