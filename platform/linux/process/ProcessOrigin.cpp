// SPDX-License-Identifier: MIT
#include "platform/linux/process/ProcessOrigin.h"

#include "base/Text.h"
#include "platform/linux/process/KernelFile.h"
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
bool isSharedFolder(std::string_view folder) {
  constexpr std::array<std::string_view, 8> shared{"bin", "sbin",  "games", "libexec",
                                                   "lib", "lib32", "lib64", "tmp"};
  const std::string name = fileNameOf(folder);
  if (std::find(shared.begin(), shared.end(), name) != shared.end() || name.ends_with("-linux-gnu"))
    return true;
  const auto depth = std::count(folder.begin(), folder.end(), '/');
  // "/usr/lib/NAME", "/opt/NAME" and "/home/PERSON/FOLDER/NAME" are one program's.
  return depth < (folder.starts_with("/opt/") ? 2 : folder.starts_with("/home/") ? 4 : 3);
}

std::string valueIn(const std::string& environment, std::string_view variable) {
  for (const std::string& one : split(environment, '\0')) {
    if (one.starts_with(variable) && one.size() > variable.size() && one[variable.size()] == '=')
      return one.substr(variable.size() + 1);
  }
  return {};
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
  if (executable.find("/.mount_") != std::string::npos) {
    const std::string image = environment("APPIMAGE");
    return image.empty() ? std::string() : "image:" + image;
  }
  return isSharedFolder(folder) ? std::string() : "folder:" + folder;
}

std::string readOrigin(const ProcKernel& kernel, Pid pid) {
  const std::string link = std::to_string(pid) + "/exe";
  std::string executable = readKernelLink(kernel.folder(), link.c_str()).value_or("");
  if (executable.ends_with(deletedMark)) executable.resize(executable.size() - deletedMark.size());
  // It lies in the process's own memory, and that says when it can be read.
  std::optional<std::string> all;
  return originOf(executable, [&](std::string_view variable) {
    if (!all) {
      static BoundedWait wait(mostStuck);
      all = wait.answer(longestAnswer, [pid] {
        return readKernelFile("/proc/" + std::to_string(pid) + "/environ").value_or("");
      });
      if (!all) all.emplace();
    }
    return valueIn(*all, variable);
  });
}

} // namespace vantle
