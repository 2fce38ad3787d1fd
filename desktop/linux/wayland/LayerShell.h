// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/wayland/WaylandQueue.h"

#include <QSize>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string_view>

class QScreen;

struct wl_compositor;
struct wl_seat;
struct wl_shm;
struct wp_viewporter;
struct zwlr_layer_shell_v1;
struct zwlr_layer_surface_v1;

namespace vantle {

// What the compositor offers beside ordinary windows: surfaces at the edges of the screen, over or under
// them. On the toolkit's own connection, whose loop delivers what is not waited for.
class LayerShell {
 public:
  static bool isInterface(std::string_view name); // one of a compositor's globals

  // Null when the toolkit is not on Wayland, or its compositor has none or does not answer.
  static std::unique_ptr<LayerShell> ofToolkit();
  ~LayerShell();
  LayerShell(const LayerShell&) = delete;
  LayerShell& operator=(const LayerShell&) = delete;

  wl_compositor* compositor() const { return m_compositor; }
  wl_shm* memory() const { return m_memory; }
  wp_viewporter* viewporter() const { return m_viewporter; } // null where there is none
  WaylandQueue& queue() { return m_queue; }

  // Belongs to the queue. Null is the screen that the compositor chooses.
  zwlr_layer_surface_v1* addLayer(wl_surface* surface, QScreen* screen, std::uint32_t layer) const;
  void flush() const { wl_display_flush(m_display); }

  // What a person does with this program's surfaces, the toolkit's included; null is none of them.
  struct InputHandlers {
    std::function<void(wl_surface*)> pressed;      // a button or a finger
    std::function<void(wl_surface*)> keyboardLeft; // also when it comes back at once
  };
  // Until it is called with nothing.
  void followInput(InputHandlers handlers);

 private:
  struct Seat;
  struct Listening;

  explicit LayerShell(wl_display* display);
  void bind(std::uint32_t name, std::string_view interface, std::uint32_t version);
  void forget(std::uint32_t name);
  bool isFollowed() const { return m_input.pressed || m_input.keyboardLeft; }

  wl_display* m_display;
  WaylandQueue m_queue;
  wl_registry* m_registry;
  zwlr_layer_shell_v1* m_shell = nullptr;
  wl_compositor* m_compositor = nullptr;
  wl_shm* m_memory = nullptr;
  wp_viewporter* m_viewporter = nullptr;
  std::list<std::unique_ptr<Seat>> m_seats;
  InputHandlers m_input;
};

} // namespace vantle
