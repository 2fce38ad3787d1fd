// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/Descriptor.h"

#include <string>

namespace vantle::test {

// A file system whose other side never says a word: whoever asks for anything in it waits, until this object
// is gone. Needs root; an exception where the kernel has no such file systems.
class SilentFileSystem {
 public:
  explicit SilentFileSystem(std::string folder);
  ~SilentFileSystem();
  SilentFileSystem(const SilentFileSystem&) = delete;
  SilentFileSystem& operator=(const SilentFileSystem&) = delete;

 private:
  std::string m_folder;
  Descriptor m_device;
};

} // namespace vantle::test
