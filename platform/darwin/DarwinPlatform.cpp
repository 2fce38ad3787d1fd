// SPDX-License-Identifier: MIT
#include "platform/darwin/DarwinPlatform.h"

#include "base/Names.h"
#include "platform/darwin/DarwinMachine.h"
#include "platform/darwin/audio/CoreAudioActivity.h"
#include "platform/darwin/band/DarwinBand.h"
#include "platform/darwin/catalog/CocoaCatalog.h"
#include "platform/darwin/defaults/CocoaDefaults.h"
#include "platform/darwin/files/DarwinFolders.h"
#include "platform/darwin/login/ServiceLoginItem.h"
#include "platform/darwin/notices/CocoaNotifications.h"
#include "platform/darwin/power/IokitPowerAssertions.h"
#include "platform/darwin/power/OwnActivity.h"
#include "platform/darwin/pressure/DispatchMemoryPressure.h"
#include "platform/darwin/process/DarwinMainThread.h"
#include "platform/darwin/workspace/CocoaWorkspace.h"
#include "platform/darwin/workspace/WindowServer.h"
#include "platform/posix/PosixPlatform.h"
#include "platform/posix/files/PosixFileStore.h"

#include <utility>

namespace vantle {

namespace {

class DarwinPlatform final : public PosixPlatform {
 public:
  explicit DarwinPlatform(std::string support) : m_support(std::move(support)) {}

  bool isStartedByItself() const override { return isStartedByOwnProgram(); }
  std::unique_ptr<MainThread> mainThread() override { return std::make_unique<DarwinMainThread>(); }

  // No library of this system is known to do that.
  std::unique_ptr<Registration> onAbruptEnd(std::function<void()> /*lastDeed*/) override {
    return std::make_unique<Registration>();
  }

  std::optional<std::string> whyNoDesktop() override {
    if (hasWindowServer()) return std::nullopt;
    return "there is no desktop session here (no window server answers).";
  }
  std::string whyNotReached() const override { return "the desktop session cannot be reached."; }

  // The system knows itself what to open at login: the bundle. It asks its apps to quit when it ends.
  std::unique_ptr<OwnedMachine> desktopMachine(EventLoop& /*loop*/, std::string /*program*/,
                                               std::function<void()> /*onDesktopLost*/) override {
    auto parts = recoveryParts();
    parts->workspace = std::make_unique<CocoaWorkspace>();
    auto audio = std::make_unique<CoreAudioActivity>();
    audio->askAhead();
    parts->audio = std::move(audio);
    parts->power = std::make_unique<IokitPowerAssertions>();
    parts->pressure = std::make_unique<DispatchMemoryPressure>();
    parts->notifications = std::make_unique<CocoaNotifications>();
    parts->defaults = std::make_unique<CocoaDefaults>();
    parts->loginItem = std::make_unique<ServiceLoginItem>();
    parts->catalog = std::make_unique<CocoaCatalog>();
    parts->awake = stayAwakeToEvents();
    return std::make_unique<DarwinMachine>(std::move(parts));
  }
  std::unique_ptr<OwnedMachine> recoveryMachine() override {
    return std::make_unique<DarwinMachine>(recoveryParts());
  }

 private:
  std::vector<std::string> foldersToLock() override {
    const std::string folder = m_support + "/" + names::display;
    PosixFileStore(m_support, PosixFileStore::Sync::none).createFolders(folder);
    return {folder};
  }
  std::vector<std::string> foldersToKeepIn() const override { return {m_support}; }

  // Nobody who was slowed outlives a loss of power, so the disk need not be awaited.
  std::unique_ptr<DarwinMachine::Parts> recoveryParts() const {
    auto parts = std::make_unique<DarwinMachine::Parts>();
    parts->files = std::make_unique<PosixFileStore>(m_support, PosixFileStore::Sync::none);
    parts->band = std::make_unique<DarwinBand>(parts->files.get());
    return parts;
  }

  std::string m_support;
};

} // namespace

std::unique_ptr<Platform> darwinPlatformIn(std::string support) {
  return std::make_unique<DarwinPlatform>(std::move(support));
}

std::unique_ptr<Platform> Platform::ofThisSystem() { return darwinPlatformIn(applicationSupportFolder()); }

} // namespace vantle
