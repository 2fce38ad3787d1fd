// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ApplicationCatalog.h"
#include "engine/ports/AudioActivity.h"
#include "engine/ports/BackgroundBand.h"
#include "engine/ports/FileStore.h"
#include "engine/ports/Hooks.h"
#include "engine/ports/LoginItem.h"
#include "engine/ports/MemoryPressureEvents.h"
#include "engine/ports/Notifications.h"
#include "engine/ports/PowerAssertions.h"
#include "engine/ports/RegisteredGames.h"
#include "engine/ports/UserDefaults.h"
#include "engine/ports/Workspace.h"

namespace vantle {

// What a machine without the thing in question answers. The self-test runs on these: it needs no desktop.

class AbsentBand final : public BackgroundBand {
 public:
  using BackgroundBand::enterBackgroundBand;
  bool enterBackgroundBand(Pid /*pid*/) override { return false; }
  bool leaveBackgroundBand(Pid /*pid*/) override { return false; }
  std::optional<bool> isInBackgroundBand(Pid /*pid*/) const override { return std::nullopt; }
};

class AbsentWorkspace final : public Workspace {
 public:
  std::vector<AppRef> runningApplications() const override { return {}; }
  AppRef frontmostApplication() const override { return nullptr; }
  AppRef runningApplication(Pid /*pid*/) const override { return nullptr; }
  std::unique_ptr<Registration> observe(WorkspaceEvent /*event*/, Handler /*handler*/) override {
    return std::make_unique<Registration>();
  }
};

class AbsentAudioActivity final : public AudioActivity {
 public:
  bool isAvailable() const override { return false; }
  std::set<Pid> runningOutput() override { return {}; }
};

class AbsentPowerAssertions final : public PowerAssertions {
 public:
  std::vector<Assertion> assertions() override { return {}; }
};

class AbsentMemoryPressure final : public MemoryPressureEvents {
 public:
  std::unique_ptr<Source> watch(std::function<void(bool isCritical)> /*handler*/) override { return nullptr; }
  std::optional<int> level() const override { return std::nullopt; }
};

class AbsentNotifications final : public Notifications {
 public:
  void requestAuthorization() override {}
  void post(const std::string& /*identifier*/, const std::string& /*title*/,
            const std::string& /*body*/) override {}
};

class AbsentRegisteredGames final : public RegisteredGames {
 public:
  std::unique_ptr<Source> watch(std::function<void()> /*changed*/) override { return nullptr; }
};

// Nothing is kept.
class AbsentFiles final : public FileStore {
 public:
  std::string applicationSupport() const override { return "/"; }
  std::optional<std::string> read(const std::string& /*path*/, std::size_t /*limit*/) const override {
    return std::nullopt;
  }
  bool writeAtomically(const std::string& /*path*/, const std::string& /*bytes*/) override { return false; }
  bool exists(const std::string& /*path*/) const override { return false; }
  bool rename(const std::string& /*path*/, const std::string& /*newPath*/) override { return false; }
  void createFolders(const std::string& /*path*/) override {}
  void removeFolder(const std::string& /*path*/) override {}
};

class AbsentDefaults final : public UserDefaults {
 public:
  std::optional<Value> object(const std::string& /*key*/) const override { return std::nullopt; }
  bool contains(const std::string& /*key*/) const override { return false; }
  void set(const std::string& /*key*/, Value /*value*/) override {}
  void remove(const std::string& /*key*/) override {}
  std::unique_ptr<UserDefaults> openSuite(const std::string& /*name*/) const override { return nullptr; }
  bool copyFrom(const UserDefaults& /*other*/, const std::string& /*key*/) override { return false; }
};

class AbsentHooks final : public Hooks {
 public:
  bool start(const std::string& /*name*/, const Variables& /*variables*/,
             std::function<void()> /*ended*/) override {
    return false;
  }
  void cut() override {}
};

class AbsentLoginItem final : public LoginItem {
 public:
  bool isEnabled() const override { return false; }
  bool registerItem() override { return false; }
  bool unregisterItem() override { return false; }
};

class AbsentCatalog final : public ApplicationCatalog {
 public:
  std::vector<InstalledApplication> installedApplications() const override { return {}; }
  Found applicationsForKeys(const std::vector<std::string>& keys) const override {
    return Found(keys.size());
  }
  std::optional<std::string> knownName(const std::string& /*key*/) const override { return std::nullopt; }
  Found applicationsAt(const std::vector<std::string>& paths) const override { return Found(paths.size()); }
};

} // namespace vantle
