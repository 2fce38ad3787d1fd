// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "engine/ports/ProcessTable.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// The sandboxes that Flatpak has made for this user, by the folders that it keeps of them outside: nobody
// inside has a say in these.
class FlatpakInstances {
 public:
  // The folder is $XDG_RUNTIME_DIR/.flatpak; empty when there is none.
  explicit FlatpakInstances(std::string folder) : m_folder(std::move(folder)) {}

  // The processes of all sandboxes of that app, among the given ones.
  std::vector<Pid> processesOf(const std::string& app, std::span<const ProcessRecord> processes) const;

 private:
  std::string m_folder;
};

// The id of the app in the text of a .flatpak-info; empty when it has none.
std::string flatpakApp(std::string_view info);

} // namespace vantle
