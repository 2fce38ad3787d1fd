// SPDX-License-Identifier: MIT
#pragma once

#include "engine/Engine.h"
#include "look/KeptWindow.h"
#include "panel/IconMenu.h"
#include "panel/ports/PanelSurface.h"

#include <QElapsedTimer>
#include <QRect>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace vantle {

class PanelWindow;

// Opens and closes the panel, and says where.
class PanelController : public KeptWindow {
  Q_OBJECT

 public:
  PanelController(Engine& engine, const WindowParts& parts, PanelSurface& surface,
                  std::function<void()> openSettings, std::function<void()> quit);
  ~PanelController() override;

  // Beside the anchor, in device-independent screen coordinates; without one at the end of the bar where a
  // tray most likely is. Opening an open panel moves it.
  void show(std::optional<QRect> anchor = std::nullopt);
  void toggle(std::optional<QRect> anchor = std::nullopt);
  void close();
  bool isOpen() const;

  // The tray icon's menu beside the icon, for a tray that shows none.
  void toggleMenu(const QRect& icon, std::vector<TrayEntry> entries);

  void openSettings(); // closes the panel first
  void quit();

  // The panel follows the engine no longer, as at its end.
  void leaveEngine();

  // Null while there is none.
  PanelWindow* window() const { return m_window.get(); }
  const IconMenu& menu() const { return m_menu; }

 signals:
  void opened();
  void closed();

 private:
  void make(LookEngine& engine) override;
  void destroy() override;
  void renew(LookEngine& engine) override;

  Engine& m_engine;
  PanelSurface& m_surface;
  std::function<void()> m_openSettings;
  std::function<void()> m_quit;
  std::unique_ptr<PanelWindow> m_window;
  QElapsedTimer m_sinceClosed;
  IconMenu m_menu;
};

} // namespace vantle
