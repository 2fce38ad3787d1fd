// SPDX-License-Identifier: MIT
#pragma once

#include "base/Registration.h"
#include "panel/ports/Tray.h"

#include <QRect>
#include <QString>
#include <memory>
#include <optional>

namespace vantle {

class Engine;
class PanelController;

// The bolt in the tray: filled while a Boost runs. A click opens and closes the panel.
class TrayItem {
 public:
  // All of them outlive the item.
  TrayItem(Engine& engine, PanelController& panel, Tray& tray);
  TrayItem(const TrayItem&) = delete;
  TrayItem& operator=(const TrayItem&) = delete;

 private:
  TrayActions actions();
  void showFromMenu(std::optional<QPoint> pointer);
  void update();

  Engine& m_engine;
  PanelController& m_panel;
  std::optional<QRect> m_lastPlace; // where the icon was last clicked
  std::optional<bool> m_isFilled;   // as it is shown …
  QString m_pause;                  // … and its words
  std::unique_ptr<TrayIcon> m_icon;
  std::unique_ptr<Registration> m_gameObserver;
  std::unique_ptr<Registration> m_pauseObserver;
};

} // namespace vantle
