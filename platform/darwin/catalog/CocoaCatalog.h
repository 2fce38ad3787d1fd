// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ApplicationCatalog.h"

namespace vantle {

// The apps in the system's and the person's folders for them, and those that the workspace finds by their
// identifier wherever they are. Their pictures are in their bundles.
class CocoaCatalog final : public ApplicationCatalog {
 public:
  std::vector<InstalledApplication> installedApplications() const override;
  Found applicationsForKeys(const std::vector<std::string>& keys) const override;
  std::optional<std::string> knownName(const std::string& /*key*/) const override { return std::nullopt; }
  Found applicationsAt(const std::vector<std::string>& paths) const override;
};

} // namespace vantle
