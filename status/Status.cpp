// SPDX-License-Identifier: MIT
#include "status/Status.h"

#include "base/Text.h"

#include <algorithm>
#include <iterator>

namespace vantle {

std::vector<AppStatus> appsNamed(const Status& status, std::string_view text) {
  const std::string wanted = asciiLowered(text);
  std::vector<AppStatus> found;
  std::copy_if(status.apps.begin(), status.apps.end(), std::back_inserter(found), [&](const AppStatus& app) {
    return std::to_string(app.pid) == wanted || asciiLowered(app.name) == wanted ||
           (app.id && asciiLowered(*app.id) == wanted);
  });
  return found;
}

} // namespace vantle
