// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace vantle {

// The one program that a shell's script becomes, if it says so in full: `exec /opt/game/run "$@"`, or a
// program beside it after `cd "$(dirname "$0")"`. Empty for any other. `folder` is the one that the script
// stands in.
std::string programOfScript(const std::string& script, const std::string& folder);

} // namespace vantle
