// SPDX-License-Identifier: MIT
#pragma once

#include "engine/Engine.h"
#include "engine/ports/Machine.h"
#include "status/Status.h"

#include <string>

namespace vantle {

// All that is told of the engine and the apps. One look at the machine, so it is not for every moment.
Status statusOf(const Engine& engine, const Machine& machine, const std::string& version);

} // namespace vantle
