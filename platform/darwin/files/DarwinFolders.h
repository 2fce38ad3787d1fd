// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace vantle {

// The person's folder for application data, without a trailing slash; the one that it has by custom when the
// system names none.
std::string applicationSupportFolder();

} // namespace vantle
