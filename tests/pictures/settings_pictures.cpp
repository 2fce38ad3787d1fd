// SPDX-License-Identifier: MIT
// Draws the panes of the settings window and its app picker in every state, light and dark, in every accent,
// and checks that their texts can be read.
#include "desktop/Desktop.h"
#include "desktop/QtEventLoop.h"
#include "engine/Engine.h"
#include "look/Appearance.h"
#include "look/LookEngine.h"
#include "platform/simulated/SimulatedMachine.h"
#include "settings/SettingsWindow.h"
#include "tests/pictures/Readable.h"
#include "tests/unit/settings/ScriptedExtension.h"
#include "tests/unit/update/FeedServer.h"

#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <string>

namespace {

using namespace vantle;
using testing_support::FeedServer;
using testing_support::TestCertificate;

constexpr int leastTexts = 5; // of the picker with nothing in it
constexpr QSize usualSize(760, 560);
constexpr QSize tile(252, 718); // a fifth of 1280

const TestCertificate& certificate() {
  static const TestCertificate made = testing_support::makeCertificate("localhost");
  return made;
}

// A window over apps and a feed that are not there.
class Stage {
 public:
  Stage(AppearanceMode mode, AccentTheme accent) {
    m_appearance.apply(mode);
    settings.appearance.set(mode);
    settings.accent.set(accent);
    machine.processes.find(machine.host.self)->footprint = 12'900'000;
    m_catalog.applications = {
        {"org.example.browser", "Web Browser", "web-browser", ""},
        {"org.example.editor", "Text Editor", "accessories-text-editor", ""},
        {"org.example.calculator", "Calculator", "accessories-calculator", ""},
        {"org.example.terminal", "Terminal", "utilities-terminal", ""},
        {"org.example.files", "Files", "system-file-manager", ""},
        {"org.example.draw", "Drawing Board", "applications-graphics", ""},
        {"org.example.long", "An app whose name is longer than any list can show, whoever made it up", "",
         ""},
        {"com.spotify.client", "Spotify", "multimedia-player", ""},
        {"com.obsproject.obs-studio", "OBS Studio", "camera-video", ""},
        {"org.example.asteroids", "Asteroids", "applications-games", ""},
        {"org.example.rtl", "משחק", "", ""},
    };
  }

  void show(Pane pane, const QSize& size) {
    m_window.emplace(m_views, SettingsParts{engine, settings, checker, m_login, m_catalog, extension},
                     WindowState{pane, size, {}}, [] {});
    m_window->show();
  }
  static QQuickView& view() {
    for (QWindow* window : QGuiApplication::topLevelWindows()) {
      if (auto* found = qobject_cast<QQuickView*>(window)) return *found;
    }
    throw std::logic_error("no window");
  }
  static SettingsModel& model() { return *view().rootObject()->property("model").value<SettingsModel*>(); }

  // As tiling window managers do, which ask nobody how small a window may be.
  static void putInTile() {
    view().setMinimumSize({});
    view().resize(tile);
    QCoreApplication::processEvents();
  }
  void openPicker() { model().picker()->openFor(model().boost()->userGames()); }
  // Brings the end of the pane into view, once it is known where that is.
  static void showEnd() {
    view().grabWindow();
    scrollToEnd(view().rootObject());
  }
  static void scrollToEnd(QQuickItem* below) {
    if (below->property("overflows").toBool())
      below->setProperty("contentY", below->property("contentHeight").toReal() - below->height());
    for (QQuickItem* child : below->childItems()) scrollToEnd(child);
  }
  void checkAgainst(FeedServer::Behaviour behaviour) {
    m_server.behaviour = std::move(behaviour);
    checker.check();
    pictures::waitFor([this] { return !std::holds_alternative<update::Checking>(checker.state.get()); });
  }

  SimulatedMachine machine;
  ScriptedExtension extension;
  AppSettings settings{machine.defaults};
  Engine engine{machine.ports(), settings};

 private:
  QtEventLoop m_loop;
  std::unique_ptr<Desktop> m_desktop = Desktop::make(m_loop);
  Appearance m_appearance{m_desktop->scheme()};
  SimulatedCatalog m_catalog;
  SimulatedLoginItem m_login;
  FeedServer m_server{certificate()};

 public:
  UpdateChecker checker{{.version = "1.9",
                         .feed = m_server.address(),
                         .vendorHost = "localhost",
                         .authorities = certificate().pem},
                        settings,
                        machine.clock,
                        {}};

 private:
  LookEngine m_views{settings, m_desktop->icons(), m_desktop->words()};
  std::optional<SettingsWindow> m_window;
};

FeedServer::Behaviour answering(const std::string& version) {
  return [version](QSslSocket& socket) {
    FeedServer::answer(socket, R"({"version": ")" + version + R"(", "url": "https://localhost/get"})");
  };
}

struct State {
  const char* name;
  Pane pane;
  std::function<void(Stage&)> prepare = [](Stage&) {}; // with the window open
  QSize size = usualSize;
};

const State states[] = {
    {"general", Pane::general},
    {"general-gnome", Pane::general,
     [](Stage& stage) { stage.extension.answer(ShellExtension::State::out); }},
    {"general-gnome-asking", Pane::general,
     [](Stage& stage) {
       stage.extension.answer(ShellExtension::State::out);
       Stage::model().extension()->toggle();
     }},
    {"general-gnome-waiting", Pane::general,
     [](Stage& stage) { stage.extension.answer(ShellExtension::State::waiting); }},
    {"general-gnome-at-work", Pane::general,
     [](Stage& stage) { stage.extension.answer(ShellExtension::State::atWork); }},
    {"boost", Pane::boost},
    {"boost-end", Pane::boost, [](Stage&) { Stage::showEnd(); }},
    {"boost-apps", Pane::boost,
     [](Stage& stage) {
       stage.settings.userGames.set(
           {"org.example.editor", "org.example.long", "no.longer.installed", "org.example.rtl"});
     }},
    {"boost-quitting", Pane::boost,
     [](Stage& stage) {
       stage.settings.quittableApps.set({"org.example.browser"});
       stage.settings.ramAction.set(RAMAction::quitMarked);
       Stage::showEnd();
     }},
    {"boost-smallest", Pane::boost, [](Stage&) {}, QSize(680, 480)},
    {"boost-large", Pane::boost, [](Stage&) {}, QSize(1200, 900)},
    {"boost-tile", Pane::boost, [](Stage&) { Stage::putInTile(); }},
    {"boost-tile-end", Pane::boost,
     [](Stage& stage) {
       stage.settings.protectedApps.set({"com.spotify.client", "org.example.long"});
       Stage::putInTile();
       Stage::showEnd();
     }},
    {"general-tile", Pane::general,
     [](Stage& stage) {
       stage.extension.answer(ShellExtension::State::out);
       Stage::model().extension()->toggle();
       Stage::putInTile();
     }},
    {"updates-tile", Pane::updates,
     [](Stage& stage) {
       stage.checkAgainst(answering("v1.10"));
       Stage::putInTile();
     }},
    {"about-tile", Pane::about, [](Stage&) { Stage::putInTile(); }},
    {"appearance-tile", Pane::appearance, [](Stage&) { Stage::putInTile(); }},
    {"picker-tile", Pane::boost,
     [](Stage& stage) {
       stage.openPicker();
       Stage::putInTile();
     }},
    {"appearance", Pane::appearance},
    {"appearance-smallest", Pane::appearance, [](Stage&) {}, QSize(680, 480)},
    {"updates-never", Pane::updates},
    {"updates-idle", Pane::updates,
     [](Stage& stage) {
       stage.settings.setLastUpdateCheck(Date(std::chrono::hours(24 * 365 * 50)));
       emit Stage::model().updates()->changed(); // nobody else tells of it without a check
     }},
    {"updates-checking", Pane::updates, [](Stage& stage) { stage.checker.check(); }},
    {"updates-current", Pane::updates, [](Stage& stage) { stage.checkAgainst(answering("1.9")); }},
    {"updates-available", Pane::updates, [](Stage& stage) { stage.checkAgainst(answering("v1.10")); }},
    {"updates-failed", Pane::updates,
     [](Stage& stage) { stage.checkAgainst([](QSslSocket& socket) { FeedServer::answer(socket, "?"); }); }},
    {"about", Pane::about},
    {"picker", Pane::boost, [](Stage& stage) { stage.openPicker(); }},
    {"picker-search", Pane::boost,
     [](Stage& stage) {
       stage.openPicker();
       Stage::model().picker()->setSearch("o");
       Stage::model().picker()->step(1);
     }},
    {"picker-nothing", Pane::boost,
     [](Stage& stage) {
       stage.openPicker();
       Stage::model().picker()->setSearch("nothing of this name");
     }},
    {"picker-folder", Pane::boost,
     [](Stage& stage) {
       const QTemporaryDir folder;
       for (const char* name : {"Applications", "Games", "Old things"}) QDir(folder.path()).mkdir(name);
       stage.openPicker();
       Stage::model().picker()->browse(folder.path());
       Stage::model().picker()->step(2);
     }},
};

bool draw(const State& state, AppearanceMode mode, AccentTheme accent, const QString& path) {
  Stage stage(mode, accent);
  stage.show(state.pane, state.size);
  state.prepare(stage);
  QCoreApplication::processEvents();
  return pictures::keep(*Stage::view().rootObject(), Stage::view().grabWindow(), path, leastTexts);
}

} // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" VANTLE_PICTURE_SCREEN);
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  prepareRendering();
  const QGuiApplication application(argc, argv);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  QGuiApplication::setFont(QFont("Inter"));
  std::vector<pictures::Subject> subjects;
  for (const State& state : states) {
    const std::string name = state.name;
    subjects.push_back(
        {name, name == "appearance" || name == "updates-available" || name == "picker-search"});
  }
  return pictures::drawAll(argc > 1 ? argv[1] : ".", "settings", subjects,
                           [](std::size_t at, AppearanceMode mode, AccentTheme accent, const QString& path) {
                             return draw(states[at], mode, accent, path);
                           });
}
