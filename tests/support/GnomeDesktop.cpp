// SPDX-License-Identifier: MIT
#include "tests/support/GnomeDesktop.h"

#include <csignal>
#include <fstream>
#include <stdexcept>

namespace vantle::desktop {

namespace fs = std::filesystem;

namespace {

constexpr const char* shell = "org.gnome.Shell";
constexpr const char* stage = "stage@example.org"; // what runs scripts
constexpr const char* stagePath = "/org/example/Stage";
constexpr const char* stageInterface = "org.example.Stage";
constexpr const char* waylandName = "wayland-gnome";

// Around what runs scripts, up to 44 and from 45 on.
constexpr const char* oldHead = R"js(
const {Clutter, Gio, GLib, Shell} = imports.gi;
const Main = imports.ui.main;
)js";
constexpr const char* oldTail = "function init() { return new Stage(); }\n";
constexpr const char* newHead = R"js(
import Clutter from 'gi://Clutter';
import Gio from 'gi://Gio';
import GLib from 'gi://GLib';
import Shell from 'gi://Shell';
import * as Main from 'resource:///org/gnome/shell/ui/main.js';
)js";
constexpr const char* newTail = "export default class extends Stage {}\n";

constexpr const char* body = R"js(
const SHAPE = '<node><interface name="org.example.Stage"><method name="Run">' +
  '<arg type="s" direction="in"/><arg type="s" direction="out"/></method></interface></node>';
const BEFORE = `
  const isShown = actor => actor.visible || actor.meta_window.minimized;
  const all = global.get_window_actors().filter(isShown).map(actor => actor.meta_window).map(
    window => ({window, pid: window.get_pid(), caption: window.get_title() ?? ''}));
  let answered = '';
  const answer = text => { answered = String(text); };
  const front = () => all.find(w => w.window === global.display.focus_window);
  const activate = w => w.window.activate(global.display.get_current_time_roundtrip());
  const minimize = (w, isMinimized) => isMinimized ? w.window.minimize() : w.window.unminimize();
  const fillScreen = w => w.window.make_fullscreen();
`;
const KNOWN = {Main, Clutter, Gio, GLib, Shell};
class Stage {
  enable() {
    this._object = Gio.DBusExportedObject.wrapJSObject(SHAPE, this);
    this._object.export(Gio.DBus.session, '/org/example/Stage');
  }
  disable() { this._object.unexport(); }
  Run(text) { return new Function(...Object.keys(KNOWN), BEFORE + text + '; return answered;')(...Object.values(KNOWN)); }
}
)js";

} // namespace

GnomeDesktop::GnomeDesktop(const fs::path& extensions, const std::string& uuid, int width, int height)
    : ShellDesktop({{"XDG_SESSION_TYPE", "wayland"},
                    {"XDG_CURRENT_DESKTOP", "GNOME"},
                    {"GSETTINGS_BACKEND", "keyfile"},
                    {"WAYLAND_DISPLAY", waylandName}}),
      m_width(width), m_height(height) {
  setEnvironment("DBUS_SYSTEM_BUS_ADDRESS", m_systemBus.address());
  m_edition = installedEdition();
  installStage();
  std::string enabled = std::string("'") + stage + "'";
  if (!extensions.empty()) {
    fs::create_directories(extensionFolder(uuid));
    fs::copy(extensions / m_edition, extensionFolder(uuid), fs::copy_options::recursive);
    enabled += ", '" + uuid + "'";
  }
  enable(enabled);
  startShell();
}

GnomeDesktop::~GnomeDesktop() { endShell(); }

void GnomeDesktop::endShell() {
  m_compositor->signal(SIGTERM);
  m_compositor->waitForEnd();
}

void GnomeDesktop::logInAgain() {
  endShell();
  startShell();
}

fs::path GnomeDesktop::extensionFolder(const std::string& uuid) const {
  return dataHome() / "gnome-shell/extensions" / uuid;
}

std::string GnomeDesktop::installedEdition() {
  const fs::path told = folder().path() / "tmp/gnome.version";
  run({"sh", "-c", "gnome-shell --version >" + told.string()}); // "GNOME Shell 43.9"
  std::ifstream file(told);
  std::string word;
  int major = 0;
  file >> word >> word >> major;
  if (major == 0) throw std::runtime_error("no GNOME Shell is installed");
  return major < 45 ? "43" : "45";
}

void GnomeDesktop::installStage() {
  const bool isOld = m_edition == "43";
  const fs::path place = fs::relative(extensionFolder(stage), folder().path());
  folder().folder(place);
  folder().write(place / "extension.js",
                 std::string(isOld ? oldHead : newHead) + body + (isOld ? oldTail : newTail));
  folder().write(place / "metadata.json",
                 std::string(R"({"uuid": ")") + stage +
                     R"(", "name": "Stage", "description": "Runs scripts.", )" +
                     R"("session-modes": ["user", "unlock-dialog"], )" +
                     R"("shell-version": ["43", "44", "45", "46", "47", "48", "49"]})");
}

void GnomeDesktop::enable(const std::string& uuids) {
  const fs::path settings = fs::relative(configHome() / "glib-2.0/settings", folder().path());
  folder().folder(settings);
  folder().write(settings / "keyfile",
                 "[org/gnome/shell]\nwelcome-dialog-last-shown-version='9999'\nenabled-extensions=[" + uuids +
                     "]\n[org/gnome/desktop/interface]\nenable-animations=false\n");
}

void GnomeDesktop::startShell() {
  m_compositor = &launch({"gnome-shell", "--headless", "--wayland", "--wayland-display", waylandName,
                          "--virtual-monitor", std::to_string(m_width) + "x" + std::to_string(m_height)});
  const auto says = [this](const std::string& text) -> std::string {
    try {
      return script(text);
    } catch (const std::runtime_error&) {
      return {};
    }
  };
  // It begins with its overview, from which new windows take nothing. GNOME 48 never comes up when that is
  // taken away too early.
  require("GNOME's shell", [&] {
    return says("const isUp = !Main.layoutManager._startingUp; if (isUp) Main.overview.hide();"
                "answer(isUp && !Main.overview.visible)") == "true" ||
           !m_compositor->isRunning();
  });
  for (const char* variable : {"DISPLAY", "XAUTHORITY"})
    setEnvironment(variable, script("answer(GLib.getenv('" + std::string(variable) + "'))"));
}

void GnomeDesktop::click(int x, int y) {
  // A press that follows its motion at once may be taken for one at the place before; from GNOME 48 on one
  // that is followed by a motion at once, for one at the place after.
  point(x, y);
  script("const time = GLib.get_monotonic_time();"
         "for (const state of [Clutter.ButtonState.PRESSED, Clutter.ButtonState.RELEASED])"
         "  globalThis.stagePointer.notify_button(time, Clutter.BUTTON_PRIMARY, state);");
}

int GnomeDesktop::iconInBar(const std::string& uuid) {
  const std::string icon = "Main.panel.statusArea['" + uuid + "']";
  require("the icon",
          [&] { return script("answer(Boolean(" + icon + "?.get_child_at_index(0)?.gicon))") == "true"; });
  point(2, m_height - 2); // and it has been drawn
  std::string middle;     // no number before the shell has laid out its bar
  require("its place", [&] {
    middle =
        script("answer(Math.round(" + icon + ".get_transformed_position()[0] + " + icon + ".width / 2));");
    return middle != "NaN";
  });
  return std::stoi(middle);
}

bool GnomeDesktop::screenshot(const fs::path& png) {
  const fs::path taken = folder().path() / "tmp/picture.png";
  fs::remove(taken);
  script("const stream = Gio.File.new_for_path('" + taken.string() +
         "').create(Gio.FileCreateFlags.NONE, null);"
         "globalThis.stagePicture = '';"
         "new Shell.Screenshot().screenshot(false, stream, (camera, result) => {"
         "  try {"
         "    camera.screenshot_finish(result);"
         "    stream.close(null);"
         "    globalThis.stagePicture = 'taken';"
         "  } catch (error) {"
         "    globalThis.stagePicture = String(error);"
         "  }"
         "});");
  std::string outcome;
  require("a picture", [&] { return !(outcome = script("answer(globalThis.stagePicture)")).empty(); });
  std::error_code error;
  fs::copy_file(taken, png, fs::copy_options::overwrite_existing, error);
  return outcome == "taken" && !error;
}

void GnomeDesktop::point(int x, int y) {
  const std::string place = std::to_string(x) + ", " + std::to_string(y);
  script("globalThis.stagePointer = globalThis.stagePointer || "
         "  Clutter.get_default_backend().get_default_seat().create_virtual_device("
         "    Clutter.InputDeviceType.POINTER_DEVICE);"
         "globalThis.stagePointer.notify_absolute_motion(GLib.get_monotonic_time(), " +
         place + ");");
  require("the pointer",
          [&] { return script("const [x, y] = global.get_pointer(); answer([x, y].join(', '))") == place; });
  // What has happened is looked at with the next picture.
  script("globalThis.stageIsDrawn = false;"
         "const handler = global.stage.connect('after-update', () => {"
         "  globalThis.stageIsDrawn = true;"
         "  global.stage.disconnect(handler);"
         "});"
         "global.stage.queue_redraw();");
  require("a picture", [&] { return script("answer(globalThis.stageIsDrawn)") == "true"; });
}

std::string GnomeDesktop::script(const std::string& text) {
  std::string answered;
  std::string failure;
  listener().perform([&](sd_bus* bus) {
    sd_bus_message* reply = nullptr;
    sd_bus_error error{};
    const char* said = "";
    if (sd_bus_call_method(bus, shell, stagePath, stageInterface, "Run", &error, &reply, "s", text.c_str()) <
            0 ||
        sd_bus_message_read(reply, "s", &said) <= 0) {
      failure = error.message != nullptr ? error.message : "no answer";
    }
    answered = said;
    sd_bus_message_unref(reply);
    sd_bus_error_free(&error);
  });
  if (!failure.empty()) throw std::runtime_error("GNOME's shell: " + failure);
  return answered;
}

} // namespace vantle::desktop
