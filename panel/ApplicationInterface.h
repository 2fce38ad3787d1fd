// SPDX-License-Identifier: MIT
#pragma once

#include "panel/PanelController.h"

#include <QVariantMap>

namespace vantle {

// org.freedesktop.Application, as it is called by app menus.
class ApplicationInterface : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  explicit ApplicationInterface(PanelController& panel) : QObject(&panel), m_panel(panel) {}

 public slots:
  void Activate(const QVariantMap& platformData);
  void Open(const QStringList& uris,
            const QVariantMap& platformData); // there is nothing to open but the panel
  void ActivateAction(const QString& name, const QVariantList& parameter, const QVariantMap& platformData);

 private:
  PanelController& m_panel;
};

} // namespace vantle
