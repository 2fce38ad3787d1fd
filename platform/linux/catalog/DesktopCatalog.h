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
  Found applicationsForKeys(const std::vector<std::string>& keys) const override;
  std::optional<std::string> knownName(const std::string& key) const override;
  Found applicationsAt(const std::vector<std::string>& paths) const override;

 private:
  std::shared_ptr<DesktopEntries> m_installed; // reads a folder again when it has changed
};

} // namespace vantle
