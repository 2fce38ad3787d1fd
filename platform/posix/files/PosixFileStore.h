// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/FileStore.h"

#include <set>

namespace vantle {

// Small files in the person's folders. Only regular files are read, so nothing here ever waits for the other
// end of a pipe or wakes a device. A symbolic link is followed when it is written, too: what it leads to is
// replaced, never the link, and never anything but a regular file. Nothing is written where somebody else
// could lead it elsewhere: with another person's folders in the environment, as under sudo, nothing is kept
// at all.
class PosixFileStore final : public FileStore {
 public:
  enum class Sync {
    none, // survives the death of the program, and of the session
    disk, // survives a power loss as well, at the price of waiting for the disk
  };

  // What lies in folders that somebody else could exchange.
  enum class Foreign {
    ignored,
    readable, // for what does no harm, whoever wrote it
  };

  PosixFileStore(std::string applicationSupport, Sync sync, Foreign foreign = Foreign::ignored)
      : m_applicationSupport(std::move(applicationSupport)), m_sync(sync), m_foreign(foreign) {}

  std::string applicationSupport() const override { return m_applicationSupport; }
  std::optional<std::string> read(const std::string& path, std::size_t limit) const override;
  bool writeAtomically(const std::string& path, const std::string& bytes) override;
  bool exists(const std::string& path) const override;
  bool rename(const std::string& path, const std::string& newPath) override;
  void createFolders(const std::string& path) override; // new ones are the owner's only
  void removeFolder(const std::string& path) override;

 private:
  std::string m_applicationSupport;
  Sync m_sync;
  Foreign m_foreign;
  std::set<std::string> m_tidiedFolders;
};

} // namespace vantle
