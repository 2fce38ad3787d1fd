// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"

namespace vantle {

// That of this system, with another folder for application data than the person's.
std::unique_ptr<Platform> darwinPlatformIn(std::string support);

} // namespace vantle
