// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/apps/AppEvidence.h"

#include <optional>
#include <string>

namespace vantle {

// What a process of that program would show of itself, so that the app can be named before it runs: a program
// of the machine's own, an AppImage, or a Windows program under Wine. Absent for anything else, also for
// scripts and interpreters: their windows are called by what runs in the end.
std::optional<AppEvidence> evidenceOfProgram(const std::string& path);

} // namespace vantle
