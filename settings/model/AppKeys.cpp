// SPDX-License-Identifier: MIT
#include "settings/model/AppKeys.h"

#include <string_view>

namespace vantle {

std::string shownName(const InstalledApplication& application) {
  constexpr std::string_view ending = ".app";
  std::string name = application.name;
  if (name.ends_with(ending)) name.resize(name.size() - ending.size());
  return name;
}

std::string displayNameForKey(const ApplicationCatalog& catalog, const std::string& key) {
  const auto application = catalog.applicationForKey(key);
  return application ? shownName(*application) : catalog.knownName(key).value_or(key);
}

std::string iconForKey(const ApplicationCatalog& catalog, const std::string& key) {
  const auto application = catalog.applicationForKey(key);
  return application ? application->icon : std::string{};
}

} // namespace vantle
