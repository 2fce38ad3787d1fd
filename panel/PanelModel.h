// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"
#include "engine/Engine.h"

#include <QObject>
#include <QStringList>
#include <QVariantList>
#include <functional>
#include <memory>
#include <qqml.h>
#include <vector>

namespace vantle {

// One line of the list of apps in the background.
struct UsageRow {
  Q_GADGET
  Q_PROPERTY(int pid MEMBER pid)
  Q_PROPERTY(QString name MEMBER name)
  Q_PROPERTY(QString memory MEMBER memory)

 public:
  int pid = 0;
  QString name;
  QString memory; // as text
};

// What the panel shows, and what it can ask for. The apps in the background, the protected names, the memory
// pressure and the own memory are read when the panel appears and each time the engine's managed apps change,
// and at no other moment; the rest follows the engine at once.
class PanelModel : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the panel's window")
  Q_PROPERTY(bool boosting READ boosting NOTIFY gameChanged)
  Q_PROPERTY(QString gameName READ gameName NOTIFY gameChanged)
  Q_PROPERTY(QString frontName READ frontName NOTIFY frontChanged)
  Q_PROPERTY(bool automatic READ automatic WRITE setAutomatic NOTIFY automaticChanged)
  Q_PROPERTY(QString pauseText READ pauseText NOTIFY pauseChanged)
  Q_PROPERTY(QVariantList usage READ usage NOTIFY refreshed)
  Q_PROPERTY(QStringList protectedNames READ protectedNames NOTIFY refreshed)
  Q_PROPERTY(QString leftAlone READ leftAlone NOTIFY refreshed)
  Q_PROPERTY(Pressure pressure READ pressure NOTIFY refreshed)
  Q_PROPERTY(QString pressureWord READ pressureWord NOTIFY refreshed)
  Q_PROPERTY(QString ownMemory READ ownMemory NOTIFY refreshed)

 public:
  enum Pressure { Normal, Warning, Critical };
  Q_ENUM(Pressure)

  struct Actions {
    std::function<void()> openSettings;
    std::function<void()> quit;
    std::function<void()> close;
  };

  PanelModel(Engine& engine, Actions actions);

  void appear();    // refreshes, and follows the engine from now on
  void disappear(); // nothing is read any more

  bool boosting() const { return m_engine.activeGame.get() != nullptr; }
  QString gameName() const;
  QString frontName() const; // empty when there is no app to offer
  bool automatic() const { return m_engine.automatic.get(); }
  void setAutomatic(bool value) { m_engine.setAutomatic(value); }
  QString pauseText() const; // empty without a pause
  QVariantList usage() const { return m_usage; }
  QStringList protectedNames() const { return m_protected; }
  // Which apps are left alone and why, a line for each reason; empty when there are none, or no Boost.
  QString leftAlone() const { return m_leftAlone; }
  Pressure pressure() const;
  QString pressureWord() const;
  QString ownMemory() const;
  // A themed name or a path; empty when there is no such app or it has no icon.
  Q_INVOKABLE QString iconOf(int pid) const;
  Q_INVOKABLE bool isRunning(int pid) const;

  Q_INVOKABLE void boostNow();
  Q_INVOKABLE void alwaysBoost();
  Q_INVOKABLE void turnOffBoost();
  Q_INVOKABLE void endPause();
  // Of an app in the background: whether the desktop can bring it to the front, and doing so; whether the
  // person's protected list could hold it, which knows apps by their identifiers alone, and putting it there.
  Q_INVOKABLE bool canComeToFront(int pid) const;
  Q_INVOKABLE void bringToFront(int pid);
  Q_INVOKABLE bool canBeProtected(int pid) const;
  Q_INVOKABLE void neverSlowDown(int pid);
  Q_INVOKABLE void openSettings() const;
  Q_INVOKABLE void quit() const;

 signals:
  void gameChanged();
  void frontChanged();
  void automaticChanged();
  void pauseChanged();
  void refreshed();

 private:
  QString nameOf(const AppUsage& app) const;
  void refresh();

  Engine& m_engine;
  Actions m_actions;
  std::vector<std::unique_ptr<Registration>> m_observers;
  QVariantList m_usage;
  QStringList m_protected;
  QString m_leftAlone;
  MemoryPressure::Level m_pressure = MemoryPressure::Level::normal;
  std::uint64_t m_ownBytes = 0;
};

} // namespace vantle
