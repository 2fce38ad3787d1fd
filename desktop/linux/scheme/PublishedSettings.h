// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace vantle {

// What a desktop's settings program publishes on an X server, by the names of the XSETTINGS protocol
// ("Net/ThemeName"). Colours are left out.
struct PublishedSettings {
  std::map<std::string, std::string> texts;
  std::map<std::string, std::int32_t> numbers;
  bool operator==(const PublishedSettings&) const = default;
};

// From the bytes of the property that holds them. What is cut off or makes no sense ends the reading; what
// was read until then stays.
PublishedSettings readPublishedSettings(std::string_view bytes);

} // namespace vantle
