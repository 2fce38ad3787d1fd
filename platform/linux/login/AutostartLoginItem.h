// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/LoginItem.h"
#include "platform/linux/files/XdgFolders.h"

#include <optional>
#include <string>
#include <vector>

namespace vantle {

class AutostartEntry;

// Where a session looks for what to start, and what it would be.
struct AutostartSetup {
  std::string program;                    // absolute path of what is to be started
  std::string userFolder;                 // the person's autostart folder; a file here outranks the others
  std::vector<std::string> systemFolders; // most important first
  std::vector<std::string> desktops;      // the names that the running desktop goes by

  static AutostartSetup from(const XdgFolders& folders, const XdgFolders::Environment& environment,
                             std::string program);
};

// The login item as a file of the person's autostart folder. Desktops switch such files off and on in their
// own settings, by writing into them: what they wrote counts, and is kept. It is on when what the desktop
// would start is this very program: not one that is gone, and no other.
class AutostartLoginItem final : public LoginItem {
 public:
  explicit AutostartLoginItem(AutostartSetup setup) : m_setup(std::move(setup)) {}

  bool isEnabled() const override;
  bool registerItem() override;
  bool unregisterItem() override;

 private:
  // The program that the system's own files would have started; empty for none.
  std::string startedBySystem() const;
  bool write(const AutostartEntry& entry) const;

  AutostartSetup m_setup;
};

} // namespace vantle
