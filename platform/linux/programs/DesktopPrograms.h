// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>

// The programs that a desktop is made of (ProgramTable.h), and what follows for each of them.
namespace vantle {

// True for the programs that others wait for: sound servers, compositors and window managers, X servers,
// sessions, buses, input methods, hot keys and the like. By the kernel's name of the process, which it cuts
// off after 15 bytes. A program that takes such a name only spares itself.
bool isSystemPart(std::string_view processName);

// True for shells and the like, by the kernel's name of the process: what such a program has started has
// nothing to do with what else it has started.
bool isStarter(std::string_view processName);

// Whether a program is a part of some desktop rather than an app: panels, docks, window managers, launchers,
// notices, screen locks, polkit agents, portals and the like, by the name of its file.
bool isShellComponent(std::string_view fileName);

// The identifier among systemBundleIDs() (SystemApps.h) of the program that plays that part on its desktop: a
// file manager is "com.apple.finder". Absent for all other programs.
std::optional<std::string_view> systemIdentifierOfProgram(std::string_view fileName);
std::optional<std::string_view> systemIdentifierOfDesktopId(std::string_view desktopId); // without ".desktop"

} // namespace vantle
