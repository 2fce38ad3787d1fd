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

bool LinuxApplication::canComeToFront() const {
  const auto windows = m_windows.lock();
  return windows && !m_isTerminated && windows->canBringToFront(m_pid);
}

bool LinuxApplication::bringToFront() {
  const auto windows = m_windows.lock();
  return windows && !m_isTerminated && windows->requestFront(m_pid);
}

} // namespace vantle
