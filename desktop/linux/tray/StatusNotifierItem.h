// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/activation/HandedToken.h"
#include "desktop/linux/bus/GuardedObject.h"
#include "desktop/linux/tray/TrayMenu.h"
#include "panel/ports/Tray.h"

#include <QDBusServiceWatcher>
#include <QPoint>
#include <QTimer>
#include <functional>
#include <vector>

namespace vantle {

// The icon as an object on the session bus (org.kde.StatusNotifierItem), announced to every tray service that
// appears there, as often as it appears, and on every bus that takes the place of one that ended.
class StatusNotifierItem : public QObject, public BusInterface {
  Q_OBJECT

 public:
  struct Handlers {
    std::function<void(QPoint)> activated; // at a native screen point
    std::function<void()> secondaryActivated;
    std::function<void(bool)> presence; // whether a tray shows the item
  };

  StatusNotifierItem(SessionBus& bus, Handlers handlers);

  void show(const TrayFace& face, bool onDark);
  void offer(std::vector<TrayEntry> menu);

  QString name() const override;
  QString introspection() const override;
  bool take(const QDBusMessage& call) override;
  void takeProperties(const QDBusMessage& question) override;

 private slots:
  void hostAppeared() const;

 private:
  void enterBus();
  TrayPixmaps iconPixmap() const; // in all the sizes that trays ask for
  TrayToolTip toolTip() const;
  void soon(std::function<void()> click);
  void announce();
  void askForHost();

  SessionBus& m_bus;
  GuardedObject m_object;
  QDBusServiceWatcher m_watcher;
  HandedToken m_token; // before a click on the icon or in the menu
  TrayMenu m_menu;
  Handlers m_handlers;
  QString m_service;
  std::function<void()> m_click;
  QTimer m_activation; // runs until the click has its effect
  TrayFace m_face;
  bool m_isOnDark = false;
};

} // namespace vantle
