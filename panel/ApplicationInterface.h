// SPDX-License-Identifier: MIT
#pragma once

#include "look/SessionBus.h"
#include "panel/PanelController.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QVariantMap>
#include <memory>

namespace vantle {

// org.freedesktop.Application, as it is called by app menus.
class ApplicationInterface : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  ApplicationInterface(PanelController& panel, QString busName);

 public slots:
  void Activate(const QVariantMap& platformData);
  void Open(const QStringList& uris,
            const QVariantMap& platformData); // there is nothing to open but the panel
  void ActivateAction(const QString& name, const QVariantList& parameter, const QVariantMap& platformData);

 private:
  void enterBus();

  QString m_busName;
  std::shared_ptr<SessionBus> m_bus = SessionBus::shared();
  // Each runs until what it stands for is done: once, however many calls come until then.
  QTimer m_show;
  QElapsedTimer m_sinceShown;
  QTimer m_openSettings;
  QTimer m_quit;
};

} // namespace vantle
