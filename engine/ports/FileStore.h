// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace vantle {

// Small whole files in the person's own folders. Paths are absolute.
class FileStore {
 public:
  virtual ~FileStore() = default;

  // The folder for application data, without a trailing slash. Always known.
  virtual std::string applicationSupport() const = 0;

  // The whole file; absent when it cannot be read, is not a regular file, or is larger than the limit.
  virtual std::optional<std::string> read(const std::string& path, std::size_t limit) const = 0;
  // A reader sees the old file or the new one, never a part. Readable by its owner only.
  virtual bool writeAtomically(const std::string& path, const std::string& bytes) = 0;
  virtual bool exists(const std::string& path) const = 0;
  // Renames within a folder, over what has the new name; a failure changes nothing.
  virtual bool rename(const std::string& path, const std::string& newPath) = 0;
  virtual void createFolders(const std::string& path) = 0; // with those above it; a failure is ignored
  virtual void removeFolder(const std::string& path) = 0;  // with all it holds; a failure is ignored
};

} // namespace vantle
