// SPDX-License-Identifier: MIT
#pragma once

#include "panel/ports/PanelSurface.h"
#include "platform/darwin/cocoa/Retained.h"
#include "platform/shared/EventLoop.h"

#import <AppKit/AppKit.h>
#include <QPointer>
#include <QWindow>

namespace vantle {

// The panel over everything, full-screen apps included, in whatever space the person is.
class PanelOverAll final : public PanelSurface {
 public:
  explicit PanelOverAll(EventLoop& loop) : m_loop(loop) {} // which outlives it
  ~PanelOverAll() override;
  PanelOverAll(const PanelOverAll&) = delete;
  PanelOverAll& operator=(const PanelOverAll&) = delete;

  bool isTranslucent() override { return true; }
  QSize roomOn(QScreen& screen) override;
  void place(QWindow& window, QScreen& screen, const QRect& anchor, const QRect& place) override;
  void show(QWindow& window) override;
  void hide(QWindow& window) override;

 private:
  void watchPresses();
  void endWatch();
  void tellOfPressElsewhere();

  EventLoop& m_loop;
  QPointer<QWindow> m_window; // while it is shown
  Retained<NSObject> m_monitor;
  std::unique_ptr<EventLoop::Handle> m_later;
};

} // namespace vantle
