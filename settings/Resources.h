// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// Makes the views and types of this room known; any number of times.
void registerSettingsTypes();

} // namespace vantle
