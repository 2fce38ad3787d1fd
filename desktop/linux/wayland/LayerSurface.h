// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/wayland/LayerShell.h"

#include <QRect>
#include <QSize>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace vantle {

// Where a layer is: at these edges of its screen, or of what bars leave free of it, each so far away. Pixels
// of the desktop.
struct LayerPlace {
  static const std::uint32_t allEdges; // over all of it

  std::uint32_t edges = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  int left = 0;
  bool operator==(const LayerPlace&) const = default;
};

// The panel's, which is `size` large, beside a tray icon: at the edge of the screen that the icon is nearest
// to, or beside a bar at its left or right. `room` is how much bars leave free of the screen; the compositor
// does not say which part.
LayerPlace panelLayerPlace(const QRect& icon, const QSize& size, const QRect& screen, const QSize& room);

// A surface's role as a layer, until this is destroyed, which is before the surface. Nothing may be drawn
// before its first size has come.
class LayerSurface {
 public:
  struct Handlers {
    std::function<void(QSize)> sized; // on the connection's loop; not for what was waited for
    std::function<void()> closed;     // the compositor has taken it away; nothing comes after it
  };

  LayerSurface(LayerShell& shell, wl_surface* surface, QScreen* screen, std::uint32_t layer,
               Handlers handlers);
  ~LayerSurface();
  LayerSurface(const LayerSurface&) = delete;
  LayerSurface& operator=(const LayerSurface&) = delete;

  // These take effect at the next commit.
  void place(const LayerPlace& place, const QSize& size); // 0 is as large as the edges allow
  void ignoreBars();                                      // and lie under or over them
  void takeKeyboard();
  void commit() const;

  // The size that the compositor gives it after the first commit; absent when it does not in time.
  std::optional<QSize> firstSize(std::chrono::milliseconds limit);
  // Has it come on the connection's loop instead.
  void handOver();

 private:
  struct Listening;

  LayerShell& m_shell;
  wl_surface* m_surface;
  Handlers m_handlers;
  zwlr_layer_surface_v1* m_layer;
  std::optional<QSize> m_size;
  bool m_isWaitedFor = false;
};

} // namespace vantle
