// SPDX-License-Identifier: MIT
#include "panel/ApplicationInterface.h"

#include <utility>

namespace vantle {

namespace {

// The caller waits for the answer, so the work comes after it.
void runSoon(QTimer& timer) {
  if (!timer.isActive()) timer.start(0);
}

} // namespace

ApplicationInterface::ApplicationInterface(PanelController& panel, QString busName)
    : QObject(&panel), m_busName(std::move(busName)) {
  for (QTimer* timer : {&m_show, &m_openSettings, &m_quit}) timer->setSingleShot(true);
  connect(&m_show, &QTimer::timeout, &panel, [&panel] { panel.show(); });
  connect(&m_openSettings, &QTimer::timeout, &panel, [&panel] { panel.openSettings(); });
  connect(&m_quit, &QTimer::timeout, &panel, [&panel] { panel.quit(); });
  connect(m_bus.get(), &SessionBus::opened, this, &ApplicationInterface::enterBus);
  if (m_bus->isConnected()) enterBus();
}

void ApplicationInterface::enterBus() {
  QDBusConnection bus = m_bus->connection();
  if (bus.registerObject(QStringLiteral("/com/halvo/vantle"), this, QDBusConnection::ExportAllSlots)) {
    bus.registerService(m_busName);
  }
}

void ApplicationInterface::Activate(const QVariantMap&) { runSoon(m_show); }

void ApplicationInterface::Open(const QStringList&, const QVariantMap& platformData) {
  Activate(platformData);
}

void ApplicationInterface::ActivateAction(const QString& name, const QVariantList&, const QVariantMap&) {
  if (name == QLatin1String("settings")) runSoon(m_openSettings);
  if (name == QLatin1String("quit")) runSoon(m_quit);
}

void exportApplication(PanelController& panel, const QString& busName) {
  new ApplicationInterface(panel, busName); // the panel owns it
}

} // namespace vantle
