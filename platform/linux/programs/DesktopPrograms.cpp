// SPDX-License-Identifier: MIT
#include "platform/linux/programs/DesktopPrograms.h"

#include "platform/linux/programs/ProgramTable.h"

#include <algorithm>
#include <cstddef>

namespace vantle {

namespace {

using programTable::Row;

constexpr std::size_t longestProcessName = 15; // the kernel's TASK_COMM_LEN without the zero behind it

constexpr std::string_view processNameOf(std::string_view name) { return name.substr(0, longestProcessName); }
constexpr bool isWaited(const Row& row) { return (row.kinds & programTable::waited) != 0; }
constexpr bool isStarterRow(const Row& row) { return (row.kinds & programTable::starter) != 0; }
constexpr bool isShell(const Row& row) { return (row.kinds & programTable::shell) != 0; }
constexpr bool isBefore(const Row& left, const Row& right) { return left.name < right.name; }

template <std::size_t count> constexpr auto sorted(std::array<Row, count> rows) {
  std::sort(rows.begin(), rows.end(), isBefore);
  return rows;
}

template <std::size_t count> constexpr auto sortedByProcessName(std::array<Row, count> rows) {
  for (Row& row : rows) row.name = processNameOf(row.name);
  return sorted(rows);
}

constexpr auto programs = sorted(programTable::programs);
constexpr auto processes = sortedByProcessName(programTable::programs);
constexpr auto desktopIds = sorted(programTable::desktopIds);
constexpr auto& families = programTable::families;

constexpr bool isFileName(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char letter) {
    return letter > ' ' && letter <= '~' && letter != '/';
  });
}

constexpr bool isUnique(const auto& rows) {
  return std::all_of(rows.begin(), rows.end(), [](const Row& row) { return isFileName(row.name); }) &&
         std::adjacent_find(rows.begin(), rows.end(), [](const Row& left, const Row& right) {
           return left.name == right.name;
         }) == rows.end();
}

constexpr bool isInFamily(std::string_view name) {
  return std::any_of(families.begin(), families.end(),
                     [name](const Row& family) { return name.starts_with(family.name); });
}

static_assert(isUnique(programs) && isUnique(desktopIds) && isUnique(sorted(families)),
              "a name twice, or one that no file can have");
static_assert(std::none_of(programs.begin(), programs.end(),
                           [](const Row& row) { return isInFamily(row.name); }),
              "a name that its family answers for");
static_assert(std::adjacent_find(processes.begin(), processes.end(),
                                 [](const Row& left, const Row& right) {
                                   return left.name == right.name && isWaited(left) != isWaited(right);
                                 }) == processes.end(),
              "the kernel's name for one that is waited for would spare the other as well");
static_assert(std::all_of(desktopIds.begin(), desktopIds.end(),
                          [](const Row& row) { return !row.systemIdentifier.empty(); }),
              "a desktop file that stands for nothing");

const Row* find(const auto& rows, std::string_view name) {
  const auto found =
      std::lower_bound(rows.begin(), rows.end(), name,
                       [](const Row& row, std::string_view sought) { return row.name < sought; });
  return found == rows.end() || found->name != name ? nullptr : &*found;
}

std::optional<std::string_view> identifierIn(const Row* row) {
  return row == nullptr || row->systemIdentifier.empty() ? std::nullopt
                                                         : std::optional(row->systemIdentifier);
}

} // namespace

bool isSystemPart(std::string_view processName) {
  if (processName.size() > longestProcessName) return false;
  if (const Row* row = find(processes, processName)) return isWaited(*row);
  return std::any_of(families.begin(), families.end(), [processName](const Row& family) {
    return isWaited(family) && processName.starts_with(processNameOf(family.name));
  });
}

bool isStarter(std::string_view processName) {
  if (const Row* row = find(processes, processName)) return isStarterRow(*row);
  return std::any_of(families.begin(), families.end(), [processName](const Row& family) {
    return isStarterRow(family) && processName.starts_with(processNameOf(family.name));
  });
}

bool isShellComponent(std::string_view fileName) {
  if (const Row* row = find(programs, fileName)) return isShell(*row);
  // polkit-kde-authentication-agent-1, ukui-polkit-authentication-agent-1, …
  return fileName.find("-authentication-agent-") != std::string_view::npos ||
         std::any_of(families.begin(), families.end(), [fileName](const Row& family) {
           return isShell(family) && fileName.starts_with(family.name);
         });
}

std::optional<std::string_view> systemIdentifierOfProgram(std::string_view fileName) {
  return identifierIn(find(programs, fileName));
}

std::optional<std::string_view> systemIdentifierOfDesktopId(std::string_view desktopId) {
  if (const Row* row = find(desktopIds, desktopId)) return row->systemIdentifier;
  return systemIdentifierOfProgram(desktopId); // most are named after their program
}

} // namespace vantle
