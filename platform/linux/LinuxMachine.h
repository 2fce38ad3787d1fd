// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Machine.h"
#include "platform/linux/files/XdgFolders.h"
#include "platform/shared/EventLoop.h"

#include <functional>
#include <memory>

namespace vantle {

// Where the ports meet Linux: the only place that knows which part stands for which port.
class LinuxMachine {
 public:
  // All of it: connects to the X server and to the buses; what is not there answers as absent. The hook is
  // called on the main loop when the X server goes away: the desktop is over.
  static std::unique_ptr<LinuxMachine> forDesktop(const XdgFolders& folders, EventLoop& loop,
                                                  std::function<void()> onDesktopLost = {});
  // What it takes to put back what an earlier run left: the journal's files, the processes and the band.
  // Everything else is absent.
  static std::unique_ptr<LinuxMachine> forRecovery(const XdgFolders& folders, EventLoop& loop);
  // The processes, the band, the clock and the launcher, which starts programs as apps stand on this desktop;
  // everything else is absent, and nothing is kept on disk.
  static std::unique_ptr<LinuxMachine> forSelfTest(const XdgFolders& folders);

  ~LinuxMachine();
  LinuxMachine(const LinuxMachine&) = delete;
  LinuxMachine& operator=(const LinuxMachine&) = delete;

  Machine machine(); // valid as long as this object

 private:
  struct Parts;
  explicit LinuxMachine(std::unique_ptr<Parts> parts);

  std::unique_ptr<Parts> m_parts;
};

} // namespace vantle
