// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/activation/HandedToken.h"
#include "desktop/linux/bus/ProgramObject.h"
#include "panel/ports/Activation.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QVariantMap>
#include <memory>

namespace vantle {

// org.freedesktop.Application, as it is called by app menus and by another copy that is started. Actions:
// "settings" and "quit".
class ApplicationInterface : public QObject, public BusInterface, public Registration {
  Q_OBJECT

 public:
  ApplicationInterface(ProgramObject& object, Activation::Actions actions);
  ~ApplicationInterface() override;
  ApplicationInterface(const ApplicationInterface&) = delete;
  ApplicationInterface& operator=(const ApplicationInterface&) = delete;

  QString name() const override;
  QString introspection() const override;
  bool take(const QDBusMessage& call) override;
  void takeProperties(const QDBusMessage& question) override; // it has none

 private:
  void activate();
  void activateAction(const QString& action, const QVariantMap& platformData);

  ProgramObject& m_object;
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
  explicit BusActivation(ProgramObject& object) : m_object(object) {} // which outlives every registration

  std::unique_ptr<Registration> answer(Actions actions) override;

 private:
  ProgramObject& m_object;
};

} // namespace vantle
