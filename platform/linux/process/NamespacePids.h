// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <optional>
#include <string_view>
#include <vector>

namespace vantle {

// The numbers of one process, from the text of /proc/PID/status: the one that it has here, then one for each
// process-number namespace further in; the last is what it calls itself. Empty when the text does not say, as
// a kernel without such namespaces writes it, or when it is not one that the kernel writes.
std::vector<Pid> namespacePids(std::string_view status);

// The process that a thread belongs to, from the text of its status file.
std::optional<Pid> processOfThread(std::string_view status);

} // namespace vantle
