// SPDX-License-Identifier: MIT
#include "platform/linux/catalog/DesktopCatalog.h"

#include "base/Text.h"
#include "platform/linux/apps/DesktopIdentity.h"
#include "platform/linux/apps/IdentifierMap.h"
#include "platform/linux/catalog/ProgramFile.h"
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
  const bool isDesktopFile = std::filesystem::path(path).extension() == ".desktop";
  const std::optional<InstalledApplication> application =
      isDesktopFile ? byDesktopFile(path) : byProgram(path);
  return application && canBeChosen(*application) ? application : std::nullopt;
}

std::optional<InstalledApplication> DesktopCatalog::byDesktopFile(const std::string& path) const {
  std::optional<InstalledApplication> application;
  // One of the installed files goes by its full id, which holds the folders above it.
  for (const DesktopEntry& entry : m_installed->all()) {
    if (entry.path == path) application = described(entry);
  }
  if (application) return application;
  const std::optional<DesktopEntry> entry =
      readDesktopEntry(path, std::filesystem::path(path).stem().string());
  return entry ? std::optional(described(*entry)) : std::nullopt;
}

std::optional<InstalledApplication> DesktopCatalog::byProgram(const std::string& path) const {
  const std::optional<AppEvidence> evidence = evidenceOfProgram(path);
  if (!evidence) return {};
  if (const DesktopEntry* const entry = findEntry(*evidence, m_installed->all())) return described(*entry);
  AppIdentity identity = identityOf(*evidence, nullptr);
  InstalledApplication application;
  application.isByName = !identity.bundleIdentifier;
  application.name = identity.bundleIdentifier.value_or(identity.localizedName);
  application.key = application.name;
  application.path = path;
  application.words = fileNameOf(path);
  return application;
}

} // namespace vantle
