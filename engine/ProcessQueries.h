// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ProcessIdentity.h"
#include "engine/ports/ProcessView.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vantle {

// The small questions that everything else is built on. None of them changes a process; a platform that
// cannot answer yields an absent value, false or an empty list.

std::optional<ProcessIdentity> readIdentity(const ProcessTable& table, Pid pid);

// True while the recorded process itself still lives: same pid and same start time.
bool isSameLiveProcess(const ProcessTable& table, const ProcessIdentity& identity);

// The root, then all its descendants, each once, depth first from a stack: of two siblings the one listed
// later comes first. The root is always there, even when it no longer exists.
std::vector<Pid> processTree(const ProcessView& view, Pid root);

// The same from a scan of their own.
std::vector<Pid> childPIDs(const ProcessTable& table, Pid pid);
std::vector<Pid> processTree(const ProcessTable& table, Pid root);

// The process and every ancestor of it, never 0 or 1; empty for a pid below 2.
std::set<Pid> ancestorPIDs(const ProcessTable& table, Pid pid);

// The executable's full path as UTF-8, malformed sequences replaced by U+FFFD.
std::optional<std::string> executablePath(const ProcessTable& table, Pid pid);

} // namespace vantle
