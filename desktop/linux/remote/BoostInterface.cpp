// SPDX-License-Identifier: MIT
#include "desktop/linux/remote/BoostInterface.h"

#include "base/Names.h"
#include "status/Interface.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMetaType>
#include <utility>

namespace vantle {
namespace {

QString text(const char* latin) { return QString::fromLatin1(latin); }
QString text(const std::string& utf8) { return QString::fromStdString(utf8); }

using Maps = QList<QVariantMap>;

QVariantMap appMap(const std::string& name, const std::optional<std::string>& id, Pid pid) {
  QVariantMap map{{text(boost1::appName), text(name)}, {text(boost1::appPid), pid}};
  if (id) map.insert(text(boost1::appId), text(*id));
  return map;
}

QVariantMap appMap(const AppStatus& app) {
  QVariantMap map = appMap(app.name, app.id, app.pid);
  map.insert(text(boost1::appState), text(app.state));
  map.insert(text(boost1::appReason), text(app.reason));
  if (app.lever) map.insert(text(boost1::appLever), text(*app.lever));
  map.insert(text(boost1::appProcesses), QVariant::fromValue<qulonglong>(app.processes));
  map.insert(text(boost1::appMemory), QVariant::fromValue<qulonglong>(app.memory));
  if (app.knownBy) map.insert(text(boost1::appKnownBy), text(*app.knownBy));
  if (app.knownBecause) map.insert(text(boost1::appKnownBecause), text(*app.knownBecause));
  return map;
}

Maps appMaps(const std::vector<AppStatus>& apps) {
  Maps maps;
  for (const AppStatus& app : apps) maps.append(appMap(app));
  return maps;
}

// The properties that are wanted.
QVariantMap propertiesOf(const Status& status, const Changes& wanted) {
  QVariantMap map;
  if (wanted.active) map.insert(text(boost1::active), status.isActive);
  if (wanted.app) {
    map.insert(text(boost1::app),
               status.isActive ? appMap(status.boostName, status.boostId, status.boostPid) : QVariantMap());
  }
  if (wanted.automatic) map.insert(text(boost1::automatic), status.isAutomatic);
  if (wanted.pausedUntil) {
    map.insert(text(boost1::pausedUntil), QVariant::fromValue<qulonglong>(status.pausedUntil));
  }
  if (wanted.pressure) map.insert(text(boost1::pressure), text(status.pressure));
  if (wanted.apps) map.insert(text(boost1::apps), QVariant::fromValue(appMaps(status.apps)));
  return map;
}

QVariantMap allProperties(const Status& status) {
  QVariantMap map = propertiesOf(status, {true, true, true, true, true, true});
  map.insert(text(boost1::version), text(status.version));
  return map;
}

} // namespace

BoostInterface::BoostInterface(ProgramObject& object, RemoteDoor::Answers answers)
    : m_object(object), m_answers(std::move(answers)), m_followers(object.bus()) {
  qDBusRegisterMetaType<Maps>();
  m_object.add(*this, ProgramObject::Name::whenOthersDo);
}

BoostInterface::~BoostInterface() { m_object.remove(*this); }

QString BoostInterface::name() const { return text(boost1::interface); }

QString BoostInterface::introspection() const {
  return QStringLiteral("  <interface name=\"com.halvo.vantle.Boost1\">\n"
                        "    <property name=\"Version\" type=\"s\" access=\"read\"/>\n"
                        "    <property name=\"Active\" type=\"b\" access=\"read\"/>\n"
                        "    <property name=\"App\" type=\"a{sv}\" access=\"read\"/>\n"
                        "    <property name=\"Automatic\" type=\"b\" access=\"read\"/>\n"
                        "    <property name=\"PausedUntil\" type=\"t\" access=\"read\"/>\n"
                        "    <property name=\"Pressure\" type=\"s\" access=\"read\"/>\n"
                        "    <property name=\"Apps\" type=\"aa{sv}\" access=\"read\"/>\n"
                        "    <method name=\"Why\">\n"
                        "      <arg name=\"app\" type=\"s\" direction=\"in\"/>\n"
                        "      <arg name=\"apps\" type=\"aa{sv}\" direction=\"out\"/>\n"
                        "    </method>\n"
                        "    <method name=\"Boost\">\n"
                        "      <arg name=\"app\" type=\"s\" direction=\"in\"/>\n"
                        "    </method>\n"
                        "    <method name=\"Off\"/>\n"
                        "    <method name=\"Pause\">\n"
                        "      <arg name=\"seconds\" type=\"u\" direction=\"in\"/>\n"
                        "    </method>\n"
                        "    <method name=\"Report\">\n"
                        "      <arg name=\"with_names\" type=\"b\" direction=\"in\"/>\n"
                        "      <arg name=\"text\" type=\"s\" direction=\"out\"/>\n"
                        "    </method>\n"
                        "  </interface>\n");
}

void BoostInterface::tell() {
  const QStringList followers = m_followers.names();
  if (followers.isEmpty()) return;
  const Status now = m_answers.status();
  const Changes changes = changesBetween(m_told, now);
  if (!changes.any()) return;
  m_told = now;
  const QVariantMap changed = propertiesOf(now, changes);
  for (const QString& follower : followers) {
    QDBusMessage message = QDBusMessage::createTargetedSignal(
        follower, text(names::busPath), QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("PropertiesChanged"));
    message << name() << changed << QStringList();
    m_object.send(message);
  }
}

bool BoostInterface::take(const QDBusMessage& call) {
  static const QStringList methods{QStringLiteral("Why s"), QStringLiteral("Boost s"), QStringLiteral("Off "),
                                   QStringLiteral("Pause u"), QStringLiteral("Report b")};
  if (!methods.contains(methodOf(call))) return false;
  answerMethod(call);
  return true;
}

// Whoever came while nobody followed knows what it has just been told; those who come later hear of a change
// that they know already rather than not at all.
bool BoostInterface::follow(const QDBusMessage& call, const Status& now) {
  const bool isFirst = m_followers.names().isEmpty();
  if (!m_followers.add(call.service())) return false;
  if (isFirst) m_told = now;
  return true;
}

void BoostInterface::takeProperties(const QDBusMessage& question) {
  const Status now = m_answers.status();
  const QVariantMap all = allProperties(now);
  const QString method = methodOf(question);
  const bool isTold =
      method == QLatin1String("GetAll s") ||
      (method == QLatin1String("Get ss") && all.contains(question.arguments().at(1).toString()));
  if (isTold && !follow(question, now)) {
    return m_object.refuse(question, QDBusError::errorString(QDBusError::LimitsExceeded),
                           QStringLiteral("too many follow already"));
  }
  m_object.replyProperties(question, all);
}

void BoostInterface::answerOrder(const QDBusMessage& call, const RemoteDoor::Refusal& refusal) {
  if (!refusal) return m_object.reply(call);
  m_object.refuse(call, text(boost1::refused), text(*refusal));
}

void BoostInterface::answerMethod(const QDBusMessage& call) {
  const QString method = call.member();
  const QVariant argument = call.arguments().value(0);
  if (method == text(boost1::why)) {
    std::vector<AppStatus> apps;
    const RemoteDoor::Refusal refusal = m_answers.why(argument.toString().toStdString(), apps);
    if (refusal) return answerOrder(call, refusal);
    return m_object.reply(call, {QVariant::fromValue(appMaps(apps))});
  }
  if (method == text(boost1::boost)) {
    return answerOrder(call, m_answers.boost(argument.toString().toStdString()));
  }
  if (method == text(boost1::pause)) {
    return answerOrder(call, m_answers.pause(std::chrono::seconds(argument.toUInt())));
  }
  if (method == text(boost1::report)) {
    return m_object.reply(call, {text(m_answers.report(argument.toBool()))});
  }
  m_answers.off();
  m_object.reply(call);
}

std::unique_ptr<RemoteDoor::Open> BusDoor::open(Answers answers) {
  return std::make_unique<BoostInterface>(m_object, std::move(answers));
}

} // namespace vantle
