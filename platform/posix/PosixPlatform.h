// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"
#include "platform/posix/files/OwnFolder.h"
#include "platform/posix/files/SingleCopyLock.h"
#include "platform/posix/process/BrokenPipe.h"
#include "platform/posix/process/DescriptorLimit.h"
#include "platform/posix/process/SignalSource.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantle {

// What every Unix answers alike.
class PosixPlatform : public Platform {
 public:
  void raiseDescriptorLimit() override { vantle::raiseDescriptorLimit(); }
  void outliveReaders() override { vantle::outliveReaders(); }
  std::unique_ptr<Registration> onAskedToEnd(EventLoop& loop, std::function<void()> handler) override {
    return std::make_unique<TerminationSources>(loop, handler);
  }

  bool becomeOnlyCopy() override {
    m_lock = SingleCopyLock::acquire(foldersToLock());
    return m_lock->outcome() != SingleCopyLock::Outcome::heldByOther;
  }
  std::optional<std::string> foreignFolder() const override {
    for (const std::string& folder : foldersToKeepIn()) {
      if (!isOwnFolder(folder)) return folder;
    }
    return std::nullopt;
  }

 private:
  virtual std::vector<std::string> foldersToLock() = 0; // which are there now
  virtual std::vector<std::string> foldersToKeepIn() const = 0;

  std::optional<SingleCopyLock> m_lock;
};

} // namespace vantle
