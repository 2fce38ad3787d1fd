// SPDX-License-Identifier: MIT
#include "tests/unit/linux/SilentFileSystem.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/mount.h>
#include <system_error>
#include <utility>

namespace vantle::test {

SilentFileSystem::SilentFileSystem(std::string folder)
    : m_folder(std::move(folder)), m_device(::open("/dev/fuse", O_RDWR | O_CLOEXEC)) {
  const std::string options =
      "fd=" + std::to_string(m_device.get()) + ",rootmode=40000,user_id=0,group_id=0,allow_other";
  if (!m_device || ::mount("silent", m_folder.c_str(), "fuse", 0, options.c_str()) != 0) {
    throw std::system_error(errno, std::generic_category(), "no file system of one's own");
  }
}

SilentFileSystem::~SilentFileSystem() {
  ::umount2(m_folder.c_str(), MNT_FORCE); // all who wait get an error
  ::umount2(m_folder.c_str(), MNT_DETACH);
}

} // namespace vantle::test
