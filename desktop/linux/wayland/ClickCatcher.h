// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/wayland/LayerSurface.h"

#include <memory>

struct wl_buffer;
struct wp_viewport;

namespace vantle {

// A clear layer over all of a screen with its bars, so that every press there is one on a surface of this
// program's. One transparent pixel, stretched by the compositor.
class ClickCatcher {
 public:
  // The shell has a viewporter, and outlives it; so does the screen as far as it is named here.
  ClickCatcher(LayerShell& shell, QScreen& screen);
  ~ClickCatcher();
  ClickCatcher(const ClickCatcher&) = delete;
  ClickCatcher& operator=(const ClickCatcher&) = delete;

  wl_surface* surface() const { return m_surface; }

 private:
  void cover(const QSize& size);

  LayerShell& m_shell;
  wl_surface* m_surface;
  wp_viewport* m_viewport;
  wl_buffer* m_pixel = nullptr;
  std::unique_ptr<LayerSurface> m_layer;
};

} // namespace vantle
