// SPDX-License-Identifier: MIT
#pragma once

#include "look/KeptWindow.h"
#include "panel/ports/PanelSurface.h"
#include "panel/ports/Tray.h"

#include <QElapsedTimer>
#include <QRect>
#include <memory>
#include <vector>

class QQuickWindow;

namespace vantle {

class IconMenuWindow;

// The tray icon's menu, for trays that leave it to the program.
class IconMenu : public KeptWindow {
  Q_OBJECT

 public:
  IconMenu(const WindowParts& parts, PanelSurface& surface); // which outlives it
  ~IconMenu() override;

  // Beside the icon, in device-independent screen coordinates. The same click again closes it.
  void toggle(const QRect& icon, std::vector<TrayEntry> entries);
  void close();

  QQuickWindow* window() const; // null while there is none

 signals:
  void opened();

 private:
  void make(LookEngine& engine) override;
  void destroy() override;
  void renew(LookEngine& engine) override;

  PanelSurface& m_surface;
  std::unique_ptr<IconMenuWindow> m_window;
  QElapsedTimer m_sinceClosed;
};

} // namespace vantle
