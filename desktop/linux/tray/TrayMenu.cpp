// SPDX-License-Identifier: MIT
#include "desktop/linux/tray/TrayMenu.h"

#include <QCursor>
#include <QGuiApplication>
#include <utility>

namespace vantle {
namespace {

constexpr int root = 0;      // its id; the entries follow
constexpr uint revision = 1; // of the layout

// The tray does not say where its menu was. Only an X server tells where the pointer is.
std::optional<QPoint> pointer() {
  if (QGuiApplication::platformName() != QLatin1String("xcb")) return std::nullopt;
  return QCursor::pos();
}

} // namespace

TrayMenu::TrayMenu(std::vector<TrayActions::Entry> entries) : m_entries(std::move(entries)) {
  m_click.setSingleShot(true);
  connect(&m_click, &QTimer::timeout, this, &TrayMenu::act);
}

QList<int> TrayMenu::ids() const {
  QList<int> all;
  for (std::size_t at = 0; at < m_entries.size(); ++at) all.append(root + 1 + static_cast<int>(at));
  return all;
}

QVariantMap TrayMenu::propertiesOf(int id) const {
  if (id == root) return {{QStringLiteral("children-display"), QStringLiteral("submenu")}};
  if (!ids().contains(id)) return {};
  const QString& label = m_entries[static_cast<std::size_t>(id - root - 1)].label;
  if (label.isEmpty()) return {{QStringLiteral("type"), QStringLiteral("separator")}};
  return {{QStringLiteral("label"), label}};
}

uint TrayMenu::GetLayout(int parentId, int recursionDepth, const QStringList&, MenuLayout& layout) {
  layout = {.id = parentId, .properties = propertiesOf(parentId), .children = {}};
  if (parentId == root && recursionDepth != 0) {
    for (const int id : ids()) {
      const MenuLayout child{.id = id, .properties = propertiesOf(id), .children = {}};
      layout.children.append(QDBusVariant(QVariant::fromValue(child)));
    }
  }
  return revision;
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
  const TrayActions::Entry& entry = m_entries[static_cast<std::size_t>(m_clicked - root - 1)];
  if (entry.chosen) entry.chosen(pointer());
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
