// SPDX-License-Identifier: MIT
// The settings window over a simulated engine, with real files of settings, autostart and apps in the XDG
// folders. Does what the lines of a pipe say (its only argument), and says "done LINE" after each:
//   show | boost-front | release-after MILLISECONDS | where LABEL | focus | seen | scrolled | free | state |
//   look | quit
#include "desktop/Desktop.h"
#include "desktop/QtEventLoop.h"
#include "look/Appearance.h"
#include "look/LookEngine.h"
#include "platform/linux/catalog/DesktopCatalog.h"
#include "platform/linux/login/AutostartLoginItem.h"
#include "platform/posix/files/PosixFileStore.h"
#include "platform/shared/JsonUserDefaults.h"
#include "platform/simulated/SampleDesktop.h"
#include "settings/SettingsWindowController.h"
#include "settings/model/SettingsModel.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QScreen>
#include <QSocketNotifier>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace vantle;

class Program {
 public:
  explicit Program(const char* pipe) : m_commands(::open(pipe, O_RDWR | O_CLOEXEC)) {
    m_appearance.apply(m_settings.appearance.get());
    m_settings.applyAppearance = [this](AppearanceMode mode) { m_appearance.apply(mode); };
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { read(); });
  }

 private:
  static QQuickView* view() {
    for (QWindow* window : QGuiApplication::topLevelWindows()) {
      if (auto* found = qobject_cast<QQuickView*>(window)) return found;
    }
    return nullptr;
  }
  static SettingsModel* model() { return view()->rootObject()->property("model").value<SettingsModel*>(); }

  // The button of that name that is seen and can be pressed.
  static QQuickItem* labelled(QQuickItem* below, const QString& label) {
    if (!below->isVisible() || !below->isEnabled()) return nullptr;
    if (below->property("label").toString() == label) return below;
    for (QQuickItem* child : below->childItems()) {
      if (QQuickItem* found = labelled(child, label)) return found;
    }
    return nullptr;
  }
  static void say(const QString& line) {
    std::printf("%s\n", line.toUtf8().constData());
    std::fflush(stdout);
  }
  static void sayWhere(const QString& label) {
    QQuickItem* const item = labelled(view()->contentItem(), label);
    if (item == nullptr) return say("nowhere " + label);
    for (QQuickItem* above = item; above != nullptr; above = above->parentItem()) {
      if (above->metaObject()->indexOfMethod("reveal(QVariant)") >= 0)
        QMetaObject::invokeMethod(above, "reveal", Q_ARG(QVariant, QVariant::fromValue(item)));
    }
    const QPointF middle = item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
    say(QString("at %1 %2").arg(qRound(middle.x())).arg(qRound(middle.y())));
  }
  // Whether all of what has the keyboard is within what it scrolls in.
  static void saySeen() {
    const QQuickItem* const item = view()->activeFocusItem();
    const QQuickItem* area = item;
    while (area != nullptr && area->metaObject()->indexOfMethod("reveal(QVariant)") < 0)
      area = area->parentItem();
    const bool isSeen =
        area != nullptr && area->mapRectToScene(area->boundingRect())
                               .contains(item->mapRectToScene({0, 0, item->width(), item->height()}));
    say(isSeen ? "seen" : "hidden");
  }
  // How far the pane is scrolled, and how far it can be, in points.
  static void sayScrolled() {
    qreal most = 0;
    qreal way = 0;
    for (const QQuickItem* item : view()->rootObject()->findChildren<QQuickItem*>()) {
      if (!item->property("overflows").toBool()) continue;
      most = item->property("contentY").toReal();
      way = item->property("contentHeight").toReal() - item->height();
    }
    say(QString("scrolled %1 of %2").arg(qRound(most)).arg(qRound(way)));
  }
  static void sayState() {
    int windows = 0;
    for (QWindow* window : QGuiApplication::topLevelWindows()) windows += window->isVisible() ? 1 : 0;
    const QRect place = view()->geometry();
    const QRect whole = view()->frameGeometry();
    const QRect screen = view()->screen()->availableGeometry();
    say(QString("windows %1, pane %2, size %3x%4, off centre %5 %6, at %7 %8%9%10%11")
            .arg(windows)
            .arg(model()->paneIndex())
            .arg(place.width())
            .arg(place.height())
            .arg(whole.center().x() - screen.center().x())
            .arg(whole.center().y() - screen.center().y())
            .arg(view()->framePosition().x())
            .arg(view()->framePosition().y())
            .arg(view()->isActive() ? ", active" : "", view()->frameMargins().top() > 0 ? ", framed" : "",
                 screen.contains(whole) ? ", in sight" : ""));
  }

  void read() {
    char bytes[4096];
    const ssize_t count = ::read(m_commands, bytes, sizeof bytes);
    if (count > 0) m_pending.append(bytes, static_cast<qsizetype>(count));
    for (qsizetype end = 0; (end = m_pending.indexOf('\n')) >= 0;) {
      const QString line = QString::fromUtf8(m_pending.left(end));
      m_pending.remove(0, end + 1);
      obey(line.section(' ', 0, 0), line.section(' ', 1));
      std::printf("done %s\n", line.toUtf8().constData());
      std::fflush(stdout);
    }
  }

  void obey(const QString& verb, const QString& rest) {
    if (verb == "show") m_controller.show();
    if (verb == "boost-front") {
      m_machine.activate(m_desktop.editor);
      m_engine.alwaysBoost();
    }
    if (verb == "release-after") m_controller.setKeepTime(std::chrono::milliseconds(rest.toInt()));
    if (verb == "where") sayWhere(rest);
    if (verb == "focus") {
      const QQuickItem* item = view()->activeFocusItem();
      say("focus " + (item != nullptr ? item->property("label").toString() : QString("nothing")));
    }
    if (verb == "seen") saySeen();
    if (verb == "scrolled") sayScrolled();
    if (verb == "free") {
      const QRect free = QGuiApplication::primaryScreen()->availableGeometry();
      say(QString("free %1x%2").arg(free.width()).arg(free.height()));
    }
    if (verb == "state") view() != nullptr ? sayState() : say("no window");
    if (verb == "look")
      say(QString("look %1, scale %2")
              .arg(QGuiApplication::font().family())
              .arg(view()->effectiveDevicePixelRatio()));
    if (verb == "quit") QCoreApplication::quit();
  }

  int m_commands;
  QByteArray m_pending;
  QSocketNotifier m_notifier{m_commands, QSocketNotifier::Read};
  XdgFolders m_folders = XdgFolders::fromEnvironment();
  PosixFileStore m_files{m_folders.data, PosixFileStore::Sync::none};
  JsonUserDefaults m_defaults{m_files, m_folders.config, "com.halvo.vantle"};
  SimulatedMachine m_machine;
  SampleDesktop m_desktop = openSampleDesktop(m_machine);
  AppSettings m_settings{m_defaults};
  QtEventLoop m_loop;
  std::unique_ptr<Desktop> m_parts = Desktop::make(m_loop);
  Appearance m_appearance{m_parts->scheme()};
  Engine m_engine{ports(), m_settings};
  UpdateChecker m_checker{configuration(), m_settings, m_machine.clock, [](const std::string& address) {
                            std::printf("opened %s\n", address.c_str());
                            std::fflush(stdout);
                          }};
  AutostartLoginItem m_login{AutostartSetup::from(
      m_folders, [](const char* name) { return std::getenv(name); },
      QCoreApplication::applicationFilePath().toStdString())};
  DesktopCatalog m_catalog{std::make_shared<DesktopEntries>(m_folders.allData())};
  SettingsWindowController m_controller{
      {m_engine, m_settings, m_checker, m_login, m_catalog, m_parts->shellExtension()},
      {m_settings, m_parts->icons(), m_parts->heap(), m_parts->words()}};

  Machine ports() {
    const Machine all = m_machine.ports();
    return {all.host,     all.processes,     all.band,    all.workspace, all.audio, all.power,
            all.pressure, all.notifications, m_defaults,  all.files,     all.clock, all.launcher,
            all.text,     all.loginItem,     all.catalog, all.hooks,     all.games};
  }
  static UpdateConfiguration configuration() {
    UpdateConfiguration made;
    made.version = "0.1.0";
    made.feed = qEnvironmentVariable("VANTLE_TEST_FEED").toStdString();
    made.vendorHost = "localhost";
    made.authorities = qEnvironmentVariable("VANTLE_TEST_AUTHORITY").toStdString();
    return made;
  }
};

} // namespace

int main(int argc, char** argv) {
  prepareRendering();
  QGuiApplication application(argc, argv);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  const Program program(argv[1]);
  return QGuiApplication::exec();
}
