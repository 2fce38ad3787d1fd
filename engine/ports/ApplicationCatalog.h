// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vantle {

// An app as it is installed, running or not. All texts are UTF-8.
struct InstalledApplication {
  std::string key;        // what the app lists of the settings call it: the bundle identifier it runs under
  std::string name;       // as the desktop shows it
  std::string icon;       // a themed icon name or the absolute path of a picture; empty when it has none
  std::string path;       // of its bundle or desktop file
  std::string words = {}; // by which people may look for it, beside its name
  bool isByName = false;  // it runs under no bundle identifier: the key is its name
  bool operator==(const InstalledApplication&) const = default;
};

// The apps that a person can choose from. Those of the system itself are none (SystemApps.h).
class ApplicationCatalog {
 public:
  virtual ~ApplicationCatalog() = default;

  // Those that the desktop's own menu would show; each key once; in no order.
  virtual std::vector<InstalledApplication> installedApplications() const = 0;

  // One for each of those asked for, in that order: whether anything has been installed meanwhile is looked
  // at once for all of them.
  using Found = std::vector<std::optional<InstalledApplication>>;

  // Also apps that the menu hides. Absent when no installed app has that key.
  virtual Found applicationsForKeys(const std::vector<std::string>& keys) const = 0;
  std::optional<InstalledApplication> applicationForKey(const std::string& key) const {
    return applicationsForKeys({key}).front();
  }

  // What people call the app of that key, installed or not. Absent when this platform knows no name for it.
  virtual std::optional<std::string> knownName(const std::string& key) const = 0;

  // The apps behind bundles, desktop files or programs that the person picks anywhere on the disk. Absent
  // when the file is none, or of an app that cannot be chosen or would not be known again.
  virtual Found applicationsAt(const std::vector<std::string>& paths) const = 0;
  std::optional<InstalledApplication> applicationAt(const std::string& path) const {
    return applicationsAt({path}).front();
  }
};

} // namespace vantle
