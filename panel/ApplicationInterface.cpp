// SPDX-License-Identifier: MIT
#include "panel/ApplicationInterface.h"

#include "base/Names.h"

#include <chrono>
#include <utility>

namespace vantle {

namespace {

// Somebody who asks over and over must not take the front from all other apps for good.
constexpr std::chrono::milliseconds shortestPause{500};

// The caller waits for the answer, so the work comes after it.
void runSoon(QTimer& timer, std::chrono::milliseconds delay = {}) {
  if (!timer.isActive()) timer.start(delay);
}

} // namespace

ApplicationInterface::ApplicationInterface(PanelController& panel, QString busName)
    : QObject(&panel), m_busName(std::move(busName)) {
  for (QTimer* timer : {&m_show, &m_openSettings, &m_quit}) timer->setSingleShot(true);
  connect(&m_show, &QTimer::timeout, &panel, [this, &panel] {
    m_sinceShown.start();
    panel.show();
  });
  connect(&m_openSettings, &QTimer::timeout, &panel, [&panel] { panel.openSettings(); });
  connect(&m_quit, &QTimer::timeout, &panel, [&panel] { panel.quit(); });
  connect(m_bus.get(), &SessionBus::opened, this, &ApplicationInterface::enterBus);
  if (m_bus->isConnected()) enterBus();
}

void ApplicationInterface::enterBus() {
  QDBusConnection bus = m_bus->connection();
  if (bus.registerObject(QString::fromLatin1(names::busPath), this, QDBusConnection::ExportAllSlots)) {
    bus.registerService(m_busName);
  }
}

void ApplicationInterface::Activate(const QVariantMap&) {
  const bool isAgain = m_sinceShown.isValid() && !m_sinceShown.hasExpired(shortestPause.count());
  runSoon(m_show, isAgain ? shortestPause : std::chrono::milliseconds(0));
}

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
