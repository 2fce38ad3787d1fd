// SPDX-License-Identifier: MIT
#include "desktop/linux/activation/ApplicationInterface.h"

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

ApplicationInterface::ApplicationInterface(SessionBus& bus, Activation::Actions actions)
    : m_bus(bus), m_actions(std::move(actions)) {
  for (QTimer* timer : {&m_show, &m_openSettings, &m_quit}) timer->setSingleShot(true);
  connect(&m_show, &QTimer::timeout, this, [this] {
    m_sinceShown.start();
    m_actions.show();
  });
  connect(&m_openSettings, &QTimer::timeout, this, [this] { m_token.during(m_actions.settings); });
  connect(&m_quit, &QTimer::timeout, this, [this] { m_actions.quit(); });
  connect(&m_bus, &SessionBus::opened, this, &ApplicationInterface::enterBus);
  if (m_bus.isConnected()) enterBus();
}

void ApplicationInterface::enterBus() {
  QDBusConnection bus = m_bus.connection();
  if (bus.registerObject(QString::fromLatin1(names::busPath), this, QDBusConnection::ExportAllSlots)) {
    bus.registerService(QString::fromLatin1(names::identifier));
  }
}

void ApplicationInterface::Activate(const QVariantMap&) {
  const bool isAgain = m_sinceShown.isValid() && !m_sinceShown.hasExpired(shortestPause.count());
  runSoon(m_show, isAgain ? shortestPause : std::chrono::milliseconds(0));
}

void ApplicationInterface::Open(const QStringList&, const QVariantMap& platformData) {
  Activate(platformData);
}

void ApplicationInterface::ActivateAction(const QString& name, const QVariantList&,
                                          const QVariantMap& platformData) {
  if (name == QLatin1String("settings")) {
    m_token.give(platformData.value(QStringLiteral("activation-token")).toString());
    runSoon(m_openSettings);
  }
  if (name == QLatin1String("quit")) runSoon(m_quit);
}

std::unique_ptr<Registration> BusActivation::answer(Actions actions) {
  return std::make_unique<ApplicationInterface>(m_bus, std::move(actions));
}

} // namespace vantle
