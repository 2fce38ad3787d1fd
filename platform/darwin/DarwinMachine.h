// SPDX-License-Identifier: MIT
#pragma once

#include "base/Registration.h"
#include "platform/OwnedMachine.h"
#include "platform/darwin/process/DarwinClock.h"
#include "platform/darwin/process/DarwinHost.h"
#include "platform/darwin/process/LibprocProcessTable.h"
#include "platform/posix/process/SessionLauncher.h"
#include "platform/shared/Absent.h"
#include "platform/shared/IcuText.h"

#include <memory>

namespace vantle {

// Where the ports meet macOS.
class DarwinMachine final : public OwnedMachine {
 public:
  // What is not given is absent.
  struct Parts {
    DarwinHost host;
    LibprocProcessTable processes;
    DarwinClock clock;
    SessionLauncher launcher;
    IcuText text;
    std::unique_ptr<BackgroundBand> band = std::make_unique<AbsentBand>();
    std::unique_ptr<Workspace> workspace = std::make_unique<AbsentWorkspace>();
    std::unique_ptr<AudioActivity> audio = std::make_unique<AbsentAudioActivity>();
    std::unique_ptr<PowerAssertions> power = std::make_unique<AbsentPowerAssertions>();
    std::unique_ptr<MemoryPressureEvents> pressure = std::make_unique<AbsentMemoryPressure>();
    std::unique_ptr<Notifications> notifications = std::make_unique<AbsentNotifications>();
    std::unique_ptr<UserDefaults> defaults = std::make_unique<AbsentDefaults>();
    std::unique_ptr<FileStore> files = std::make_unique<AbsentFiles>();
    std::unique_ptr<LoginItem> loginItem = std::make_unique<AbsentLoginItem>();
    std::unique_ptr<ApplicationCatalog> catalog = std::make_unique<AbsentCatalog>();
    AbsentHooks hooks;
    AbsentRegisteredGames games;
    std::unique_ptr<Registration> awake; // null: the system may let the program nap
  };

  explicit DarwinMachine(std::unique_ptr<Parts> parts) : m_parts(std::move(parts)) {}

  Machine machine() override;
  std::string desktop() const override { return {}; } // there is one way only
  std::vector<std::pair<std::string, std::string>> facts() const override;

 private:
  std::unique_ptr<Parts> m_parts;
};

} // namespace vantle
