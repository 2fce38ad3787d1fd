// SPDX-License-Identifier: MIT
#include "panel/PanelModel.h"

#include "look/DisplayText.h"

#include <utility>

namespace vantle {

namespace {

// With a place for the names of the apps.
QString reasonText(Verdict verdict) {
  switch (verdict) {
  case Verdict::heard:
    return PanelModel::tr("Playing audio: %1");
  case Verdict::keepsAwake:
    return PanelModel::tr("Downloading or keeping awake: %1");
  case Verdict::launcher:
    return PanelModel::tr("Started the Boost app: %1");
  case Verdict::protectedByPerson:
    return PanelModel::tr("On your list: %1");
  default:
    return PanelModel::tr("Part of the system: %1");
  }
}

// A line for each reason, with the names of its apps.
QString linesOf(const std::vector<SparedApp>& apps) {
  QStringList lines;
  for (const Verdict reason : {Verdict::heard, Verdict::keepsAwake, Verdict::launcher,
                               Verdict::protectedByPerson, Verdict::systemApp}) {
    QStringList names;
    for (const SparedApp& app : apps) {
      if (app.verdict == reason) names.append(displayText(app.name, std::string()));
    }
    if (!names.isEmpty()) lines.append(reasonText(reason).arg(names.join(QStringLiteral(", "))));
  }
  return lines.join(u'\n');
}

} // namespace

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
    m_usage.append(QVariant::fromValue(UsageRow{app.id, nameOf(app), memory}));
  }
  m_protected.clear();
  for (const std::string& name : m_engine.protectedInUse())
    m_protected.append(displayText(name, std::string()));
  m_leftAlone = linesOf(m_engine.sparedApps());
  m_pressure = m_engine.currentPressureLevel();
  m_ownBytes = m_engine.ownFootprint();
  emit refreshed();
}

// Of an app whose name cannot be seen that of its program.
QString PanelModel::nameOf(const AppUsage& app) const {
  const QString name = displayText(app.name);
  return name.isEmpty() ? shownName(m_engine.runningApplication(app.id)) : name;
}

QString PanelModel::gameName() const { return shownName(m_engine.activeGame.get()); }

QString PanelModel::frontName() const { return shownName(m_engine.lastFrontmost.get()); }

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
    return tr("High");
  case MemoryPressure::Level::critical:
    return tr("Critical");
  case MemoryPressure::Level::normal:
    break;
  }
  return tr("Normal");
}

QString PanelModel::ownMemory() const {
  return tr("%1 memory").arg(QString::fromStdString(byteText(m_ownBytes)));
}

QString PanelModel::iconOf(int pid) const {
  const AppRef app = m_engine.runningApplication(pid);
  return app ? QString::fromStdString(app->iconName().value_or(std::string())) : QString();
}

bool PanelModel::isRunning(int pid) const { return m_engine.runningApplication(pid) != nullptr; }

void PanelModel::boostNow() {
  if (const AppRef front = m_engine.lastFrontmost.get()) m_engine.boostNow(front);
}

void PanelModel::alwaysBoost() { m_engine.alwaysBoost(); }

void PanelModel::endPause() { m_engine.endPause(); }

void PanelModel::turnOffBoost() { m_engine.turnOffBoost(); }

bool PanelModel::canComeToFront(int pid) const {
  const AppRef app = m_engine.runningApplication(pid);
  return app && app->canComeToFront();
}

// The panel goes first: it has the keyboard, which the app is to get.
void PanelModel::bringToFront(int pid) {
  m_actions.close();
  if (const AppRef app = m_engine.runningApplication(pid)) app->bringToFront();
}

bool PanelModel::canBeProtected(int pid) const {
  const AppRef app = m_engine.runningApplication(pid);
  return app && app->bundleIdentifier();
}

void PanelModel::neverSlowDown(int pid) {
  if (const AppRef app = m_engine.runningApplication(pid)) m_engine.neverSlowDown(*app);
}

void PanelModel::openSettings() const { m_actions.openSettings(); }

void PanelModel::quit() const { m_actions.quit(); }

} // namespace vantle
