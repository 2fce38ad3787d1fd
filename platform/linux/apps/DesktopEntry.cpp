// SPDX-License-Identifier: MIT
#include "platform/linux/apps/DesktopEntry.h"

#include "base/Text.h"
#include "base/Utf8.h"
#include "platform/linux/apps/ExecLine.h"
#include "platform/linux/apps/OneLineName.h"
#include "platform/linux/apps/ProgramPath.h"
#include "platform/posix/files/PosixFileStore.h"
#include "platform/posix/files/RegularFile.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <glib.h>
#include <memory>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

struct GFree {
  void operator()(void* memory) const { g_free(memory); }
  void operator()(char** texts) const { g_strfreev(texts); }
  void operator()(GKeyFile* file) const { g_key_file_unref(file); }
};
template <class T> using GOwned = std::unique_ptr<T, GFree>;

constexpr std::size_t largestFile = std::size_t{1} << 20U; // bytes; larger is no desktop file

std::string text(const char* bytes) { return bytes == nullptr ? std::string() : std::string(bytes); }

std::string keyOf(GKeyFile* file, const char* key) {
  return text(GOwned<char>(g_key_file_get_string(file, G_KEY_FILE_DESKTOP_GROUP, key, nullptr)).get());
}

std::string localizedKeyOf(GKeyFile* file, const char* key) {
  const GOwned<char> value(
      g_key_file_get_locale_string(file, G_KEY_FILE_DESKTOP_GROUP, key, nullptr, nullptr));
  return value ? oneLineName(value.get()) : std::string();
}

GOwned<GKeyFile> readKeyFile(const std::string& path) {
  const std::optional<std::string> bytes =
      PosixFileStore({}, PosixFileStore::Sync::none, PosixFileStore::Foreign::readable)
          .read(path, largestFile);
  GOwned<GKeyFile> file(g_key_file_new());
  const bool isWhole = bytes && g_key_file_load_from_data(file.get(), bytes->data(), bytes->size(),
                                                          G_KEY_FILE_KEEP_TRANSLATIONS, nullptr) != 0;
  return isWhole ? std::move(file) : GOwned<GKeyFile>();
}

bool flagOf(GKeyFile* file, const char* key) {
  return g_key_file_get_boolean(file, G_KEY_FILE_DESKTOP_GROUP, key, nullptr) != 0;
}

bool isOfApp(GKeyFile* file) {
  const GOwned<char> firstGroup(g_key_file_get_start_group(file));
  return text(firstGroup.get()) == G_KEY_FILE_DESKTOP_GROUP &&
         keyOf(file, G_KEY_FILE_DESKTOP_KEY_TYPE) == G_KEY_FILE_DESKTOP_TYPE_APPLICATION &&
         !flagOf(file, G_KEY_FILE_DESKTOP_KEY_HIDDEN);
}

// "./run" stands in the folder that the program is started in.
std::string pathIn(const std::string& folder, const std::string& program) {
  const bool isBeside = !program.starts_with('/') && program.find('/') != std::string::npos;
  if (!isBeside) return absolutePath(program);
  return folder.empty() ? std::string()
                        : (std::filesystem::path(folder) / program).lexically_normal().string();
}

bool isInstalled(GKeyFile* file) {
  const std::string tried = keyOf(file, G_KEY_FILE_DESKTOP_KEY_TRY_EXEC);
  if (!tried.empty() && !isProgram(absolutePath(tried))) return false;
  const std::string line = keyOf(file, G_KEY_FILE_DESKTOP_KEY_EXEC);
  if (line.empty()) return true;
  const std::vector<std::string> words = shellWords(line);
  return !words.empty() &&
         isProgram(pathIn(keyOf(file, G_KEY_FILE_DESKTOP_KEY_PATH), singlePercents(words.front())));
}

constexpr std::string_view scriptMark = "#!";

// Of a script its text, as far as it may be of interest; empty of all others.
std::string scriptAt(const std::string& path) {
  std::string text(std::size_t{16} * 1024, 0);
  const Descriptor file = openRegularFile(path);
  const ssize_t count = ::read(file.get(), text.data(), text.size());
  text.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
  return text.starts_with(scriptMark) ? text : std::string();
}

} // namespace

bool isStoreOfGames(std::string_view categories) {
  return holdsPart(categories, ';', "Game") &&
         (holdsPart(categories, ';', "PackageManager") || holdsPart(categories, ';', "FileTransfer"));
}

std::string categoryOf(std::string_view categories) {
  // The registered main categories that have a counterpart, the most telling first.
  using Pair = std::pair<std::string_view, std::string_view>;
  constexpr std::array known{
      Pair{"Game", "games"},
      Pair{"Development", "developer-tools"},
      Pair{"Education", "education"},
      Pair{"Finance", "finance"},
      Pair{"Graphics", "graphics-design"},
      Pair{"Video", "video"},
      Pair{"Audio", "music"},
      Pair{"AudioVideo", "music"},
      Pair{"Office", "productivity"},
      Pair{"Network", "social-networking"},
      Pair{"Utility", "utilities"},
      Pair{"System", "utilities"},
      Pair{"Settings", "utilities"},
  };
  const bool isStore = isStoreOfGames(categories);
  for (const auto& [name, counterpart] : known) {
    if (!holdsPart(categories, ';', name) || (isStore && name == "Game")) continue;
    return "public.app-category." + std::string(counterpart);
  }
  return {};
}

namespace {

DesktopEntry entryIn(GKeyFile* file, const std::string& path, const std::string& id) {
  const GOwned<char> name(g_key_file_get_locale_string(file, G_KEY_FILE_DESKTOP_GROUP,
                                                       G_KEY_FILE_DESKTOP_KEY_NAME, nullptr, nullptr));
  const std::string keywords = localizedKeyOf(file, "Keywords");
  DesktopEntry entry;
  entry.id = cleanUtf8(id);
  entry.path = path;
  entry.name = name ? oneLineName(name.get()) : "Unnamed";
  entry.words = localizedKeyOf(file, G_KEY_FILE_DESKTOP_KEY_GENERIC_NAME);
  if (!keywords.empty()) entry.words += (entry.words.empty() ? "" : " ") + keywords;
  entry.icon = cleanUtf8(keyOf(file, G_KEY_FILE_DESKTOP_KEY_ICON));
  entry.windowClass = keyOf(file, G_KEY_FILE_DESKTOP_KEY_STARTUP_WM_CLASS);
  entry.category = categoryOf(keyOf(file, G_KEY_FILE_DESKTOP_KEY_CATEGORIES));
  entry.isStore = isStoreOfGames(keyOf(file, G_KEY_FILE_DESKTOP_KEY_CATEGORIES));
  entry.isHidden = flagOf(file, G_KEY_FILE_DESKTOP_KEY_NO_DISPLAY);
  entry.folder = keyOf(file, G_KEY_FILE_DESKTOP_KEY_PATH);
  auto [words, told] = innerProgramOf(keyOf(file, G_KEY_FILE_DESKTOP_KEY_EXEC));
  // What only the shell finds, after reading its own files, is the shell's.
  if (!told.empty() && !isProgram(pathIn(entry.folder, words.front()))) words = std::exchange(told, {});
  if (!told.empty()) entry.told.assign(told.begin() + 1, told.end());
  if (!words.empty()) {
    entry.executable = pathIn(entry.folder, words.front());
    entry.realPath = realPath(entry.executable);
    const std::string script = scriptAt(entry.realPath);
    entry.isScript = !script.empty();
    entry.becomes = programOfScript(script, folderOf(entry.realPath));
    entry.becomes.program = realPath(absolutePath(entry.becomes.program));
    entry.becomes.folder = realPath(entry.becomes.folder);
    words.erase(words.begin());
    entry.arguments = std::move(words);
  }
  return entry;
}

} // namespace

std::optional<DesktopEntry> readDesktopEntry(const std::string& path, const std::string& id) {
  const GOwned<GKeyFile> file = readKeyFile(path);
  if (!file || !isOfApp(file.get()) || !isInstalled(file.get())) return {};
  return entryIn(file.get(), path, id);
}

std::optional<DesktopEntry> readImagesEntry(const std::string& folder) {
  constexpr std::string_view ending = ".desktop";
  std::vector<std::string> names;
  std::error_code error;
  for (std::filesystem::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    std::string name = at->path().filename().string();
    if (name.ends_with(ending)) names.push_back(std::move(name));
  }
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    std::string path = folder;
    path.append("/").append(name);
    const GOwned<GKeyFile> file = readKeyFile(path);
    if (file && isOfApp(file.get()))
      return entryIn(file.get(), path, name.substr(0, name.size() - ending.size()));
  }
  return {};
}

} // namespace vantle
