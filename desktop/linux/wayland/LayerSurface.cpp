// SPDX-License-Identifier: MIT
#include "desktop/linux/wayland/LayerSurface.h"

#include "layer_shell-client.h"

#include <algorithm>
#include <utility>

namespace vantle {

namespace {

constexpr int gap = 4; // between the panel and the edge or bar that it is at, as under X11

int along(int middle, int size, int room) {
  return std::max(gap, std::min(middle - size / 2, room - gap - size));
}

} // namespace

const std::uint32_t LayerPlace::allEdges =
    ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
    ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;

LayerPlace panelLayerPlace(const QRect& icon, const QSize& size, const QRect& screen, const QSize& room) {
  const QPoint point = icon.center() - screen.topLeft();
  const int barsAcross = screen.width() - room.width();
  const int barsAlong = screen.height() - room.height();
  const bool isInRow = point.y() < barsAlong || point.y() >= screen.height() - barsAlong;
  LayerPlace place;
  if (!isInRow && (point.x() < barsAcross || point.x() >= screen.width() - barsAcross)) {
    place.edges = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP;
    place.top = along(point.y(), size.height(), room.height());
    if (point.x() < barsAcross) {
      place.edges |= ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT;
      place.left = gap;
    } else {
      place.edges |= ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;
      place.right = gap;
    }
    return place;
  }
  place.edges = ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT;
  place.left = along(point.x(), size.width(), room.width());
  if (point.y() < screen.height() / 2) {
    place.edges |= ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP;
    place.top = gap;
  } else {
    place.edges |= ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM;
    place.bottom = gap;
  }
  return place;
}

struct LayerSurface::Listening {
  static void configured(void* data, zwlr_layer_surface_v1* layer, std::uint32_t serial, std::uint32_t width,
                         std::uint32_t height) {
    auto* const surface = static_cast<LayerSurface*>(data);
    zwlr_layer_surface_v1_ack_configure(layer, serial);
    surface->m_size = QSize(static_cast<int>(width), static_cast<int>(height));
    if (surface->m_handlers.sized && !surface->m_isWaitedFor) surface->m_handlers.sized(*surface->m_size);
  }
  // Whoever is told usually destroys the layer, and what is called here with it.
  static void closed(void* data, zwlr_layer_surface_v1* /*layer*/) {
    if (const auto tell = static_cast<LayerSurface*>(data)->m_handlers.closed) tell();
  }
  static constexpr zwlr_layer_surface_v1_listener layerEvents{.configure = configured, .closed = closed};
};

LayerSurface::LayerSurface(LayerShell& shell, wl_surface* surface, QScreen* screen, std::uint32_t layer,
                           Handlers handlers)
    : m_shell(shell), m_surface(surface), m_handlers(std::move(handlers)),
      m_layer(shell.addLayer(surface, screen, layer)) {
  zwlr_layer_surface_v1_add_listener(m_layer, &Listening::layerEvents, this);
}

LayerSurface::~LayerSurface() { zwlr_layer_surface_v1_destroy(m_layer); }

void LayerSurface::place(const LayerPlace& place, const QSize& size) {
  zwlr_layer_surface_v1_set_size(m_layer, static_cast<std::uint32_t>(size.width()),
                                 static_cast<std::uint32_t>(size.height()));
  zwlr_layer_surface_v1_set_anchor(m_layer, place.edges);
  zwlr_layer_surface_v1_set_margin(m_layer, place.top, place.right, place.bottom, place.left);
}

void LayerSurface::ignoreBars() { zwlr_layer_surface_v1_set_exclusive_zone(m_layer, -1); }

void LayerSurface::takeKeyboard() { zwlr_layer_surface_v1_set_keyboard_interactivity(m_layer, 1); }

void LayerSurface::commit() const {
  wl_surface_commit(m_surface);
  m_shell.flush();
}

std::optional<QSize> LayerSurface::firstSize(std::chrono::milliseconds limit) {
  m_isWaitedFor = true;
  m_shell.queue().waitUntil([this] { return m_size.has_value(); }, limit);
  m_isWaitedFor = false;
  handOver();
  return m_size;
}

void LayerSurface::handOver() { m_shell.queue().handOver(m_layer); }

} // namespace vantle
