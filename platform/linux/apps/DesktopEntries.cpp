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

std::int64_t changedAt(const struct stat& status) {
  return std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
}

std::int64_t changedAt(const std::string& folder) {
  struct stat status {};
  return ::stat(folder.c_str(), &status) == 0 ? changedAt(status) : -1;
}

// Which file a path leads to, and as of when. All zero: to none.
struct FileStamp {
  std::uint64_t number = 0;
  std::int64_t size = 0;
  std::int64_t changed = 0; // nanoseconds

  bool operator==(const FileStamp&) const = default;
};

FileStamp stampOf(const struct stat& status) { return {status.st_ino, status.st_size, changedAt(status)}; }

// Of a link nothing is said: it stays the same when something else is put where it leads.
FileStamp stampOfFile(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? stampOf(status) : FileStamp{};
}

FileStamp stampOfProgram(const std::string& path) {
  struct stat status {};
  return !path.empty() && ::stat(path.c_str(), &status) == 0 ? stampOf(status) : FileStamp{};
}

// What an entry was read from.
struct EntryStamps {
  FileStamp file;
  FileStamp program;
};

struct StampedEntry {
  DesktopEntry entry;
  EntryStamps stamps;
};

// One data folder, as one thread reads it.
struct FolderReading {
  std::vector<StampedEntry> entries;
  Stamps stamps;
};

// Many desktop files can name programs of one file system that has died.
BoundedWait& filesWait() {
  static BoundedWait wait(64);
  return wait;
}

} // namespace

// The parts are of the same length, and never change: threads that read may still have an old one.
struct DesktopEntries::Table {
  std::vector<DesktopEntry> entries;
  std::vector<EntryStamps> stamps;
};

namespace {

// Of a table, and what it was read from.
using KnownEntry = std::pair<const DesktopEntry*, const EntryStamps*>;
using KnownEntries = std::map<std::string_view, KnownEntry>; // by path

class FolderReader {
 public:
  FolderReader(const KnownEntries& known, std::shared_ptr<std::atomic<int>> late)
      : m_known(known), m_late(std::move(late)) {}

  void read(const std::string& folder, const std::string& prefix, int depth) {
    if (!m_folders.emplace(folder, changedAt(folder)).second || depth > deepest) return;
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
        const std::string id = prefix + name.substr(0, name.size() - suffix.size());
        m_files.push_back({path.string(), id, stampOfFile(path.string())});
      }
    }
  }

  FolderReading take() {
    keepWhatIsSame();
    FolderReading reading{{}, std::move(m_folders)};
    for (File& file : m_files) {
      if (file.same.first != nullptr) {
        reading.entries.push_back({*file.same.first, *file.same.second});
      } else if (auto entry = readFile(file)) {
        reading.entries.push_back(std::move(*entry));
      }
    }
    return reading;
  }

 private:
  struct File {
    std::string path;
    std::string id;
    FileStamp stamp;
    KnownEntry same{}; // null when it has to be read
  };

  // The programs can be anywhere, so all of them are one question. Without an answer they are as they were.
  void keepWhatIsSame() {
    std::vector<std::string> programs;
    for (File& file : m_files) {
      const auto known = m_known.find(file.path);
      if (file.stamp == FileStamp{} || known == m_known.end()) continue;
      if (known->second.second->file != file.stamp || known->second.first->id != file.id) continue;
      file.same = known->second;
      programs.push_back(file.same.first->executable);
    }
    if (programs.empty()) return;
    const auto stamps = filesWait().answer(
        m_limit,
        [programs] {
          std::vector<FileStamp> found;
          found.reserve(programs.size());
          for (const std::string& program : programs) found.push_back(stampOfProgram(program));
          return found;
        },
        m_late);
    if (!stamps) return;
    auto stamp = stamps->begin();
    for (File& file : m_files) {
      if (file.same.first != nullptr && *stamp++ != file.same.second->program) file.same = {};
    }
  }

  std::optional<StampedEntry> readFile(const File& file) {
    auto entry = filesWait().answer(
        m_limit,
        [file]() -> std::optional<StampedEntry> {
          std::optional<DesktopEntry> read = readDesktopEntry(file.path, file.id);
          if (!read) return {};
          const FileStamp program = stampOfProgram(read->executable);
          return StampedEntry{std::move(*read), {file.stamp, program}};
        },
        m_late);
    if (!entry) m_limit = afterTheFirst;
    return entry ? std::move(*entry) : std::nullopt;
  }

  const KnownEntries& m_known;
  std::shared_ptr<std::atomic<int>> m_late;
  Stamps m_folders;
  std::vector<File> m_files;
  std::chrono::milliseconds m_limit{200};
  static constexpr std::chrono::milliseconds afterTheFirst{50};
};

} // namespace

// Shared with the threads that read. A folder without an answer is counted when it has one.
struct DesktopEntries::Reading {
  std::vector<std::string> dataFolders;
  std::shared_ptr<const Table> before;
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
    const auto known = std::make_shared<KnownEntries>();
    for (std::size_t at = 0; at < before->entries.size(); ++at) {
      known->emplace(before->entries[at].path, KnownEntry{&before->entries[at], &before->stamps[at]});
    }
    for (const std::string& folder : dataFolders) {
      const auto read = [folder, late = late, before = before, known] {
        FolderReader reader(*known, late);
        reader.read(folder + "/applications", {}, 0);
        return reader.take();
      };
      folders.push_back(wait.answer(longestFolder, read, late).value_or(FolderReading{}));
    }
  }
};

DesktopEntries::DesktopEntries(std::vector<std::string> dataFolders)
    : m_dataFolders(std::move(dataFolders)), m_table(std::make_shared<const Table>()) {}
DesktopEntries::~DesktopEntries() = default;

const std::vector<DesktopEntry>& DesktopEntries::all() {
  const bool isFirst = !m_known;
  if (m_inProgress) {
    if (!*m_isRead) return m_table->entries; // it has been waited for already
    takeOver();
  }
  auto reading = std::make_shared<Reading>();
  reading->dataFolders = m_dataFolders;
  reading->before = m_table;
  m_inProgress = reading;
  m_isRead = std::make_shared<std::atomic<bool>>(false);
  const auto read = [reading, known = m_known, isRead = m_isRead] {
    reading->isSame = known && known->isCurrent();
    if (!reading->isSame) reading->readFolders();
    *isRead = true;
    return true;
  };
  if (m_wait.answer(isFirst ? std::chrono::milliseconds(longestFirstReading) : longestNews, read)) takeOver();
  return m_table->entries;
}

void DesktopEntries::takeOver() {
  const std::shared_ptr<Reading> reading = std::exchange(m_inProgress, nullptr);
  if (reading->isSame) return;
  m_known = reading;
  reading->before.reset();
  Table table;
  std::set<std::string> ids;
  for (FolderReading& folder : reading->folders) {
    for (StampedEntry& read : std::exchange(folder.entries, {})) {
      if (!ids.insert(read.entry.id).second) continue;
      table.entries.push_back(std::move(read.entry));
      table.stamps.push_back(read.stamps);
    }
  }
  table.entries.shrink_to_fit();
  m_table = std::make_shared<const Table>(std::move(table));
}

} // namespace vantle
