// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"
#include "platform/linux/files/XdgFolders.h"
#include "platform/shared/EventLoop.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vantle {

// Where the ports meet Linux: the only place that knows which part stands for which port.
class LinuxMachine final : public OwnedMachine {
 public:
  // See `Platform` and `selfTestMachine`. Connects to the X server and to the buses.
  static std::unique_ptr<LinuxMachine> forDesktop(const XdgFolders& folders, EventLoop& loop,
                                                  std::string program, std::function<void()> onDesktopLost);
  static std::unique_ptr<LinuxMachine> forRecovery(const XdgFolders& folders);
  static std::unique_ptr<LinuxMachine> forSelfTest(const XdgFolders& folders);

  ~LinuxMachine() override;
  LinuxMachine(const LinuxMachine&) = delete;
  LinuxMachine& operator=(const LinuxMachine&) = delete;

  Machine machine() override;
  std::string desktop() const override;
  std::vector<std::pair<std::string, std::string>> facts() const override;

 private:
  struct Parts;
  // On the program's own loop where there is no other.
  static std::unique_ptr<LinuxMachine> withBand(const XdgFolders& folders, EventLoop* given);
  explicit LinuxMachine(std::unique_ptr<Parts> parts);

  std::unique_ptr<Parts> m_parts;
};

} // namespace vantle
