// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ApplicationCatalog.h"

#include <QString>
#include <string>

namespace vantle {

// The name as the desktop shows it, without a trailing ".app". When no such app is installed, the name that
// the platform knows for the key, else the key itself.
std::string displayNameForKey(const ApplicationCatalog& catalog, const std::string& key);

// Empty when no such app is installed, or it has no icon.
std::string iconForKey(const ApplicationCatalog& catalog, const std::string& key);

// An app's name as lists show it.
std::string shownName(const InstalledApplication& application);

} // namespace vantle
