// SPDX-License-Identifier: MIT
#include "platform/darwin/catalog/CocoaCatalog.h"

#include "base/Text.h"
#include "engine/ports/SystemApps.h"
#import "platform/darwin/cocoa/Values.h"

#import <AppKit/AppKit.h>
#include <set>
#include <string_view>
#include <utility>

namespace vantle {

namespace {

constexpr std::string_view ending = ".app";

bool isApp(std::string_view path) { return path.ends_with(ending); }

std::string withoutEnding(std::string name) {
  if (isApp(name)) name.resize(name.size() - ending.size());
  return name;
}

std::string keyOf(const std::string& path) {
  NSBundle* const bundle = [NSBundle bundleWithPath:stringOf(path)];
  return textOf([bundle bundleIdentifier]).value_or(withoutEnding(fileNameOf(path)));
}

InstalledApplication described(std::string key, const std::string& path) {
  const auto name = textOf([[NSFileManager defaultManager] displayNameAtPath:stringOf(path)]);
  std::string shown = withoutEnding(name.value_or(key));
  return {std::move(key), std::move(shown), path, path};
}

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (id name in [[NSFileManager defaultManager] contentsOfDirectoryAtPath:stringOf(folder) error:nullptr]) {
    if (auto text = textOf(name)) names.push_back(std::move(*text));
  }
  return names;
}

std::vector<std::string> appFolders() {
  std::vector<std::string> folders;
  for (id folder in NSSearchPathForDirectoriesInDomains(NSAllApplicationsDirectory, NSAllDomainsMask, YES)) {
    if (auto path = textOf(folder)) folders.push_back(std::move(*path));
  }
  return folders;
}

std::optional<InstalledApplication> ofKey(const std::string& key) {
  @autoreleasepool {
    NSURL* const found = [[NSWorkspace sharedWorkspace] URLForApplicationWithBundleIdentifier:stringOf(key)];
    const auto path = textOf([found path]);
    if (!path) return std::nullopt;
    return described(key, *path);
  }
}

std::optional<InstalledApplication> pickedAt(const std::string& path) {
  @autoreleasepool {
    BOOL isFolder = NO;
    const bool isThere = [[NSFileManager defaultManager] fileExistsAtPath:stringOf(path)
                                                              isDirectory:&isFolder];
    if (!isThere || !isFolder || !isApp(path)) return std::nullopt;
    std::string key = keyOf(path);
    if (isSystemApp(key)) return std::nullopt;
    return described(std::move(key), path);
  }
}

} // namespace

std::vector<InstalledApplication> CocoaCatalog::installedApplications() const {
  @autoreleasepool {
    std::vector<InstalledApplication> applications;
    std::set<std::string> keys;
    for (const std::string& folder : appFolders()) {
      for (const std::string& name : namesIn(folder)) {
        if (!isApp(name)) continue;
        const std::string path = std::string(folder).append("/").append(name);
        std::string key = keyOf(path);
        if (!isSystemApp(key) && keys.insert(key).second)
          applications.push_back(described(std::move(key), path));
      }
    }
    return applications;
  }
}

ApplicationCatalog::Found CocoaCatalog::applicationsForKeys(const std::vector<std::string>& keys) const {
  Found found;
  for (const std::string& key : keys) found.push_back(ofKey(key));
  return found;
}

ApplicationCatalog::Found CocoaCatalog::applicationsAt(const std::vector<std::string>& paths) const {
  Found found;
  for (const std::string& path : paths) found.push_back(pickedAt(path));
  return found;
}

} // namespace vantle
