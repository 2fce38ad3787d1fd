// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/files/XdgFolders.h"

#include <string>
#include <vector>

namespace vantle {

// Where copies of this program meet: the runtime folder, where there is one, and the program's own data
// folder, which is made. Only those that are this user's own.
std::vector<std::string> lockFolders(const XdgFolders& folders);

} // namespace vantle
