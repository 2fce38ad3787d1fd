// SPDX-License-Identifier: MIT
#pragma once

#include "settings/model/Switch.h"
#include "update/UpdateChecker.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>
#include <memory>

namespace vantle {

// What the update checker knows, in words.
class UpdatesModel : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The window makes its own")
  Q_PROPERTY(QString currentVersion READ currentVersion CONSTANT)
  Q_PROPERTY(vantle::Switch* automatically READ automatically CONSTANT)
  Q_PROPERTY(QString status READ status NOTIFY changed)
  Q_PROPERTY(QString symbol READ symbol NOTIFY changed) // empty for none
  Q_PROPERTY(Tone tone READ tone NOTIFY changed)
  Q_PROPERTY(bool checking READ isChecking NOTIFY changed)
  Q_PROPERTY(bool available READ isAvailable NOTIFY changed)
  Q_PROPERTY(QString action READ action NOTIFY changed) // the title of the button

 public:
  enum class Tone { plain, quiet, good, warning };
  Q_ENUM(Tone)

  UpdatesModel(UpdateChecker& checker, AppSettings& settings);

  QString currentVersion() const { return QString::fromStdString(m_checker.currentVersion); }
  Switch* automatically() { return &m_automatically; }
  QString status() const;
  QString symbol() const;
  Tone tone() const;
  bool isChecking() const { return is<update::Checking>(); }
  bool isAvailable() const { return is<update::Available>(); }
  QString action() const;

  Q_INVOKABLE void act(); // what the button does now

 signals:
  void changed();

 private:
  template <class Case> bool is() const { return std::holds_alternative<Case>(m_checker.state.get()); }
  QString lastChecked() const;

  UpdateChecker& m_checker;
  AppSettings& m_settings;
  Switch m_automatically;
  std::unique_ptr<Registration> m_observer;
};

// A moment as it is shown: an abbreviated date and a short time, in English, in the ways of the person's
// region and in their time zone.
QString shownMoment(Date moment);

} // namespace vantle
