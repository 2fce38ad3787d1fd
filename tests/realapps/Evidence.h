// SPDX-License-Identifier: MIT
#pragma once

#include "base/Json.h"
#include "tests/realapps/Stage.h"

#include <cstdint>
#include <set>
#include <string>

namespace vantle::realapps {

// What a program without any rights can see of a program: its window's claims, and of each of its processes
// what /proc says. Numbers of processes are counted from 1, and folders of this very run are named after what
// they are for, so that nothing of the machine is in it.
Json evidenceOf(Stage& stage, std::uint32_t window, Pid owner, const std::set<Pid>& processes);

// The desktop files of the machine, as the program reads them.
Json installedEntries();

// One key of the main part of a desktop file, without regard to languages.
std::string keyOf(const std::string& desktopFile, const std::string& key);
// Whether a theme or a folder of pictures that desktops look into has it.
bool hasPicture(const std::string& icon);

} // namespace vantle::realapps
