// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/Descriptor.h"

#include <string>
#include <string_view>

namespace vantle {

// New content on its way to a file: written beside it, then put in its place in one step; or content that
// somebody else reads once. Takes itself away unless it has become that file.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& folder); // readable by the owner only
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& path() const { return m_path; }
  bool write(std::string_view bytes); // false as well when the file could not be made
  bool flushToDisk();
  bool replace(const std::string& target);

  // Takes away what processes left in the folder that were killed while they wrote.
  static void removeLeftovers(const std::string& folder);

 private:
  std::string m_path;
  Descriptor m_file;
};

} // namespace vantle
