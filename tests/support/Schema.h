// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>

namespace vantle::desktop {

// Holds a JSON document to a schema, as far as this project's schemas go: `type`, `enum`, `properties`,
// `required`, `additionalProperties: false`, `items` and `minimum`; any other word that asks for something is
// an exception. What is wrong, the first of it; empty when nothing is.
std::string violationOf(const std::filesystem::path& schema, const std::string& document);

} // namespace vantle::desktop
