// SPDX-License-Identifier: MIT
#include "platform/linux/workspace/LinuxApplication.h"

namespace vantle {

bool LinuxApplication::isActive() const {
  const auto windows = m_windows.lock();
  return windows && !m_isTerminated && windows->isActive(m_pid);
}

bool LinuxApplication::terminate() {
  const auto windows = m_windows.lock();
  return windows && !m_isTerminated && windows->requestClose(m_pid);
}

} // namespace vantle
