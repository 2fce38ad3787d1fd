// SPDX-License-Identifier: MIT
#include "desktop/linux/wayland/ClickCatcher.h"

#include "layer_shell-client.h"
#include "viewporter-client.h"

#include <sys/mman.h>
#include <unistd.h>

namespace vantle {

namespace {

constexpr int pixelSize = 4; // bytes

// Null when there is no memory.
wl_buffer* clearPixel(wl_shm* memory) {
  const int file = ::memfd_create("vantle-pixel", MFD_CLOEXEC);
  if (file < 0) return nullptr;
  wl_buffer* pixel = nullptr;
  if (::ftruncate(file, pixelSize) == 0) { // which fills it with zeros
    wl_shm_pool* const pool = wl_shm_create_pool(memory, file, pixelSize);
    pixel = wl_shm_pool_create_buffer(pool, 0, 1, 1, pixelSize, WL_SHM_FORMAT_ARGB8888);
    wl_shm_pool_destroy(pool);
  }
  ::close(file);
  return pixel;
}

} // namespace

// Under the panel's layer: of two surfaces on the same one, some compositors give the panel's own clicks to
// the lower.
ClickCatcher::ClickCatcher(LayerShell& shell, QScreen& screen)
    : m_shell(shell), m_surface(wl_compositor_create_surface(shell.compositor())),
      m_viewport(wp_viewporter_get_viewport(shell.viewporter(), m_surface)),
      m_layer(
          std::make_unique<LayerSurface>(shell, m_surface, &screen, ZWLR_LAYER_SHELL_V1_LAYER_TOP,
                                         LayerSurface::Handlers{.sized = [this](QSize size) { cover(size); },
                                                                .closed = [this] { m_layer.reset(); }})) {
  m_layer->handOver();
  m_layer->place({.edges = LayerPlace::allEdges}, {0, 0});
  m_layer->ignoreBars();
  m_layer->commit();
}

ClickCatcher::~ClickCatcher() {
  m_layer.reset();
  wp_viewport_destroy(m_viewport);
  wl_surface_destroy(m_surface);
  if (m_pixel != nullptr) wl_buffer_destroy(m_pixel);
}

void ClickCatcher::cover(const QSize& size) {
  if (m_pixel == nullptr) m_pixel = clearPixel(m_shell.memory());
  if (m_pixel == nullptr || size.isEmpty()) return;
  wp_viewport_set_destination(m_viewport, size.width(), size.height());
  wl_surface_attach(m_surface, m_pixel, 0, 0);
  wl_surface_damage(m_surface, 0, 0, size.width(), size.height());
  m_layer->commit();
}

} // namespace vantle
