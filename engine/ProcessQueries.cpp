// SPDX-License-Identifier: MIT
#include "engine/ProcessQueries.h"

#include "base/Invariant.h"
#include "base/Utf8.h"

#include <unordered_set>

namespace vantle {

namespace {

// The longest path that is read, in bytes (PATH_MAX on Linux, PROC_PIDPATHINFO_MAXSIZE on Darwin).
constexpr std::size_t longestPath = 4096;

} // namespace

std::optional<ProcessIdentity> readIdentity(const ProcessTable& table, Pid pid) {
  const std::optional<ProcessRecord> record = table.record(pid);
  if (!record) return std::nullopt;
  return identityOf(*record);
}

bool isSameLiveProcess(const ProcessTable& table, const ProcessIdentity& identity) {
  return readIdentity(table, identity.pid) == identity;
}

std::vector<Pid> processTree(const ProcessView& view, Pid root) {
  std::vector<Pid> tree;
  std::vector<Pid> toVisit{root};
  std::unordered_set<Pid> visited;
  while (!toVisit.empty()) {
    const Pid pid = toVisit.back();
    toVisit.pop_back();
    if (!visited.insert(pid).second) continue;
    tree.push_back(pid);
    const std::vector<Pid>& children = view.childPIDs(pid);
    toVisit.insert(toVisit.end(), children.begin(), children.end());
  }
  return tree;
}

std::vector<Pid> childPIDs(const ProcessTable& table, Pid pid) {
  return ProcessView(table.scan(), {}).childPIDs(pid);
}

std::vector<Pid> processTree(const ProcessTable& table, Pid root) {
  return processTree(ProcessView(table.scan(), {}), root);
}

std::set<Pid> ancestorPIDs(const ProcessTable& table, Pid pid) {
  std::set<Pid> ancestors;
  Pid current = pid;
  while (current >= firstAppPid) {
    if (!ancestors.insert(current).second) break;
    const std::optional<ProcessRecord> record = table.record(current);
    if (!record) break;
    invariant(record->parent >= 0, "negative parent pid");
    current = record->parent;
  }
  return ancestors;
}

std::optional<std::string> executablePath(const ProcessTable& table, Pid pid) {
  const std::optional<std::string> bytes = table.executablePathBytes(pid);
  if (!bytes || bytes->empty()) return std::nullopt;
  const std::string_view whole = std::string_view(*bytes).substr(0, longestPath);
  return cleanUtf8(whole.substr(0, whole.find('\0')));
}

} // namespace vantle
