// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "engine/ports/ProcessTable.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// A sandbox that Flatpak has made for this user, by the folder that it keeps of it outside: nobody inside has
// a say in that.
struct FlatpakInstance {
  std::string app; // its id
  Pid pid = 0;     // of the process that stands around the sandbox; may be a stranger's, see below
};

// The folder is $XDG_RUNTIME_DIR/.flatpak; empty when there is none.
std::vector<FlatpakInstance> flatpakInstances(const std::string& folder);

// The processes inside, among the given ones. None for what is left of a sandbox that has ended, whose number
// may belong to somebody else by now.
std::vector<Pid> processesInside(const FlatpakInstance& instance, std::span<const ProcessRecord> processes);

// The id of the app in the text of a .flatpak-info; empty when it has none.
std::string flatpakApp(std::string_view info);

} // namespace vantle
