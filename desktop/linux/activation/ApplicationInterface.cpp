// SPDX-License-Identifier: MIT
#include "desktop/linux/activation/ApplicationInterface.h"

#include <QDBusArgument>
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

ApplicationInterface::ApplicationInterface(ProgramObject& object, Activation::Actions actions)
    : m_object(object), m_actions(std::move(actions)) {
  for (QTimer* timer : {&m_show, &m_openSettings, &m_quit}) timer->setSingleShot(true);
  connect(&m_show, &QTimer::timeout, this, [this] {
    m_sinceShown.start();
    m_actions.show();
  });
  connect(&m_openSettings, &QTimer::timeout, this, [this] { m_token.during(m_actions.settings); });
  connect(&m_quit, &QTimer::timeout, this, [this] { m_actions.quit(); });
  m_object.add(*this, ProgramObject::Name::now);
}

ApplicationInterface::~ApplicationInterface() { m_object.remove(*this); }

QString ApplicationInterface::name() const { return QStringLiteral("org.freedesktop.Application"); }

QString ApplicationInterface::introspection() const {
  return QStringLiteral("  <interface name=\"org.freedesktop.Application\">\n"
                        "    <method name=\"Activate\">\n"
                        "      <arg name=\"platform_data\" type=\"a{sv}\" direction=\"in\"/>\n"
                        "    </method>\n"
                        "    <method name=\"Open\">\n"
                        "      <arg name=\"uris\" type=\"as\" direction=\"in\"/>\n"
                        "      <arg name=\"platform_data\" type=\"a{sv}\" direction=\"in\"/>\n"
                        "    </method>\n"
                        "    <method name=\"ActivateAction\">\n"
                        "      <arg name=\"action_name\" type=\"s\" direction=\"in\"/>\n"
                        "      <arg name=\"parameter\" type=\"av\" direction=\"in\"/>\n"
                        "      <arg name=\"platform_data\" type=\"a{sv}\" direction=\"in\"/>\n"
                        "    </method>\n"
                        "  </interface>\n");
}

bool ApplicationInterface::take(const QDBusMessage& call) {
  const QString method = methodOf(call);
  // There is nothing to open but the panel.
  if (method == QLatin1String("Activate a{sv}") || method == QLatin1String("Open asa{sv}")) {
    activate();
  } else if (method == QLatin1String("ActivateAction sava{sv}")) {
    activateAction(call.arguments().value(0).toString(), qdbus_cast<QVariantMap>(call.arguments().value(2)));
  } else {
    return false;
  }
  m_object.reply(call);
  return true;
}

void ApplicationInterface::takeProperties(const QDBusMessage& question) {
  m_object.replyProperties(question, {});
}

void ApplicationInterface::activate() {
  const bool isAgain = m_sinceShown.isValid() && !m_sinceShown.hasExpired(shortestPause.count());
  runSoon(m_show, isAgain ? shortestPause : std::chrono::milliseconds(0));
}

void ApplicationInterface::activateAction(const QString& action, const QVariantMap& platformData) {
  if (action == QLatin1String("settings")) {
    m_token.give(platformData.value(QStringLiteral("activation-token")).toString());
    runSoon(m_openSettings);
  }
  if (action == QLatin1String("quit")) runSoon(m_quit);
}

std::unique_ptr<Registration> BusActivation::answer(Actions actions) {
  return std::make_unique<ApplicationInterface>(m_object, std::move(actions));
}

} // namespace vantle
