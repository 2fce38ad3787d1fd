// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"

#include <QObject>
#include <QStringList>
#include <QtQml/qqmlregistration.h>
#include <memory>

namespace vantle {

// The accent colour and the light or dark look. Choices are told by their place in the order of declaration.
class AppearanceModel : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The window makes its own")
  Q_PROPERTY(QStringList accents READ accents CONSTANT)         // raw values
  Q_PROPERTY(QStringList accentNames READ accentNames CONSTANT) // as they are shown
  Q_PROPERTY(int accent READ accent NOTIFY accentChanged)
  Q_PROPERTY(QStringList modeNames READ modeNames CONSTANT)
  Q_PROPERTY(int mode READ mode NOTIFY modeChanged)

 public:
  explicit AppearanceModel(AppSettings& settings);

  QStringList accents() const;
  QStringList accentNames() const;
  QStringList modeNames() const;
  int accent() const { return static_cast<int>(m_settings.accent.get()); }
  int mode() const { return static_cast<int>(m_settings.appearance.get()); }
  Q_INVOKABLE void chooseAccent(int place);
  Q_INVOKABLE void chooseMode(int place);

 signals:
  void accentChanged();
  void modeChanged();

 private:
  AppSettings& m_settings;
  std::unique_ptr<Registration> m_accentObserver;
  std::unique_ptr<Registration> m_modeObserver;
};

} // namespace vantle
