// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Machine.h"
#include "platform/linux/band/LinuxBand.h"
#include "platform/linux/band/UserManager.h"
#include "platform/linux/process/BootClock.h"
#include "platform/linux/process/LinuxHost.h"
#include "platform/linux/process/ProcfsProcessTable.h"
#include "platform/posix/files/PosixFileStore.h"
#include "platform/posix/process/SessionLauncher.h"
#include "platform/shared/Absent.h"
#include "platform/shared/IcuText.h"
#include "platform/shared/PollEventLoop.h"
#include "platform/simulated/SimulatedCalls.h"
#include "platform/simulated/SimulatedDefaults.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace vantle::bench {

class BenchApp final : public RunningApplication {
 public:
  BenchApp(Pid pid, std::string identifier) : m_pid(pid), m_identifier(std::move(identifier)) {}

  Pid processIdentifier() const override { return m_pid; }
  std::optional<std::string> bundleIdentifier() const override { return m_identifier; }
  std::optional<std::string> localizedName() const override { return m_identifier; }
  std::optional<std::string> bundlePath() const override { return "/usr/share/applications/" + m_identifier; }
  std::optional<std::string> executablePath() const override { return "/usr/bin/" + m_identifier; }
  std::optional<std::string> bundleCategory() const override { return std::nullopt; }
  ActivationPolicy activationPolicy() const override { return ActivationPolicy::regular; }
  bool isTerminated() const override { return false; }
  bool isActive() const override { return false; }
  bool terminate() override { return false; }
  bool canComeToFront() const override { return false; }
  bool bringToFront() override { return false; }
  std::optional<std::string> iconName() const override { return std::nullopt; }

 private:
  Pid m_pid;
  std::string m_identifier;
};

class BenchWorkspace final : public Workspace {
 public:
  explicit BenchWorkspace(const std::vector<pid_t>& roots) {
    for (const pid_t root : roots) {
      m_apps.push_back(std::make_shared<BenchApp>(root, "org.example.App" + std::to_string(m_apps.size())));
    }
  }
  std::vector<AppRef> runningApplications() const override { return m_apps; }
  AppRef frontmostApplication() const override { return nullptr; }
  AppRef runningApplication(Pid /*pid*/) const override { return nullptr; }
  std::unique_ptr<Registration> observe(WorkspaceEvent /*event*/, Handler /*handler*/) override {
    return std::make_unique<Registration>();
  }

 private:
  std::vector<AppRef> m_apps;
};

// Everything that a pass needs, and nothing that would connect to the desktop of whoever runs this.
struct BenchMachine {
  // With a user manager's bus there is no limit to what waits for it: an emulated machine takes its time.
  explicit BenchMachine(const std::string& folder, const std::vector<pid_t>& roots,
                        const std::string& userBus = {})
      : files(folder, PosixFileStore::Sync::none), epoch(BootEpoch::load(files, {}, kernel->bootId())),
        processes(epoch, kernel), clock(epoch),
        band(loop, files,
             {.kernel = kernel,
              .manager = std::make_unique<UserManager>(loop, userBus),
              .ledgers = {folder + "/band.json"},
              .busLimit = std::chrono::seconds(userBus.empty() ? 1 : 60)}),
        workspace(roots) {}

  // Without a desktop, or with what a desktop tells.
  Machine ports() { return ports(audio, power, pressure); }
  Machine ports(AudioActivity& someAudio, PowerAssertions& somePower, MemoryPressureEvents& somePressure) {
    return {host,         processes,     band,     workspace, someAudio, somePower,
            somePressure, notifications, defaults, files,     clock,     launcher,
            text,         loginItem,     catalog,  hooks,     games};
  }

  PosixFileStore files;
  std::shared_ptr<ProcKernel> kernel = std::make_shared<ProcKernel>();
  BootEpoch epoch;
  LinuxHost host;
  ProcfsProcessTable processes;
  BootClock clock;
  PollEventLoop loop;
  LinuxBand band;
  BenchWorkspace workspace;
  AbsentAudioActivity audio;
  AbsentPowerAssertions power;
  AbsentMemoryPressure pressure;
  AbsentNotifications notifications;
  SimulatedCalls calls;
  SimulatedDefaults defaults{calls};
  SessionLauncher launcher;
  IcuText text;
  AbsentLoginItem loginItem;
  AbsentCatalog catalog;
  AbsentHooks hooks;
  AbsentRegisteredGames games;
};

} // namespace vantle::bench
