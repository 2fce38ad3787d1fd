// SPDX-License-Identifier: MIT
#include "look/KeptWindow.h"

#include "look/LookEngine.h"

namespace vantle {

KeptWindow::KeptWindow(const WindowParts& parts, std::chrono::milliseconds keepTime) : m_parts(parts) {
  m_release.setSingleShot(true);
  m_release.setInterval(keepTime);
  connect(&m_release, &QTimer::timeout, this, &KeptWindow::release);
}

KeptWindow::~KeptWindow() = default;

void KeptWindow::keep() {
  m_release.stop();
  if (m_engine) return;
  prepareRendering();
  m_engine = std::make_unique<LookEngine>(m_parts.settings, m_parts.icons, m_parts.words);
  make(*m_engine);
}

void KeptWindow::releaseLater() { m_release.start(); }

void KeptWindow::release() {
  destroy();
  m_engine.reset();
  giveMemoryBack(m_parts.heap);
  emit discarded();
}

} // namespace vantle
