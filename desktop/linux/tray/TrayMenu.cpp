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

TrayMenu::TrayMenu() {
  m_click.setSingleShot(true);
  connect(&m_click, &QTimer::timeout, this, &TrayMenu::act);
}

void TrayMenu::offer(std::vector<TrayEntry> entries) {
  const QList<MenuProperties> before = GetGroupProperties({}, {});
  m_entries = std::move(entries);
  const QList<MenuProperties> now = GetGroupProperties({}, {});
  if (now.size() != before.size()) return emit LayoutUpdated(++m_revision, root);
  QList<MenuProperties> changed;
  for (qsizetype at = 0; at < now.size(); ++at) {
    if (now[at].properties != before[at].properties) changed.append(now[at]);
  }
  if (!changed.isEmpty()) emit ItemsPropertiesUpdated(changed, {});
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

uint TrayMenu::GetLayout(int parentId, int recursionDepth, const QStringList&, MenuLayout& layout) {
  layout = {.id = parentId, .properties = propertiesOf(parentId), .children = {}};
  if (parentId == root && recursionDepth != 0) {
    for (const int id : ids()) {
      const MenuLayout child{.id = id, .properties = propertiesOf(id), .children = {}};
      layout.children.append(QDBusVariant(QVariant::fromValue(child)));
    }
  }
  return m_revision;
}

QList<MenuProperties> TrayMenu::GetGroupProperties(const QList<int>& wanted, const QStringList&) {
  QList<MenuProperties> all;
  for (const int id : wanted.isEmpty() ? ids() : wanted) all.append({id, propertiesOf(id)});
  return all;
}

QDBusVariant TrayMenu::GetProperty(int id, const QString& name) {
  return QDBusVariant(propertiesOf(id).value(name, QString()));
}

// The tray waits for the answer, so what an entry does is done after it. However many clicks somebody tells
// of until then, it is one.
void TrayMenu::Event(int id, const QString& eventId, const QDBusVariant&, uint) {
  if (eventId != QLatin1String("clicked")) return;
  m_clicked = id;
  if (!m_click.isActive()) m_click.start(0);
}

void TrayMenu::act() const {
  if (m_clicked == root || !ids().contains(m_clicked)) return;
  const TrayEntry chosen = entry(m_clicked); // a copy: what it does may change the menu
  if (chosen.isShown && chosen.chosen) chosen.chosen(pointer());
}

QList<int> TrayMenu::EventGroup(const QList<MenuEvent>& events) {
  for (const MenuEvent& event : events) Event(event.id, event.kind, event.data, event.timestamp);
  return {};
}

bool TrayMenu::AboutToShow(int) { return false; }

QList<int> TrayMenu::AboutToShowGroup(const QList<int>&, QList<int>& idErrors) {
  idErrors.clear();
  return {};
}

} // namespace vantle
