// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/Descriptor.h"

#include <string>

namespace vantle {

// Opens a file for reading if it is a regular one: nothing else is touched, since opening alone can wait for
// the other end of a pipe or move a device.
Descriptor openRegularFile(const std::string& path);

} // namespace vantle
