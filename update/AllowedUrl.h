// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace vantle {

// Whether an address may be asked for the feed or opened as a download page: well-formed, its scheme written
// exactly "https", and its host, in lower case, exactly the vendor's.
bool isAllowedUrl(std::string_view address, std::string_view vendorHost);

} // namespace vantle
