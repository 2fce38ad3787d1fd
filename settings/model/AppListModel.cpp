// SPDX-License-Identifier: MIT
#include "settings/model/AppListModel.h"

#include "look/DisplayText.h"
#include "settings/model/AppKeys.h"

#include <algorithm>
#include <utility>

namespace vantle {

AppListModel::AppListModel(Keys& keys, const ApplicationCatalog& catalog, Takes takes,
                           std::function<void()> changed, std::vector<std::string> defaults)
    : m_keys(keys), m_catalog(catalog), m_takes(takes), m_changed(std::move(changed)),
      m_defaults(std::move(defaults)), m_observer(keys.observe([this] { follow(); })) {
  follow();
}

int AppListModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : count(); }

QHash<int, QByteArray> AppListModel::roleNames() const {
  return {{keyRole, "key"}, {nameRole, "name"}, {iconRole, "icon"}};
}

QVariant AppListModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= count()) return {};
  const Row& row = m_rows[static_cast<std::size_t>(index.row())];
  switch (role) {
  case keyRole:
    return QString::fromStdString(row.key);
  case nameRole:
    return row.name;
  case iconRole:
    return row.icon;
  default:
    return {};
  }
}

std::vector<AppListModel::Row> AppListModel::rowsFor(const std::vector<std::string>& keys) const {
  const ApplicationCatalog::Found found = m_catalog.applicationsForKeys(keys);
  std::vector<Row> rows;
  for (std::size_t at = 0; at < keys.size(); ++at) {
    const std::string& key = keys[at];
    const std::string name = found[at] ? shownName(*found[at]) : m_catalog.knownName(key).value_or(key);
    rows.push_back(
        {key, displayText(name, key), found[at] ? QString::fromStdString(found[at]->icon) : QString()});
  }
  return rows;
}

std::vector<std::string> AppListModel::shownKeys() const {
  std::vector<std::string> keys;
  keys.reserve(m_rows.size());
  for (const Row& row : m_rows) keys.push_back(row.key);
  return keys;
}

// One app more at the end or one less is what happens; then the other rows stay as they are, and with them
// the keyboard's place among them.
void AppListModel::follow() {
  const std::vector<std::string>& keys = m_keys.get();
  const std::vector<std::string> shown = shownKeys();
  if (keys == shown) return;
  const auto [differs, ignored] = std::mismatch(shown.begin(), shown.end(), keys.begin(), keys.end());
  const auto at = static_cast<int>(differs - shown.begin());
  if (differs == shown.end()) {
    beginInsertRows({}, at, static_cast<int>(keys.size()) - 1);
    for (Row& row : rowsFor({keys.begin() + at, keys.end()})) m_rows.push_back(std::move(row));
    endInsertRows();
  } else if (std::equal(differs + 1, shown.end(), keys.begin() + at, keys.end())) {
    beginRemoveRows({}, at, at);
    m_rows.erase(m_rows.begin() + at);
    endRemoveRows();
  } else {
    beginResetModel();
    m_rows = rowsFor(keys);
    endResetModel();
  }
  emit countChanged();
}

void AppListModel::store(std::vector<std::string> keys) {
  m_keys.set(std::move(keys));
  if (m_changed) m_changed();
}

void AppListModel::add(const std::string& key) {
  std::vector<std::string> keys = m_keys.get();
  if (std::find(keys.begin(), keys.end(), key) != keys.end()) return;
  keys.push_back(key);
  store(std::move(keys));
}

void AppListModel::remove(const QString& key) {
  std::vector<std::string> keys = m_keys.get();
  if (std::erase(keys, key.toStdString()) > 0) store(std::move(keys));
}

bool AppListModel::isRestorable() const {
  const std::vector<std::string>& keys = m_keys.get();
  return std::any_of(m_defaults.begin(), m_defaults.end(), [&](const std::string& key) {
    return std::find(keys.begin(), keys.end(), key) == keys.end();
  });
}

void AppListModel::restoreDefaults() {
  std::vector<std::string> keys = m_defaults;
  for (const std::string& key : m_keys.get()) {
    if (std::find(m_defaults.begin(), m_defaults.end(), key) == m_defaults.end()) keys.push_back(key);
  }
  store(std::move(keys));
}

QString AppListModel::nameAt(int row) const {
  return row >= 0 && row < count() ? m_rows[static_cast<std::size_t>(row)].name : QString();
}

} // namespace vantle
