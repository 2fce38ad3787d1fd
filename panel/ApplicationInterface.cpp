// SPDX-License-Identifier: MIT
#include "panel/ApplicationInterface.h"

#include <QDBusConnection>
#include <QTimer>
#include <memory>

namespace vantle {

// The caller waits for the answer, so the work comes after it.
void ApplicationInterface::Activate(const QVariantMap&) {
  QTimer::singleShot(0, &m_panel, [this] { m_panel.show(); });
}

void ApplicationInterface::Open(const QStringList&, const QVariantMap& platformData) {
  Activate(platformData);
}

void ApplicationInterface::ActivateAction(const QString& name, const QVariantList&, const QVariantMap&) {
  if (name == QLatin1String("settings")) QTimer::singleShot(0, &m_panel, [this] { m_panel.openSettings(); });
  if (name == QLatin1String("quit")) QTimer::singleShot(0, &m_panel, [this] { m_panel.quit(); });
}

bool exportApplication(PanelController& panel, QDBusConnection bus) {
  auto application = std::make_unique<ApplicationInterface>(panel);
  const bool done = bus.registerObject(QStringLiteral("/com/halvo/vantle"), application.get(),
                                       QDBusConnection::ExportAllSlots);
  if (done) static_cast<void>(application.release()); // the panel owns it
  return done;
}

} // namespace vantle
