// SPDX-License-Identifier: MIT
#include "panel/tray/TrayMenu.h"

#include <array>
#include <utility>

namespace vantle {
namespace {

enum Entry { root = 0, openEntry, settingsEntry, separator, quitEntry };

constexpr std::array entries{openEntry, settingsEntry, separator, quitEntry};
constexpr uint revision = 1; // of the layout

QVariantMap propertiesOf(int id) {
  switch (id) {
  case root:
    return {{QStringLiteral("children-display"), QStringLiteral("submenu")}};
  case openEntry:
    return {{QStringLiteral("label"), QStringLiteral("Open Vantle")}};
  case settingsEntry:
    return {{QStringLiteral("label"), QStringLiteral("Settings")}};
  case separator:
    return {{QStringLiteral("type"), QStringLiteral("separator")}};
  case quitEntry:
    return {{QStringLiteral("label"), QStringLiteral("Quit Vantle")}};
  default:
    return {};
  }
}

} // namespace

TrayMenu::TrayMenu(Actions actions) : m_actions(std::move(actions)) {
  m_click.setSingleShot(true);
  connect(&m_click, &QTimer::timeout, this, &TrayMenu::act);
}

uint TrayMenu::GetLayout(int parentId, int recursionDepth, const QStringList&, MenuLayout& layout) {
  layout = {.id = parentId, .properties = propertiesOf(parentId), .children = {}};
  if (parentId == root && recursionDepth != 0) {
    for (const int id : entries) {
      const MenuLayout child{.id = id, .properties = propertiesOf(id), .children = {}};
      layout.children.append(QDBusVariant(QVariant::fromValue(child)));
    }
  }
  return revision;
}

QList<MenuProperties> TrayMenu::GetGroupProperties(const QList<int>& ids, const QStringList&) {
  QList<MenuProperties> all;
  if (ids.isEmpty()) {
    for (const int id : entries) all.append({id, propertiesOf(id)});
  }
  for (const int id : ids) all.append({id, propertiesOf(id)});
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
  if (m_clicked == openEntry) m_actions.open();
  if (m_clicked == settingsEntry) m_actions.settings();
  if (m_clicked == quitEntry) m_actions.quit();
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
