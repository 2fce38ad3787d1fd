// SPDX-License-Identifier: MIT
#pragma once

#include "base/Json.h"
#include "status/Status.h"

namespace vantle {

// The object of `vantle status --json`, as docs/status.schema.json has it.
Json statusJson(const Status& status);
// The same where no copy runs; the version is that of whoever says so.
Json statusJsonWithoutCopy(const std::string& version);

} // namespace vantle
