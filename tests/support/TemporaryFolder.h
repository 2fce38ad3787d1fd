// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>

namespace vantle::desktop {

// A private folder (0700) that is gone with everything in it when the test is over.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(std::optional<uid_t> owner = {});
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return m_path; }
  // Makes a folder below, with those above it, all private and the owner's.
  std::filesystem::path folder(const std::filesystem::path& relative) const;
  std::filesystem::path write(const std::filesystem::path& relative, const std::string& bytes) const;

 private:
  void giveAway(const std::filesystem::path& path) const;

  std::filesystem::path m_path;
  std::optional<uid_t> m_owner;
};

} // namespace vantle::desktop
