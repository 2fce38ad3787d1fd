// SPDX-License-Identifier: MIT
#include "platform/linux/catalog/DesktopCatalog.h"

#include "base/Text.h"
#include "platform/linux/apps/IdentifierMap.h"
#include "platform/linux/programs/DesktopPrograms.h"

#include <filesystem>
#include <set>
#include <string_view>

namespace vantle {

namespace {

// Old desktop files name a picture's file where a themed name is meant.
std::string iconOf(const DesktopEntry& entry) {
  std::string icon = entry.icon;
  if (icon.starts_with('/')) return icon;
  for (const std::string_view ending : {".png", ".svg", ".xpm"}) {
    if (icon.ends_with(ending)) icon.resize(icon.size() - ending.size());
  }
  return icon;
}

// Apps of the system itself are on no list: they are left alone anyway, and boost nothing.
bool canBeChosen(const InstalledApplication& application) { return !isSystemIdentifier(application.key); }

InstalledApplication described(const DesktopEntry& entry) {
  std::string key = bundleIdentifierOf(entry);
  std::string name = entry.name.empty() ? key : entry.name;
  std::string words = entry.words;
  if (!entry.executable.empty()) words += (words.empty() ? "" : " ") + fileNameOf(entry.executable);
  return {std::move(key), std::move(name), iconOf(entry), entry.path, std::move(words)};
}

} // namespace

std::vector<InstalledApplication> DesktopCatalog::installedApplications() const {
  std::vector<InstalledApplication> applications;
  std::set<std::string> keys;
  for (const DesktopEntry& entry : m_installed->all()) {
    if (entry.isHidden) continue;
    InstalledApplication application = described(entry);
    if (!canBeChosen(application)) continue;
    if (keys.insert(application.key).second) applications.push_back(std::move(application));
  }
  return applications;
}

std::optional<InstalledApplication> DesktopCatalog::applicationForKey(const std::string& key) const {
  const DesktopEntry* hidden = nullptr;
  for (const DesktopEntry& entry : m_installed->all()) {
    if (bundleIdentifierOf(entry) != key) continue;
    if (!entry.isHidden) return described(entry);
    hidden = &entry;
  }
  return hidden != nullptr ? std::optional(described(*hidden)) : std::nullopt;
}

std::optional<std::string> DesktopCatalog::knownName(const std::string& key) const {
  return nameOfIdentifier(key);
}

std::optional<InstalledApplication> DesktopCatalog::applicationAt(const std::string& path) const {
  const std::filesystem::path file(path);
  if (file.extension() != ".desktop") return std::nullopt;
  std::optional<InstalledApplication> application;
  // One of the installed files goes by its full id, which holds the folders above it.
  for (const DesktopEntry& entry : m_installed->all()) {
    if (entry.path == path) application = described(entry);
  }
  if (!application) {
    const std::optional<DesktopEntry> entry = readDesktopEntry(path, file.stem().string());
    if (entry) application = described(*entry);
  }
  return application && canBeChosen(*application) ? application : std::nullopt;
}

} // namespace vantle
