// SPDX-License-Identifier: MIT
#include "platform/linux/apps/DesktopEntries.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace vantle {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view suffix = ".desktop";
constexpr int deepest = 4; // folders below "applications"; links could make it endless

constexpr std::chrono::milliseconds longestNews{100};
constexpr std::chrono::seconds longestFolder{4};
constexpr std::chrono::seconds longestFirstReading{5}; // at the start, when nothing is known yet

using Stamps = std::map<std::string, std::int64_t>; // when each folder last changed, in nanoseconds

std::int64_t changedAt(const std::string& folder) {
  struct stat status {};
  if (::stat(folder.c_str(), &status) != 0) return -1;
  return std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
}

// One data folder, as one thread reads it.
struct FolderReading {
  std::vector<DesktopEntry> entries;
  Stamps stamps;
};

// Many desktop files can name programs of one file system that has died.
BoundedWait& filesWait() {
  static BoundedWait wait(64);
  return wait;
}

class FolderReader {
 public:
  explicit FolderReader(std::shared_ptr<std::atomic<int>> late) : m_late(std::move(late)) {}

  void read(const std::string& folder, const std::string& prefix, int depth) {
    if (!m_reading.stamps.emplace(folder, changedAt(folder)).second || depth > deepest) return;
    std::vector<fs::path> paths;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
      paths.push_back(entry->path());
    }
    std::sort(paths.begin(), paths.end()); // so that the same files always give the same answer
    for (const fs::path& path : paths) {
      const std::string name = path.filename().string();
      if (fs::is_directory(path, error)) {
        read(path.string(), prefix + name + "-", depth + 1);
      } else if (name.ends_with(suffix)) {
        readFile(path.string(), prefix + name.substr(0, name.size() - suffix.size()));
      }
    }
  }
  FolderReading take() { return std::move(m_reading); }

 private:
  void readFile(const std::string& path, const std::string& id) {
    auto entry = filesWait().answer(
        m_limit, [path, id] { return readDesktopEntry(path, id); }, m_late);
    if (!entry) {
      m_limit = afterTheFirst;
    } else if (*entry) {
      m_reading.entries.push_back(std::move(**entry));
    }
  }

  FolderReading m_reading;
  std::shared_ptr<std::atomic<int>> m_late;
  std::chrono::milliseconds m_limit{200};
  static constexpr std::chrono::milliseconds afterTheFirst{50};
};

} // namespace

// Shared with the threads that read. A folder without an answer is counted when it has one.
struct DesktopEntries::Reading {
  std::vector<std::string> dataFolders;
  std::shared_ptr<std::atomic<int>> late = std::make_shared<std::atomic<int>>(0);
  std::vector<FolderReading> folders;
  bool isSame = false; // nothing has changed since the one before

  bool isCurrent() const {
    return *late == 0 && std::all_of(folders.begin(), folders.end(), [](const FolderReading& folder) {
      return std::all_of(folder.stamps.begin(), folder.stamps.end(),
                         [](const auto& stamp) { return changedAt(stamp.first) == stamp.second; });
    });
  }
  void readFolders() {
    static BoundedWait wait(8);
    for (const std::string& folder : dataFolders) {
      const auto read = [folder, late = late] {
        FolderReader reader(late);
        reader.read(folder + "/applications", {}, 0);
        return reader.take();
      };
      folders.push_back(wait.answer(longestFolder, read, late).value_or(FolderReading{}));
    }
  }
};

DesktopEntries::DesktopEntries(std::vector<std::string> dataFolders)
    : m_dataFolders(std::move(dataFolders)) {}
DesktopEntries::~DesktopEntries() = default;

const std::vector<DesktopEntry>& DesktopEntries::all() {
  const bool isFirst = !m_known;
  if (m_inProgress) {
    if (!*m_isRead) return m_entries; // it has been waited for already
    takeOver();
  }
  auto reading = std::make_shared<Reading>();
  reading->dataFolders = m_dataFolders;
  m_inProgress = reading;
  m_isRead = std::make_shared<std::atomic<bool>>(false);
  const auto read = [reading, known = m_known, isRead = m_isRead] {
    reading->isSame = known && known->isCurrent();
    if (!reading->isSame) reading->readFolders();
    *isRead = true;
    return true;
  };
  if (m_wait.answer(isFirst ? std::chrono::milliseconds(longestFirstReading) : longestNews, read)) takeOver();
  return m_entries;
}

void DesktopEntries::takeOver() {
  const std::shared_ptr<Reading> reading = std::exchange(m_inProgress, nullptr);
  if (reading->isSame) return;
  m_known = reading;
  m_entries.clear();
  std::set<std::string> ids;
  for (FolderReading& folder : reading->folders) {
    for (DesktopEntry& entry : std::exchange(folder.entries, {})) {
      if (ids.insert(entry.id).second) m_entries.push_back(std::move(entry));
    }
  }
  m_entries.shrink_to_fit();
}

} // namespace vantle
