// SPDX-License-Identifier: MIT
#pragma once

#include "update/UpdateState.h"

#include <optional>
#include <string>

namespace vantle {

// What came back from one request for the feed.
struct Answer {
  bool transportFailed = false; // no connection, no trust, no answer in time
  std::optional<int> status;    // of the HTTP response; absent when there was none
  std::string body;
};

// What an answer means for a build of the given version.
update::State meaningOf(const Answer& answer, const std::string& currentVersion,
                        const std::string& vendorHost);

} // namespace vantle
