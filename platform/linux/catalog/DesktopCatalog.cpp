// SPDX-License-Identifier: MIT
#include "platform/linux/catalog/DesktopCatalog.h"

#include "base/Text.h"
#include "engine/ports/SystemApps.h"
#include "platform/linux/apps/DesktopIdentity.h"
#include "platform/linux/apps/IdentifierMap.h"
#include "platform/linux/catalog/ProgramFile.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string_view>
#include <unordered_map>

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

InstalledApplication described(const DesktopEntry& entry) {
  std::string key = bundleIdentifierOf(entry);
  std::string name = entry.name.empty() ? key : entry.name;
  std::string words = entry.words;
  if (!entry.executable.empty()) words += (words.empty() ? "" : " ") + fileNameOf(entry.executable);
  return {std::move(key), std::move(name), iconOf(entry), entry.path, std::move(words)};
}

// One of the installed files goes by its full id, which holds the folders above it.
std::optional<InstalledApplication> byDesktopFile(const std::string& path,
                                                  const std::vector<DesktopEntry>& installed) {
  const auto known = std::find_if(installed.begin(), installed.end(),
                                  [&](const DesktopEntry& entry) { return entry.path == path; });
  if (known != installed.end()) return described(*known);
  const std::optional<DesktopEntry> entry =
      readDesktopEntry(path, std::filesystem::path(path).stem().string());
  return entry ? std::optional(described(*entry)) : std::nullopt;
}

std::optional<InstalledApplication> byProgram(const std::string& path,
                                              const std::vector<DesktopEntry>& installed) {
  const std::optional<AppEvidence> evidence = evidenceOfProgram(path);
  if (!evidence) return {};
  if (const DesktopEntry* const entry = findEntry(*evidence, installed)) return described(*entry);
  const AppIdentity identity = identityOf(*evidence, IdentityMatch());
  InstalledApplication application;
  application.isByName = !identity.bundleIdentifier;
  application.name = identity.bundleIdentifier.value_or(identity.localizedName);
  application.key = application.name;
  application.path = path;
  application.words = fileNameOf(path);
  return application;
}

} // namespace

std::vector<InstalledApplication> DesktopCatalog::installedApplications() const {
  std::vector<InstalledApplication> applications;
  std::set<std::string> keys;
  for (const DesktopEntry& entry : m_installed->all()) {
    if (entry.isHidden) continue;
    InstalledApplication application = described(entry);
    if (isSystemApp(application.key)) continue;
    if (keys.insert(application.key).second) applications.push_back(std::move(application));
  }
  return applications;
}

ApplicationCatalog::Found DesktopCatalog::applicationsForKeys(const std::vector<std::string>& keys) const {
  std::unordered_map<std::string, const DesktopEntry*> byKey;
  for (const DesktopEntry& entry : m_installed->all()) {
    const DesktopEntry*& known = byKey[bundleIdentifierOf(entry)];
    if (known == nullptr || known->isHidden) known = &entry;
  }
  Found found;
  for (const std::string& key : keys) {
    const auto entry = byKey.find(key);
    found.push_back(entry != byKey.end() ? std::optional(described(*entry->second)) : std::nullopt);
  }
  return found;
}

std::optional<std::string> DesktopCatalog::knownName(const std::string& key) const {
  return nameOfIdentifier(key);
}

ApplicationCatalog::Found DesktopCatalog::applicationsAt(const std::vector<std::string>& paths) const {
  const std::vector<DesktopEntry>& installed = m_installed->all();
  Found found;
  for (const std::string& path : paths) {
    const bool isDesktopFile = std::filesystem::path(path).extension() == ".desktop";
    found.push_back(isDesktopFile ? byDesktopFile(path, installed) : byProgram(path, installed));
    if (found.back() && isSystemApp(found.back()->key)) found.back().reset();
  }
  return found;
}

} // namespace vantle
