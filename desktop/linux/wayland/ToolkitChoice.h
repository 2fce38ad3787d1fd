// SPDX-License-Identifier: MIT
#pragma once

#include "base/Registration.h"

#include <memory>

namespace vantle {

// See Desktop::chooseToolkit.
std::unique_ptr<Registration> chooseToolkitPlugin();

} // namespace vantle
