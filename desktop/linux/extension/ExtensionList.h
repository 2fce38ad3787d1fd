// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantle {

// A setting that is a list of extensions, in the notation in which GNOME's own tools print it and take it:
// ['one@example.org', 'two@example.org'], or @as [] for none.
bool namesExtension(std::string_view list, std::string_view uuid);
// Absent when it is no such list.
std::optional<std::string> withExtension(std::string_view list, std::string_view uuid);
std::optional<std::string> withoutExtension(std::string_view list, std::string_view uuid);

} // namespace vantle
