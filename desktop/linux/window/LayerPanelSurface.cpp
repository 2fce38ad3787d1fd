// SPDX-License-Identifier: MIT
#include "desktop/linux/window/LayerPanelSurface.h"

#include "desktop/PressElsewhere.h"
#include "layer_shell-client.h"

#include <QGuiApplication>
#include <algorithm>
#include <chrono>
#include <qpa/qplatformnativeinterface.h>
#include <utility>

namespace vantle {

namespace {

// Of the compositor, two of which an opening takes; the second, when the first was not given at all.
constexpr std::chrono::milliseconds longestAnswer{90};
constexpr std::chrono::milliseconds longestLateAnswer{30};

wl_surface* surfaceOf(QWindow& window) {
  return static_cast<wl_surface*>(
      QGuiApplication::platformNativeInterface()->nativeResourceForWindow("surface", &window));
}

} // namespace

LayerPanelSurface::LayerPanelSurface(std::unique_ptr<LayerShell> shell) : m_shell(std::move(shell)) {}

LayerPanelSurface::~LayerPanelSurface() { QObject::disconnect(m_newScreens); }

QSize LayerPanelSurface::roomOn(QScreen& screen) {
  if (m_screen != &screen || m_room.isEmpty()) {
    m_screen = &screen;
    m_room = askForRoom(screen);
  }
  return m_room;
}

// A layer that is as large as bars allow, and is never shown. A compositor that does not answer in time shows
// nothing else either.
QSize LayerPanelSurface::askForRoom(QScreen& screen) {
  wl_surface* const surface = wl_compositor_create_surface(m_shell->compositor());
  std::optional<QSize> size;
  {
    LayerSurface layer(*m_shell, surface, &screen, ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, {});
    layer.place({.edges = LayerPlace::allEdges}, {0, 0});
    layer.commit();
    size = layer.firstSize(longestAnswer);
  }
  wl_surface_destroy(surface);
  m_isSilent = !size;
  return size.value_or(QSize()).isEmpty() ? screen.size() : *size;
}

void LayerPanelSurface::place(QWindow& window, QScreen& screen, const QRect& anchor, const QRect& place) {
  const bool isElsewhere = m_layer && window.screen() != &screen;
  if (isElsewhere) takeDown(window); // a layer stays on its screen
  m_place = panelLayerPlace(anchor, place.size(), screen.geometry(), roomOn(screen));
  m_size = place.size();
  window.setScreen(&screen);
  window.setGeometry(place);
  if (isElsewhere) {
    show(window);
  } else if (m_layer) {
    m_layer->place(m_place, m_size);
    m_layer->commit();
  }
}

void LayerPanelSurface::show(QWindow& window) {
  if (m_layer) return;
  window.setFlag(Qt::BypassWindowManagerHint);
  window.create();
  if (!takeRole(window)) {
    window.destroy();
    return;
  }
  m_window = &window;
  window.show();
  followInput();
}

// Drawn before the compositor has said its first word on the layer, the window would end the connection.
bool LayerPanelSurface::takeRole(QWindow& window) {
  wl_surface* const surface = surfaceOf(window);
  if (surface == nullptr) return false;
  m_layer = std::make_unique<LayerSurface>(
      *m_shell, surface, m_screen, ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY,
      LayerSurface::Handlers{.sized = {}, .closed = [this] { tellOfPressElsewhere(); }});
  m_layer->place(m_place, m_size);
  m_layer->takeKeyboard();
  m_layer->commit();
  if (m_layer->firstSize(m_isSilent ? longestLateAnswer : longestAnswer)) return true;
  m_layer.reset();
  return false;
}

void LayerPanelSurface::hide(QWindow& window) {
  takeDown(window);
  m_room = {};
}

// The toolkit drops a hidden window's surface, which may not be before its role.
void LayerPanelSurface::takeDown(QWindow& window) {
  QObject::disconnect(m_newScreens);
  m_shell->followInput({});
  m_catchers.clear();
  m_layer.reset();
  m_window = nullptr;
  window.hide();
  window.destroy();
}

void LayerPanelSurface::followInput() {
  const auto add = [this](QScreen* screen) {
    m_catchers.push_back(std::make_unique<ClickCatcher>(*m_shell, *screen));
  };
  if (m_shell->viewporter() != nullptr) {
    for (QScreen* screen : QGuiApplication::screens()) add(screen);
    m_newScreens = QObject::connect(qApp, &QGuiApplication::screenAdded, add);
  }
  // The toolkit is not told when a screen locker has the keyboard taken away and the compositor gives it back
  // to the topmost layer, which would keep the person from their password.
  m_shell->followInput({.pressed = [this](wl_surface* surface) { pressed(surface); },
                        .keyboardLeft =
                            [this](wl_surface* surface) {
                              if (m_window && surface == surfaceOf(*m_window)) tellOfPressElsewhere();
                            }});
}

void LayerPanelSurface::pressed(wl_surface* surface) {
  const bool isElsewhere = std::any_of(m_catchers.begin(), m_catchers.end(), [surface](const auto& catcher) {
    return catcher->surface() == surface;
  });
  if (isElsewhere) tellOfPressElsewhere();
}

void LayerPanelSurface::tellOfPressElsewhere() {
  if (m_window) vantle::tellOfPressElsewhere(*m_window);
}

} // namespace vantle
