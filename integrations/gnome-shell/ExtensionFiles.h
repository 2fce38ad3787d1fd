// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace vantle {

// What the extension consists of, for some versions of GNOME's shell.
struct GnomeExtensionEdition {
  int firstShell; // major numbers
  int lastShell;
  std::string_view script;   // extension.js
  std::string_view metadata; // metadata.json
};

inline constexpr const char* gnomeExtensionUuid = "vantle@halvo.com"; // as its metadata has it

// Null for a shell that none was made for.
const GnomeExtensionEdition* gnomeExtensionFor(int shellVersion);

} // namespace vantle
