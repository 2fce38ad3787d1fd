// SPDX-License-Identifier: MIT
#pragma once

#include "settings/ports/ShellExtension.h"

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>
#include <memory>

namespace vantle {

// The switch for what has to stand in the desktop's shell. Before it is installed the person is asked.
class ExtensionModel : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The window makes its own")
  Q_PROPERTY(bool offered READ isOffered NOTIFY changed)
  Q_PROPERTY(bool on READ isOn NOTIFY changed)
  Q_PROPERTY(bool asking READ isAsking NOTIFY changed)
  Q_PROPERTY(QString note READ note NOTIFY changed)

 public:
  explicit ExtensionModel(ShellExtension& extension);

  bool isOffered() const { return m_extension.state() != ShellExtension::State::notOffered; }
  bool isOn() const;
  bool isAsking() const { return m_isAsking && !isOn(); }
  QString note() const; // what is to be known of it now

  Q_INVOKABLE void toggle();
  // The answers to the question.
  Q_INVOKABLE void install();
  Q_INVOKABLE void cancel() { setAsking(false); }

  void reload() { m_extension.reload(); }

 signals:
  void changed();

 private:
  void setAsking(bool isAsking);

  ShellExtension& m_extension;
  bool m_isAsking = false;
  std::unique_ptr<Registration> m_observer;
};

} // namespace vantle
