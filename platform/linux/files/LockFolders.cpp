// SPDX-License-Identifier: MIT
#include "platform/linux/files/LockFolders.h"

#include "base/Names.h"
#include "platform/posix/files/OwnFolder.h"
#include "platform/posix/files/PosixFileStore.h"

namespace vantle {

std::vector<std::string> lockFolders(const XdgFolders& folders) {
  std::vector<std::string> places;
  if (folders.runtime && openOwnFolder(*folders.runtime)) places.push_back(*folders.runtime);
  const std::string data = folders.data + "/" + names::display;
  PosixFileStore(folders.data, PosixFileStore::Sync::none).createFolders(data);
  if (openOwnFolder(data)) places.push_back(data);
  return places;
}

} // namespace vantle
