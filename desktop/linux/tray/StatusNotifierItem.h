// SPDX-License-Identifier: MIT
#pragma once

#include "base/Names.h"
#include "desktop/linux/SessionBus.h"
#include "desktop/linux/activation/HandedToken.h"
#include "desktop/linux/tray/TrayMenu.h"
#include "panel/ports/Tray.h"

#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QPoint>
#include <QTimer>
#include <functional>
#include <vector>

namespace vantle {

// The icon as an object on the session bus (org.kde.StatusNotifierItem), announced to every tray service that
// appears there, as often as it appears, and on every bus that takes the place of one that ended.
class StatusNotifierItem : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
  Q_PROPERTY(QString Category READ category)
  Q_PROPERTY(QString Id READ id)
  Q_PROPERTY(QString Title READ title)
  Q_PROPERTY(QString Status READ status)
  Q_PROPERTY(int WindowId READ windowId)
  Q_PROPERTY(QString IconName READ iconName)
  Q_PROPERTY(vantle::TrayPixmaps IconPixmap READ iconPixmap)
  Q_PROPERTY(vantle::TrayToolTip ToolTip READ toolTip)
  Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
  Q_PROPERTY(QDBusObjectPath Menu READ menu)

 public:
  struct Handlers {
    std::function<void(QPoint)> activated; // at a native screen point
    std::function<void()> secondaryActivated;
    std::function<void(bool)> presence; // whether a tray shows the item
  };

  StatusNotifierItem(SessionBus& bus, Handlers handlers);

  void show(const TrayFace& face, bool onDark);
  void offer(std::vector<TrayEntry> menu);

  QString category() const { return QStringLiteral("ApplicationStatus"); }
  QString id() const { return QString::fromLatin1(names::identifier); }
  QString title() const { return QString::fromLatin1(names::display); }
  QString status() const { return QStringLiteral("Active"); }
  int windowId() const { return 0; }
  QString iconName() const { return {}; }
  TrayPixmaps iconPixmap() const; // in all the sizes that trays ask for
  TrayToolTip toolTip() const;
  bool itemIsMenu() const { return false; }
  QDBusObjectPath menu() const;

 public slots:
  void Activate(int x, int y);
  void SecondaryActivate(int x, int y);
  void ContextMenu(int x, int y); // the tray shows the menu itself; this is for trays that cannot
  void Scroll(int delta, const QString& orientation);
  void ProvideXdgActivationToken(const QString& token); // before one of the above, or a click in the menu

 signals:
  void NewIcon();
  void NewToolTip();
  void NewTitle();
  void NewStatus(const QString& status);

 private slots:
  void hostAppeared() const;

 private:
  void enterBus();
  void soon(std::function<void()> click);
  void announce();
  void askForHost();

  SessionBus& m_bus;
  QDBusServiceWatcher m_watcher;
  HandedToken m_token;
  TrayMenu m_menu;
  Handlers m_handlers;
  QString m_service;
  std::function<void()> m_click;
  QTimer m_activation; // runs until the click has its effect
  TrayFace m_face;
  bool m_isOnDark = false;
};

} // namespace vantle
