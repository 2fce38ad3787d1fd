// SPDX-License-Identifier: MIT
#include "platform/linux/process/ProcessOrigin.h"

#include "base/Text.h"
#include "platform/linux/apps/AppEvidence.h"
#include "platform/linux/process/ProcessWords.h"
#include "platform/posix/process/BoundedWait.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <vector>

namespace vantle {

namespace {

constexpr std::chrono::milliseconds longestAnswer{100};
constexpr int mostStuck = 16;

// Where packages and people put programs that have nothing to do with each other.
bool isSharedName(std::string_view name) {
  constexpr std::array<std::string_view, 8> shared{"bin", "sbin",  "games", "libexec",
                                                   "lib", "lib32", "lib64", "tmp"};
  return std::find(shared.begin(), shared.end(), name) != shared.end() || name.ends_with("-linux-gnu");
}

// "/usr/lib/NAME", "/opt/NAME" and "/home/PERSON/FOLDER/NAME" are one program's.
bool isDeepEnough(std::string_view folder) {
  const auto depth = std::count(folder.begin(), folder.end(), '/');
  return depth >= (folder.starts_with("/opt/") ? 2 : folder.starts_with("/home/") ? 4 : 3);
}

// "/opt/NAME/bin" and "/opt/NAME/lib" are parts of one program; elsewhere such folders are everybody's.
std::string ownFolder(std::string folder) {
  while (folder.starts_with("/opt/") && isSharedName(fileNameOf(folder))) folder = folderOf(folder);
  return isSharedName(fileNameOf(folder)) || !isDeepEnough(folder) ? std::string() : folder;
}

constexpr std::string_view mountMark = "/.mount_";

// Of "/tmp/.mount_NAME/usr/bin/program" it is "/tmp/.mount_NAME"; empty for all others.
std::string imageMount(const std::string& executable) {
  const std::size_t mark = executable.find(mountMark);
  if (mark == std::string::npos) return {};
  const std::size_t end = executable.find('/', mark + mountMark.size());
  return end == std::string::npos ? std::string() : executable.substr(0, end);
}

} // namespace

std::string originOf(const std::string& executable,
                     const std::function<std::string(std::string_view variable)>& environment) {
  const std::string folder = folderOf(executable);
  if (folder.empty()) return {};
  if (fileNameOf(executable).starts_with("wine")) {
    if (const std::string prefix = environment("WINEPREFIX"); !prefix.empty()) return "wine:" + prefix;
    const std::string home = environment("HOME");
    return home.empty() ? std::string() : "wine:" + home + "/.wine";
  }
  if (asciiLowered(executable).ends_with(".appimage")) return "image:" + executable;
  if (const std::string mount = imageMount(executable); !mount.empty()) {
    const std::string image = environment("APPIMAGE");
    return "image:" + (image.empty() ? mount : image);
  }
  const std::string own = ownFolder(folder);
  return own.empty() ? std::string() : "folder:" + own;
}

std::vector<std::string> furtherOriginsOf(const std::string& executable) {
  if (const std::string mount = imageMount(executable); !mount.empty()) return {"image:" + mount};
  const std::string folder = folderOf(executable);
  const std::string name = fileNameOf(executable);
  std::vector<std::string> origins;
  for (const std::string prefix : {"/usr", "/usr/local"}) {
    const bool isIn = folder == prefix + "/bin" || folder == prefix + "/games";
    if (!isIn || isInterpreter(name)) continue;
    for (const char* const place : {"/lib/", "/lib64/", "/libexec/", "/lib/games/"})
      origins.emplace_back("folder:").append(prefix).append(place).append(name);
  }
  return origins;
}

std::string readOrigin(Pid pid, const std::string& executable) {
  std::optional<std::vector<std::string>> all;
  return originOf(executable, [&](std::string_view variable) {
    static BoundedWait wait(mostStuck);
    if (!all) all = wait.answer(longestAnswer, [pid] { return readEnvironment(pid); });
    if (!all) all.emplace();
    return valueOf(*all, variable);
  });
}

} // namespace vantle
