// SPDX-License-Identifier: MIT
#pragma once

#include "base/Registration.h"
#include "panel/ports/Tray.h"

#include <QCoreApplication>
#include <QRect>
#include <QString>
#include <memory>
#include <optional>
#include <vector>

namespace vantle {

class Engine;
class PanelController;

// The bolt in the tray: filled while a Boost runs. A click opens and closes the panel; one with the middle
// button turns the Boost off, or on for the app last in front.
class TrayItem {
  Q_DECLARE_TR_FUNCTIONS(TrayItem)

 public:
  // All of them outlive the item.
  TrayItem(Engine& engine, PanelController& panel, Tray& tray);
  TrayItem(const TrayItem&) = delete;
  TrayItem& operator=(const TrayItem&) = delete;

 private:
  TrayActions actions();
  std::vector<TrayEntry> menu();
  void showFromMenu(std::optional<QPoint> pointer);
  void switchBoost();
  void update();

  Engine& m_engine;
  PanelController& m_panel;
  std::optional<QRect> m_lastPlace; // where the icon was last clicked
  QString m_state;                  // as it is shown
  std::unique_ptr<TrayIcon> m_icon;
  std::vector<std::unique_ptr<Registration>> m_observers;
};

} // namespace vantle
