// SPDX-License-Identifier: MIT
#include "tests/support/TemporaryFolder.h"

#include <cstddef>
#include <fstream>
#include <stdexcept>
#include <stdlib.h>
#include <system_error>
#include <unistd.h>

namespace vantle::desktop {

namespace fs = std::filesystem;

namespace {

// Sockets are made in there, whose whole path may have 107 bytes.
constexpr std::size_t longestPlace = 40;

// The one that is wanted may also lie below a /tmp that this process does not see.
fs::path place() {
  std::error_code error;
  const fs::path wanted = fs::temp_directory_path(error);
  return !error && wanted.native().size() <= longestPlace ? wanted : fs::path("/tmp");
}

} // namespace

TemporaryFolder::TemporaryFolder(std::optional<uid_t> owner) : m_owner(owner) {
  std::string name = (place() / "vantle-test-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder: " + name);
  m_path = name;
  giveAway(m_path);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(m_path, ignored);
}

void TemporaryFolder::giveAway(const fs::path& path) const {
  if (m_owner && ::chown(path.c_str(), *m_owner, static_cast<gid_t>(*m_owner)) != 0) {
    throw std::runtime_error("cannot give away " + path.string());
  }
}

fs::path TemporaryFolder::folder(const fs::path& relative) const {
  fs::path path = m_path;
  for (const fs::path& part : relative) {
    path /= part;
    if (!fs::create_directory(path)) continue;
    fs::permissions(path, fs::perms::owner_all);
    giveAway(path);
  }
  return path;
}

fs::path TemporaryFolder::write(const fs::path& relative, const std::string& bytes) const {
  fs::path path = folder(relative.parent_path()) / relative.filename();
  std::ofstream(path, std::ios::binary) << bytes;
  giveAway(path);
  return path;
}

} // namespace vantle::desktop
