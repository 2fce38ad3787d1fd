// SPDX-License-Identifier: MIT
#pragma once

#include "panel/ports/PanelSurface.h"
#include "platform/shared/EventLoop.h"

#include <QPointer>
#include <QTimer>
#include <QWindow>

namespace vantle {

// Windows on an X server, which choose their place and may have the pointer for themselves; on any other
// desktop what the toolkit makes of the same wishes.
class DesktopPanelSurface final : public PanelSurface {
 public:
  explicit DesktopPanelSurface(EventLoop& loop); // which outlives it

  bool isTranslucent() override;
  QSize roomOn(QScreen& screen) override;
  void place(QWindow& window, QScreen& screen, const QRect& anchor, const QRect& place) override;
  void show(QWindow& window) override;
  void hide(QWindow& window) override;

 private:
  void grabPointer();
  void insistOnPlace(QWindow& window);

  EventLoop& m_loop;
  QPointer<QWindow> m_grabbing;
  QRect m_place;
  bool m_isPlaced = false;
  QTimer m_grabRetry;
  int m_grabAttempts = 0;
};

} // namespace vantle
