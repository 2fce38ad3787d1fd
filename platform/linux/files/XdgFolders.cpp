// SPDX-License-Identifier: MIT
#include "platform/linux/files/XdgFolders.h"

#include "base/Text.h"

#include <cstdlib>
#include <pwd.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

// Relative paths are to be ignored, says the standard.
std::optional<std::string> absolute(const char* value) {
  if (value == nullptr || *value != '/') return std::nullopt;
  std::string path(value);
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

std::vector<std::string> absoluteAmong(const char* list, const char* usual) {
  std::vector<std::string> folders;
  for (const std::string& one : split(list == nullptr ? "" : list, ':')) {
    if (auto folder = absolute(one.c_str())) folders.push_back(std::move(*folder));
  }
  return folders.empty() ? split(usual, ':') : folders;
}

std::string homeFolder(const XdgFolders::Environment& environment) {
  if (auto home = absolute(environment("HOME"))) return *home;
  const passwd* entry = ::getpwuid(::getuid());
  return absolute(entry == nullptr ? nullptr : entry->pw_dir).value_or("/");
}

std::string below(const std::string& home, std::string_view name) {
  std::string path = home == "/" ? std::string{} : home;
  return path.append("/").append(name);
}

bool isOwnFolder(const std::string& path) {
  struct stat about {};
  return ::stat(path.c_str(), &about) == 0 && S_ISDIR(about.st_mode) && about.st_uid == ::geteuid();
}

// Programs started outside the session (from cron, over ssh) lack the variable and still share the folder.
std::optional<std::string> runtimeFolder(const XdgFolders::Environment& environment) {
  if (auto folder = absolute(environment("XDG_RUNTIME_DIR")); folder && isOwnFolder(*folder)) return folder;
  std::string usual = "/run/user/" + std::to_string(::geteuid());
  if (isOwnFolder(usual)) return usual;
  return std::nullopt;
}

} // namespace

XdgFolders XdgFolders::fromEnvironment() {
  return from([](const char* name) { return std::getenv(name); });
}

XdgFolders XdgFolders::from(const Environment& environment) {
  XdgFolders folders;
  folders.home = homeFolder(environment);
  const auto folder = [&](const char* variable, std::string_view usual) {
    return absolute(environment(variable)).value_or(below(folders.home, usual));
  };
  folders.data = folder("XDG_DATA_HOME", ".local/share");
  folders.config = folder("XDG_CONFIG_HOME", ".config");
  folders.runtime = runtimeFolder(environment);
  folders.systemData = absoluteAmong(environment("XDG_DATA_DIRS"), "/usr/local/share:/usr/share");
  folders.systemConfig = absoluteAmong(environment("XDG_CONFIG_DIRS"), "/etc/xdg");
  return folders;
}

std::vector<std::string> XdgFolders::allData() const {
  std::vector<std::string> all{data};
  all.insert(all.end(), systemData.begin(), systemData.end());
  return all;
}

} // namespace vantle
