// SPDX-License-Identifier: MIT
#include "platform/linux/login/AutostartLoginItem.h"

#include "base/Names.h"
#include "base/Text.h"
#include "platform/linux/apps/ProgramPath.h"
#include "platform/linux/login/AutostartEntry.h"
#include "platform/posix/files/OwnFolder.h"
#include "platform/posix/files/PosixFileStore.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <glib.h>
#include <system_error>
#include <utility>

namespace vantle {

namespace {

constexpr std::size_t fileLimit = 1 << 20; // bytes; larger is no desktop entry

std::string pathIn(const std::string& folder) { return folder + "/" + names::identifier + ".desktop"; }

// Anything of that name, a dangling link included: it hides the files of that name in later folders.
bool stands(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::exists(std::filesystem::symlink_status(path, ignored));
}

std::optional<AutostartEntry> entryAt(const std::string& path) {
  const std::optional<std::string> text =
      PosixFileStore({}, PosixFileStore::Sync::none).read(path, fileLimit);
  return text ? AutostartEntry::parse(*text) : std::nullopt;
}

std::string startedAt(const std::string& path, const std::vector<std::string>& desktops) {
  const std::optional<AutostartEntry> entry = entryAt(path);
  return entry ? entry->startedProgram(desktops) : std::string();
}

} // namespace

AutostartSetup AutostartSetup::from(const XdgFolders& folders, const XdgFolders::Environment& environment,
                                    std::string program) {
  AutostartSetup setup{std::move(program), folders.config + "/autostart", {}, {}};
  for (const std::string& root : folders.systemConfig) setup.systemFolders.push_back(root + "/autostart");
  const char* const desktops = environment("XDG_CURRENT_DESKTOP");
  setup.desktops = split(desktops == nullptr ? "" : desktops, ':');
  std::erase(setup.desktops, "");
  return setup;
}

std::string AutostartLoginItem::startedBySystem() const {
  const auto& folders = m_setup.systemFolders;
  const auto first = std::find_if(folders.begin(), folders.end(),
                                  [](const std::string& folder) { return stands(pathIn(folder)); });
  return first == folders.end() ? std::string() : startedAt(pathIn(*first), m_setup.desktops);
}

bool AutostartLoginItem::isEnabled() const {
  const std::string own = pathIn(m_setup.userFolder);
  const std::string started = stands(own) ? startedAt(own, m_setup.desktops) : startedBySystem();
  return !started.empty() && realPath(started) == realPath(m_setup.program);
}

bool AutostartLoginItem::write(const AutostartEntry& entry) const {
  PosixFileStore files({}, PosixFileStore::Sync::none);
  files.createFolders(m_setup.userFolder);
  return files.writeAtomically(pathIn(m_setup.userFolder), entry.text());
}

bool AutostartLoginItem::registerItem() {
  // A key file is UTF-8: a path that is not could be written, but no desktop could read it.
  if (g_utf8_validate(m_setup.program.c_str(), -1, nullptr) == 0) return false;
  std::optional<AutostartEntry> entry = entryAt(pathIn(m_setup.userFolder));
  if (!entry) entry.emplace();
  entry->enable(m_setup.program, m_setup.desktops);
  return write(*entry) && isEnabled();
}

bool AutostartLoginItem::unregisterItem() {
  const std::string own = pathIn(m_setup.userFolder);
  if (!startedBySystem().empty()) { // another copy of the program as well
    std::optional<AutostartEntry> entry = entryAt(own);
    if (!entry) entry.emplace();
    entry->hide();
    return write(*entry) && !isEnabled();
  }
  if (!isOwnFolder(m_setup.userFolder)) return false;
  std::error_code failure;
  std::filesystem::remove(own, failure);
  return !failure && !isEnabled();
}

} // namespace vantle
