// SPDX-License-Identifier: MIT
#pragma once

#include "panel/PopUpWindow.h"
#include "panel/ports/Tray.h"

#include <QRect>
#include <memory>
#include <vector>

namespace vantle {

// The menu while it costs memory.
class IconMenuWindow : public PopUpWindow {
  Q_OBJECT

 public:
  IconMenuWindow(LookEngine& views, PanelSurface& surface);
  ~IconMenuWindow() override;

  void open(const QRect& icon, std::vector<TrayEntry> entries);
  void dismiss() override;

 signals:
  void dismissed();

 private slots:
  void choose(int index);

 private:
  void place();

  std::vector<TrayEntry> m_entries;
  QRect m_icon;
  std::unique_ptr<QQuickItem> m_view;
};

} // namespace vantle
