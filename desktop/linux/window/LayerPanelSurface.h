// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/wayland/ClickCatcher.h"
#include "desktop/linux/wayland/LayerSurface.h"
#include "panel/ports/PanelSurface.h"

#include <QMetaObject>
#include <QPointer>
#include <QScreen>
#include <QWindow>
#include <memory>
#include <vector>

namespace vantle {

// The panel as a layer at the edge of the screen, where windows cannot choose their place. The toolkit draws
// it and hears its keys and clicks, but gives its surface no role (Qt::BypassWindowManagerHint, which the
// choice of the toolkit's plugin has it heed); that is done here.
class LayerPanelSurface final : public PanelSurface {
 public:
  explicit LayerPanelSurface(std::unique_ptr<LayerShell> shell);
  ~LayerPanelSurface() override;
  LayerPanelSurface(const LayerPanelSurface&) = delete;
  LayerPanelSurface& operator=(const LayerPanelSurface&) = delete;

  bool isTranslucent() override { return true; } // Wayland always composes
  QSize roomOn(QScreen& screen) override;
  void place(QWindow& window, QScreen& screen, const QRect& anchor, const QRect& place) override;
  void show(QWindow& window) override;
  void hide(QWindow& window) override;

 private:
  QSize askForRoom(QScreen& screen);
  bool takeRole(QWindow& window);
  void takeDown(QWindow& window);
  void followInput();
  void pressed(wl_surface* surface);
  void tellOfPressElsewhere();

  std::unique_ptr<LayerShell> m_shell;
  QPointer<QScreen> m_screen; // where the panel is or is to be
  QSize m_room;               // of that screen; empty until it was asked for
  bool m_isSilent = false;    // the compositor, when it was asked last
  LayerPlace m_place;
  QSize m_size;
  QPointer<QWindow> m_window; // while it is up
  std::unique_ptr<LayerSurface> m_layer;
  std::vector<std::unique_ptr<ClickCatcher>> m_catchers;
  QMetaObject::Connection m_newScreens;
};

} // namespace vantle
