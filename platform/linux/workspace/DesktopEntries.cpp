// SPDX-License-Identifier: MIT
#include "platform/linux/workspace/DesktopEntries.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace vantle {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view suffix = ".desktop";
constexpr int deepest = 4; // folders below "applications"; links could make it endless

std::int64_t changedAt(const std::string& folder) {
  struct stat status {};
  if (::stat(folder.c_str(), &status) != 0) return -1;
  return std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
}

std::string environment(const char* name, const std::string& fallback) {
  const char* const value = std::getenv(name);
  return value == nullptr || *value == '\0' ? fallback : value;
}

} // namespace

std::vector<std::string> DesktopEntries::dataFoldersFromEnvironment() {
  const std::string home = environment("HOME", "/");
  std::vector<std::string> folders{environment("XDG_DATA_HOME", home + "/.local/share")};
  std::string list = environment("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
  for (std::string_view left = list; !left.empty();) {
    const std::size_t end = std::min(left.find(':'), left.size());
    if (left.starts_with('/')) folders.emplace_back(left.substr(0, end));
    left.remove_prefix(std::min(end + 1, left.size()));
  }
  return folders;
}

const std::vector<DesktopEntry>& DesktopEntries::all() {
  if (m_stamps.empty() || !isCurrent()) read();
  return m_entries;
}

const DesktopEntry* DesktopEntries::find(const std::string& id) {
  const std::vector<DesktopEntry>& entries = all();
  const auto found =
      std::find_if(entries.begin(), entries.end(), [&](const DesktopEntry& entry) { return entry.id == id; });
  return found == entries.end() ? nullptr : &*found;
}

bool DesktopEntries::isCurrent() const {
  return std::all_of(m_stamps.begin(), m_stamps.end(),
                     [](const auto& stamp) { return changedAt(stamp.first) == stamp.second; });
}

void DesktopEntries::read() {
  m_entries.clear();
  m_stamps.clear();
  for (const std::string& folder : m_dataFolders) readFolder(folder + "/applications", {}, 0);
  m_entries.shrink_to_fit();
}

void DesktopEntries::readFolder(const std::string& folder, const std::string& prefix, int depth) {
  if (!m_stamps.emplace(folder, changedAt(folder)).second || depth > deepest) return;
  std::vector<fs::path> paths;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    paths.push_back(entry->path());
  }
  std::sort(paths.begin(), paths.end()); // so that the same files always give the same answer
  for (const fs::path& path : paths) {
    const std::string name = path.filename().string();
    if (fs::is_directory(path, error)) {
      readFolder(path.string(), prefix + name + "-", depth + 1);
      continue;
    }
    if (!name.ends_with(suffix) || !fs::is_regular_file(path, error)) continue;
    const std::string id = prefix + name.substr(0, name.size() - suffix.size());
    const bool isKnown = std::any_of(m_entries.begin(), m_entries.end(),
                                     [&](const DesktopEntry& entry) { return entry.id == id; });
    if (isKnown) continue;
    if (std::optional<DesktopEntry> entry = readDesktopEntry(path.string(), id)) {
      m_entries.push_back(*std::move(entry));
    }
  }
}

} // namespace vantle
