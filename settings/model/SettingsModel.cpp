// SPDX-License-Identifier: MIT
#include "settings/model/SettingsModel.h"

#include <QCoreApplication>
#include <cstddef>

namespace vantle {

SettingsModel::SettingsModel(const SettingsParts& parts, Pane pane)
    : m_pane(pane), m_login(parts.loginItem),
      m_automatic(parts.engine.automatic, [&engine = parts.engine](bool on) { engine.setAutomatic(on); }),
      m_openAtLogin(m_login.openAtLogin, [this](bool on) { m_login.set(on); }), m_extension(parts.extension),
      m_boost(parts.engine, parts.settings, parts.catalog), m_appearance(parts.settings),
      m_updates(parts.checker, parts.settings), m_about(parts.engine, parts.checker.version),
      m_picker(parts.catalog, parts.chooser) {}

QStringList SettingsModel::paneTitles() const {
  QStringList titles;
  for (const Pane each : allPanes) titles.append(QCoreApplication::translate("Pane", titleOf(each)));
  return titles;
}

QStringList SettingsModel::paneSymbols() const {
  QStringList symbols;
  for (const Pane each : allPanes) symbols.append(QString::fromLatin1(symbolOf(each)));
  return symbols;
}

void SettingsModel::setPaneIndex(int index) {
  if (index == paneIndex() || index < 0 || static_cast<std::size_t>(index) >= allPanes.size()) return;
  m_pane = allPanes.at(static_cast<std::size_t>(index));
  reload();
  emit paneChanged();
}

void SettingsModel::reload() {
  m_login.reload();
  m_extension.reload();
  emit m_about.memoryChanged();
}

} // namespace vantle
