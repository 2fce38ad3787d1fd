// SPDX-License-Identifier: MIT
#include "platform/linux/LinuxMachine.h"
#include "platform/linux/files/LockFolders.h"
#include "platform/linux/files/XdgFolders.h"
#include "platform/linux/process/AbruptEnd.h"
#include "platform/linux/process/LinuxMainThread.h"
#include "platform/posix/PosixPlatform.h"

#include <cstdlib>
#include <malloc.h>
#include <utility>

namespace vantle {

namespace {

bool isNamed(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

class LinuxPlatform final : public PosixPlatform {
 public:
  // The threads here mostly wait: a heap of its own for each would only keep pages of what it once had.
  LinuxPlatform() { ::mallopt(M_ARENA_MAX, 1); }

  bool isStartedByItself() const override { return isStartedByOwnProgram(); }
  std::unique_ptr<MainThread> mainThread() override { return std::make_unique<LinuxMainThread>(); }
  std::unique_ptr<Registration> onAbruptEnd(std::function<void()> lastDeed) override {
    return beforeAbruptEnd(std::move(lastDeed));
  }

  std::optional<std::string> whyNoDesktop() override {
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
      if (!isNamed(variable)) ::unsetenv(variable);
    }
    if (isNamed("DISPLAY") || isNamed("WAYLAND_DISPLAY")) return std::nullopt;
    return "there is no desktop session here (neither DISPLAY nor WAYLAND_DISPLAY is set).";
  }
  std::string whyNotReached() const override {
    return "the desktop session that DISPLAY or WAYLAND_DISPLAY names cannot be reached.";
  }

  std::unique_ptr<OwnedMachine> desktopMachine(EventLoop& loop, std::string program,
                                               std::function<void()> onDesktopLost) override {
    return LinuxMachine::forDesktop(m_folders, loop, std::move(program), std::move(onDesktopLost));
  }
  std::unique_ptr<OwnedMachine> recoveryMachine() override { return LinuxMachine::forRecovery(m_folders); }

 private:
  std::vector<std::string> foldersToLock() override { return lockFolders(m_folders); }
  std::vector<std::string> foldersToKeepIn() const override { return {m_folders.data, m_folders.config}; }

  XdgFolders m_folders = XdgFolders::fromEnvironment();
};

} // namespace

std::unique_ptr<Platform> Platform::ofThisSystem() { return std::make_unique<LinuxPlatform>(); }

std::unique_ptr<OwnedMachine> selfTestMachine() {
  return LinuxMachine::forSelfTest(XdgFolders::fromEnvironment());
}

} // namespace vantle
