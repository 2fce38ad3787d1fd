// SPDX-License-Identifier: MIT
#include "desktop/linux/tray/TrayMenu.h"

#include <QCursor>
#include <QGuiApplication>
#include <utility>

namespace vantle {
namespace {

constexpr int root = 0; // its id; the entries follow

// The tray does not say where its menu was. Only an X server tells where the pointer is.
std::optional<QPoint> pointer() {
  if (QGuiApplication::platformName() != QLatin1String("xcb")) return std::nullopt;
  return QCursor::pos();
}

} // namespace

TrayMenu::TrayMenu(SessionBus& bus) : m_object(bus, path()), m_followers(bus) {
  m_object.add(*this);
  m_click.setSingleShot(true);
  connect(&m_click, &QTimer::timeout, this, &TrayMenu::act);
}

QString TrayMenu::path() { return QStringLiteral("/MenuBar"); }

QString TrayMenu::name() const { return QStringLiteral("com.canonical.dbusmenu"); }

void TrayMenu::offer(std::vector<TrayEntry> entries) {
  const QList<MenuProperties> before = properties({});
  m_entries = std::move(entries);
  const QList<MenuProperties> now = properties({});
  if (now.size() != before.size()) {
    m_object.tell(*this, QStringLiteral("LayoutUpdated"), {++m_revision, root});
    return;
  }
  QList<MenuProperties> changed;
  for (qsizetype at = 0; at < now.size(); ++at) {
    if (now[at].properties != before[at].properties) changed.append(now[at]);
  }
  if (changed.isEmpty()) return;
  for (const QString& follower : m_followers.names()) {
    m_object.tell(*this, QStringLiteral("ItemsPropertiesUpdated"),
                  {QVariant::fromValue(changed), QVariant::fromValue(QList<MenuRemovals>())}, follower);
  }
}

QList<int> TrayMenu::ids() const {
  QList<int> all;
  for (std::size_t at = 0; at < m_entries.size(); ++at) all.append(root + 1 + static_cast<int>(at));
  return all;
}

const TrayEntry& TrayMenu::entry(int id) const { return m_entries[static_cast<std::size_t>(id - root - 1)]; }

QVariantMap TrayMenu::propertiesOf(int id) const {
  if (id == root) return {{QStringLiteral("children-display"), QStringLiteral("submenu")}};
  if (!ids().contains(id)) return {};
  const TrayEntry& shown = entry(id);
  QVariantMap properties{{QStringLiteral("visible"), shown.isShown}};
  if (shown.label.isEmpty()) {
    properties[QStringLiteral("type")] = QStringLiteral("separator");
    return properties;
  }
  // One underscore alone marks the letter after it.
  properties[QStringLiteral("label")] = QString(shown.label).replace(u'_', QStringLiteral("__"));
  properties[QStringLiteral("enabled")] = static_cast<bool>(shown.chosen);
  if (shown.isChecked) {
    properties[QStringLiteral("toggle-type")] = QStringLiteral("checkmark");
    properties[QStringLiteral("toggle-state")] = *shown.isChecked ? 1 : 0;
  }
  return properties;
}

MenuLayout TrayMenu::layout(int parent, int depth) const {
  MenuLayout layout{.id = parent, .properties = propertiesOf(parent), .children = {}};
  if (parent != root || depth == 0) return layout;
  for (const int id : ids()) {
    const MenuLayout child{.id = id, .properties = propertiesOf(id), .children = {}};
    layout.children.append(QDBusVariant(QVariant::fromValue(child)));
  }
  return layout;
}

QList<MenuProperties> TrayMenu::properties(const QList<int>& wanted) const {
  QList<MenuProperties> all;
  for (const int id : wanted.isEmpty() ? ids() : wanted) all.append({id, propertiesOf(id)});
  return all;
}

bool TrayMenu::take(const QDBusMessage& call) {
  static const QStringList methods{
      QStringLiteral("GetLayout iias"),     QStringLiteral("GetGroupProperties aias"),
      QStringLiteral("GetProperty is"),     QStringLiteral("Event isvu"),
      QStringLiteral("EventGroup a(isvu)"), QStringLiteral("AboutToShow i"),
      QStringLiteral("AboutToShowGroup ai")};
  const QString method = methodOf(call);
  if (!methods.contains(method)) return false;
  // One too many sees what has changed when it opens the menu again.
  m_followers.add(call.service());
  m_object.reply(call, answerTo(call.member(), call.arguments()));
  return true;
}

QVariantList TrayMenu::answerTo(const QString& method, const QVariantList& arguments) {
  const QVariant& first = arguments[0];
  if (method == QLatin1String("GetLayout")) {
    return {m_revision, QVariant::fromValue(layout(first.toInt(), arguments[1].toInt()))};
  }
  if (method == QLatin1String("GetGroupProperties")) {
    return {QVariant::fromValue(properties(qdbus_cast<QList<int>>(first)))};
  }
  if (method == QLatin1String("GetProperty")) {
    const QVariant value = propertiesOf(first.toInt()).value(arguments[1].toString(), QString());
    return {QVariant::fromValue(QDBusVariant(value))};
  }
  if (method == QLatin1String("Event")) {
    note(first.toInt(), arguments[1].toString());
    return {};
  }
  if (method == QLatin1String("EventGroup")) {
    for (const MenuEvent& event : qdbus_cast<QList<MenuEvent>>(first)) note(event.id, event.kind);
    return {QVariant::fromValue(QList<int>())}; // ids that there are none of
  }
  if (method == QLatin1String("AboutToShow")) return {false};
  return {QVariant::fromValue(QList<int>()), QVariant::fromValue(QList<int>())};
}

void TrayMenu::takeProperties(const QDBusMessage& question) {
  m_object.replyProperties(question, {{QStringLiteral("Version"), 3U}, // of the protocol
                                      {QStringLiteral("TextDirection"), QStringLiteral("ltr")},
                                      {QStringLiteral("Status"), QStringLiteral("normal")},
                                      {QStringLiteral("IconThemePath"), QStringList()}});
}

// The tray waits for the answer, so what an entry does is done after it. However many clicks somebody tells
// of until then, it is one.
void TrayMenu::note(int id, const QString& event) {
  if (event != QLatin1String("clicked")) return;
  m_clicked = id;
  if (!m_click.isActive()) m_click.start(0);
}

void TrayMenu::act() const {
  if (m_clicked == root || !ids().contains(m_clicked)) return;
  const TrayEntry chosen = entry(m_clicked); // a copy: what it does may change the menu
  if (chosen.isShown && chosen.chosen) chosen.chosen(pointer());
}

QString TrayMenu::introspection() const {
  return QStringLiteral("  <interface name=\"com.canonical.dbusmenu\">\n"
                        "    <property name=\"Version\" type=\"u\" access=\"read\"/>\n"
                        "    <property name=\"TextDirection\" type=\"s\" access=\"read\"/>\n"
                        "    <property name=\"Status\" type=\"s\" access=\"read\"/>\n"
                        "    <property name=\"IconThemePath\" type=\"as\" access=\"read\"/>\n"
                        "    <method name=\"GetLayout\">\n"
                        "      <arg name=\"parentId\" type=\"i\" direction=\"in\"/>\n"
                        "      <arg name=\"recursionDepth\" type=\"i\" direction=\"in\"/>\n"
                        "      <arg name=\"propertyNames\" type=\"as\" direction=\"in\"/>\n"
                        "      <arg name=\"revision\" type=\"u\" direction=\"out\"/>\n"
                        "      <arg name=\"layout\" type=\"(ia{sv}av)\" direction=\"out\"/>\n"
                        "    </method>\n"
                        "    <method name=\"GetGroupProperties\">\n"
                        "      <arg name=\"ids\" type=\"ai\" direction=\"in\"/>\n"
                        "      <arg name=\"propertyNames\" type=\"as\" direction=\"in\"/>\n"
                        "      <arg name=\"properties\" type=\"a(ia{sv})\" direction=\"out\"/>\n"
                        "    </method>\n"
                        "    <method name=\"GetProperty\">\n"
                        "      <arg name=\"id\" type=\"i\" direction=\"in\"/>\n"
                        "      <arg name=\"name\" type=\"s\" direction=\"in\"/>\n"
                        "      <arg name=\"value\" type=\"v\" direction=\"out\"/>\n"
                        "    </method>\n"
                        "    <method name=\"Event\">\n"
                        "      <arg name=\"id\" type=\"i\" direction=\"in\"/>\n"
                        "      <arg name=\"eventId\" type=\"s\" direction=\"in\"/>\n"
                        "      <arg name=\"data\" type=\"v\" direction=\"in\"/>\n"
                        "      <arg name=\"timestamp\" type=\"u\" direction=\"in\"/>\n"
                        "    </method>\n"
                        "    <method name=\"EventGroup\">\n"
                        "      <arg name=\"events\" type=\"a(isvu)\" direction=\"in\"/>\n"
                        "      <arg name=\"idErrors\" type=\"ai\" direction=\"out\"/>\n"
                        "    </method>\n"
                        "    <method name=\"AboutToShow\">\n"
                        "      <arg name=\"id\" type=\"i\" direction=\"in\"/>\n"
                        "      <arg name=\"needUpdate\" type=\"b\" direction=\"out\"/>\n"
                        "    </method>\n"
                        "    <method name=\"AboutToShowGroup\">\n"
                        "      <arg name=\"ids\" type=\"ai\" direction=\"in\"/>\n"
                        "      <arg name=\"updatesNeeded\" type=\"ai\" direction=\"out\"/>\n"
                        "      <arg name=\"idErrors\" type=\"ai\" direction=\"out\"/>\n"
                        "    </method>\n"
                        "    <signal name=\"LayoutUpdated\">\n"
                        "      <arg name=\"revision\" type=\"u\"/>\n"
                        "      <arg name=\"parent\" type=\"i\"/>\n"
                        "    </signal>\n"
                        "    <signal name=\"ItemsPropertiesUpdated\">\n"
                        "      <arg name=\"changed\" type=\"a(ia{sv})\"/>\n"
                        "      <arg name=\"removed\" type=\"a(ias)\"/>\n"
                        "    </signal>\n"
                        "  </interface>\n");
}

} // namespace vantle
