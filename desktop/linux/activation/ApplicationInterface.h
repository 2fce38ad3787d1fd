// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/SessionBus.h"
#include "desktop/linux/activation/HandedToken.h"
#include "panel/ports/Activation.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QVariantMap>
#include <memory>

namespace vantle {

// org.freedesktop.Application, as it is called by app menus and by another copy that is started; under the
// program's own name, on every bus that takes the place of one that ended. Actions: "settings" and "quit".
class ApplicationInterface : public QObject, public Registration {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  ApplicationInterface(SessionBus& bus, Activation::Actions actions);

 public slots:
  void Activate(const QVariantMap& platformData);
  void Open(const QStringList& uris,
            const QVariantMap& platformData); // there is nothing to open but the panel
  void ActivateAction(const QString& name, const QVariantList& parameter, const QVariantMap& platformData);

 private:
  void enterBus();

  SessionBus& m_bus;
  Activation::Actions m_actions;
  // Each runs until what it stands for is done: once, however many calls come until then.
  QTimer m_show;
  QElapsedTimer m_sinceShown;
  QTimer m_openSettings;
  HandedToken m_token; // for the settings
  QTimer m_quit;
};

class BusActivation final : public Activation {
 public:
  explicit BusActivation(SessionBus& bus) : m_bus(bus) {} // which outlives every registration

  std::unique_ptr<Registration> answer(Actions actions) override;

 private:
  SessionBus& m_bus;
};

} // namespace vantle
