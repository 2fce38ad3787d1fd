// SPDX-License-Identifier: MIT
#include "panel/PanelModel.h"

#include "look/DisplayText.h"

#include <utility>

namespace vantle {

PanelModel::PanelModel(Engine& engine, Actions actions) : m_engine(engine), m_actions(std::move(actions)) {}

void PanelModel::appear() {
  m_observers.clear();
  m_observers.push_back(m_engine.managedNames.observe([this] { refresh(); }));
  m_observers.push_back(m_engine.activeGame.observe([this] { emit gameChanged(); }));
  m_observers.push_back(m_engine.lastFrontmost.observe([this] { emit frontChanged(); }));
  m_observers.push_back(m_engine.automatic.observe([this] { emit automaticChanged(); }));
  m_observers.push_back(m_engine.pause.observe([this] { emit pauseChanged(); }));
  refresh();
  emit gameChanged();
  emit frontChanged();
  emit automaticChanged();
  emit pauseChanged();
}

void PanelModel::disappear() { m_observers.clear(); }

void PanelModel::refresh() {
  m_usage.clear();
  for (const AppUsage& app : m_engine.usageList()) {
    const QString memory = QString::fromStdString(byteText(app.bytes));
    m_usage.append(QVariant::fromValue(UsageRow{app.id, displayText(app.name), memory}));
  }
  m_protected.clear();
  for (const std::string& name : m_engine.protectedInUse()) m_protected.append(displayText(name));
  m_pressure = m_engine.currentPressureLevel();
  m_ownBytes = m_engine.ownFootprint();
  emit refreshed();
}

QString PanelModel::gameName() const {
  const AppRef& game = m_engine.activeGame.get();
  return game ? displayText(game->localizedName().value_or(std::string())) : QString();
}

QString PanelModel::frontName() const {
  const AppRef& front = m_engine.lastFrontmost.get();
  return front ? displayText(front->localizedName().value_or(std::string())) : QString();
}

QString PanelModel::pauseText() const { return vantle::pauseText(m_engine.pause.get()); }

PanelModel::Pressure PanelModel::pressure() const {
  switch (m_pressure) {
  case MemoryPressure::Level::warning:
    return Warning;
  case MemoryPressure::Level::critical:
    return Critical;
  case MemoryPressure::Level::normal:
    break;
  }
  return Normal;
}

QString PanelModel::pressureWord() const {
  switch (m_pressure) {
  case MemoryPressure::Level::warning:
    return QStringLiteral("High");
  case MemoryPressure::Level::critical:
    return QStringLiteral("Critical");
  case MemoryPressure::Level::normal:
    break;
  }
  return QStringLiteral("Normal");
}

QString PanelModel::ownMemory() const { return QString::fromStdString(byteText(m_ownBytes)) + " memory"; }

QString PanelModel::iconOf(int pid) const {
  const AppRef app = m_engine.runningApplication(pid);
  return app ? QString::fromStdString(app->iconName().value_or(std::string())) : QString();
}

void PanelModel::boostNow() {
  if (const AppRef front = m_engine.lastFrontmost.get()) m_engine.boostNow(front);
}

void PanelModel::alwaysBoost() { m_engine.alwaysBoost(); }

void PanelModel::turnOffBoost() { m_engine.turnOffBoost(); }

void PanelModel::openSettings() const { m_actions.openSettings(); }

void PanelModel::quit() const { m_actions.quit(); }

} // namespace vantle
