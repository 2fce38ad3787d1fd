// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ApplicationCatalog.h"
#include "platform/linux/apps/DesktopEntries.h"

#include <memory>
#include <utility>

namespace vantle {

// The installed apps by their desktop files. A key is the very bundle identifier that the workspace gives to
// the app while it runs.
class DesktopCatalog final : public ApplicationCatalog {
 public:
  explicit DesktopCatalog(std::shared_ptr<DesktopEntries> installed) : m_installed(std::move(installed)) {}

  std::vector<InstalledApplication> installedApplications() const override;
  std::optional<InstalledApplication> applicationForKey(const std::string& key) const override;
  std::optional<std::string> knownName(const std::string& key) const override;
  std::optional<InstalledApplication> applicationAt(const std::string& path) const override;

 private:
  std::optional<InstalledApplication> byDesktopFile(const std::string& path) const;
  std::optional<InstalledApplication> byProgram(const std::string& path) const;

  std::shared_ptr<DesktopEntries> m_installed; // reads a folder again when it has changed
};

} // namespace vantle
