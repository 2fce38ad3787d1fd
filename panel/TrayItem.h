// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

namespace vantle {

class DesktopScheme;
class Engine;
class PanelController;

// The bolt in the tray: filled while a Boost runs. A click opens and closes the panel. It uses the desktop's
// status notifier service, or where there is none the older embedding of windows; it follows a tray that
// starts later, ends or is replaced. With no tray at all it does nothing.
class TrayItem {
 public:
  TrayItem(Engine& engine, PanelController& panel);
  ~TrayItem();
  TrayItem(const TrayItem&) = delete;
  TrayItem& operator=(const TrayItem&) = delete;

 private:
  class Implementation;
  std::unique_ptr<Implementation> m_implementation;
};

} // namespace vantle
