// SPDX-License-Identifier: MIT
#include "desktop/linux/wayland/LayerShell.h"

#include "layer_shell-client.h"
#include "viewporter-client.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <qpa/qplatformnativeinterface.h>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

constexpr std::chrono::milliseconds longestAnnouncement{100};

// As far as each is used here; a compositor may have an older one.
constexpr std::uint32_t compositorVersion = 4;
constexpr std::uint32_t shellVersion = 3;
constexpr std::uint32_t seatVersion = 5; // from which on all that a seat gives can be given back

} // namespace

// Hears as long as somebody follows it, with each pointer, touch screen and keyboard that it has just then.
struct LayerShell::Seat {
  Seat(LayerShell& owner, wl_seat* boundSeat, std::uint32_t announcedName);
  ~Seat();
  Seat(const Seat&) = delete;
  Seat& operator=(const Seat&) = delete;

  void follow();
  void leave();

  LayerShell& shell;
  wl_seat* seat;
  std::uint32_t name; // of the announcement
  std::uint32_t capabilities = 0;
  wl_pointer* pointer = nullptr;
  wl_touch* touch = nullptr;
  wl_keyboard* keyboard = nullptr;
  wl_surface* under = nullptr; // the pointer; null for none of ours
};

// The listeners' functions for each object; what they are not told of by name they have no use for.
struct LayerShell::Listening {
  // Whoever is told may end the following, and with it what is called here.
  static void tell(const std::function<void(wl_surface*)>& whom, wl_surface* surface) {
    if (const auto kept = whom) kept(surface);
  }

  static void announced(void* data, wl_registry* /*registry*/, std::uint32_t name, const char* interface,
                        std::uint32_t version) {
    static_cast<LayerShell*>(data)->bind(name, interface, version);
  }
  static void gone(void* data, wl_registry* /*registry*/, std::uint32_t name) {
    static_cast<LayerShell*>(data)->forget(name);
  }

  static void equipped(void* data, wl_seat* /*seat*/, std::uint32_t capabilities) {
    auto* const seat = static_cast<Seat*>(data);
    seat->capabilities = capabilities;
    seat->leave();
    if (seat->shell.isFollowed()) seat->follow();
  }
  static void named(void* /*data*/, wl_seat* /*seat*/, const char* /*name*/) {}

  static void entered(void* data, wl_pointer* /*pointer*/, std::uint32_t /*serial*/, wl_surface* surface,
                      wl_fixed_t /*x*/, wl_fixed_t /*y*/) {
    static_cast<Seat*>(data)->under = surface;
  }
  static void left(void* data, wl_pointer* /*pointer*/, std::uint32_t /*serial*/, wl_surface* /*surface*/) {
    static_cast<Seat*>(data)->under = nullptr;
  }
  static void moved(void* /*data*/, wl_pointer* /*pointer*/, std::uint32_t /*time*/, wl_fixed_t /*x*/,
                    wl_fixed_t /*y*/) {}
  static void pressed(void* data, wl_pointer* /*pointer*/, std::uint32_t /*serial*/, std::uint32_t /*time*/,
                      std::uint32_t /*button*/, std::uint32_t state) {
    auto* const seat = static_cast<Seat*>(data);
    if (state == WL_POINTER_BUTTON_STATE_PRESSED) tell(seat->shell.m_input.pressed, seat->under);
  }
  static void scrolled(void* /*data*/, wl_pointer* /*pointer*/, std::uint32_t /*time*/,
                       std::uint32_t /*axis*/, wl_fixed_t /*value*/) {}
  static void framed(void* /*data*/, wl_pointer* /*pointer*/) {}
  static void scrolledBy(void* /*data*/, wl_pointer* /*pointer*/, std::uint32_t /*source*/) {}
  static void scrollEnded(void* /*data*/, wl_pointer* /*pointer*/, std::uint32_t /*time*/,
                          std::uint32_t /*axis*/) {}
  static void scrolledSteps(void* /*data*/, wl_pointer* /*pointer*/, std::uint32_t /*axis*/,
                            std::int32_t /*steps*/) {}

  static void touched(void* data, wl_touch* /*touch*/, std::uint32_t /*serial*/, std::uint32_t /*time*/,
                      wl_surface* surface, std::int32_t /*finger*/, wl_fixed_t /*x*/, wl_fixed_t /*y*/) {
    tell(static_cast<Seat*>(data)->shell.m_input.pressed, surface);
  }
  static void lifted(void* /*data*/, wl_touch* /*touch*/, std::uint32_t /*serial*/, std::uint32_t /*time*/,
                     std::int32_t /*finger*/) {}
  static void dragged(void* /*data*/, wl_touch* /*touch*/, std::uint32_t /*time*/, std::int32_t /*finger*/,
                      wl_fixed_t /*x*/, wl_fixed_t /*y*/) {}
  static void touchFramed(void* /*data*/, wl_touch* /*touch*/) {}

  static void mapped(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*format*/, std::int32_t map,
                     std::uint32_t /*size*/) {
    ::close(map);
  }
  static void focused(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                      wl_surface* /*surface*/, wl_array* /*keys*/) {}
  static void unfocused(void* data, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                        wl_surface* surface) {
    tell(static_cast<Seat*>(data)->shell.m_input.keyboardLeft, surface);
  }
  static void typed(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                    std::uint32_t /*time*/, std::uint32_t /*key*/, std::uint32_t /*state*/) {}
  static void modified(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                       std::uint32_t /*depressed*/, std::uint32_t /*latched*/, std::uint32_t /*locked*/,
                       std::uint32_t /*group*/) {}
  static void repeated(void* /*data*/, wl_keyboard* /*keyboard*/, std::int32_t /*rate*/,
                       std::int32_t /*delay*/) {}

  static constexpr wl_registry_listener registryEvents{.global = announced, .global_remove = gone};
  static constexpr wl_seat_listener seatEvents{.capabilities = equipped, .name = named};
  static constexpr wl_keyboard_listener keyboardEvents{.keymap = mapped,
                                                       .enter = focused,
                                                       .leave = unfocused,
                                                       .key = typed,
                                                       .modifiers = modified,
                                                       .repeat_info = repeated};
  static const wl_pointer_listener pointerEvents;
  static const wl_touch_listener touchEvents;
};

// By their names, as newer headers have more of them than are ever called for this version.
const wl_pointer_listener LayerShell::Listening::pointerEvents = [] {
  wl_pointer_listener listener{};
  listener.enter = entered;
  listener.leave = left;
  listener.motion = moved;
  listener.button = pressed;
  listener.axis = scrolled;
  listener.frame = framed;
  listener.axis_source = scrolledBy;
  listener.axis_stop = scrollEnded;
  listener.axis_discrete = scrolledSteps;
  return listener;
}();
const wl_touch_listener LayerShell::Listening::touchEvents = [] {
  wl_touch_listener listener{};
  listener.down = touched;
  listener.up = lifted;
  listener.motion = dragged;
  listener.frame = touchFramed;
  listener.cancel = touchFramed;
  return listener;
}();

LayerShell::Seat::Seat(LayerShell& owner, wl_seat* boundSeat, std::uint32_t announcedName)
    : shell(owner), seat(boundSeat), name(announcedName) {
  wl_seat_add_listener(seat, &Listening::seatEvents, this);
}

LayerShell::Seat::~Seat() {
  leave();
  wl_seat_release(seat);
}

void LayerShell::Seat::follow() {
  if (pointer == nullptr && (capabilities & WL_SEAT_CAPABILITY_POINTER) != 0) {
    pointer = wl_seat_get_pointer(seat);
    wl_pointer_add_listener(pointer, &Listening::pointerEvents, this);
  }
  if (touch == nullptr && (capabilities & WL_SEAT_CAPABILITY_TOUCH) != 0) {
    touch = wl_seat_get_touch(seat);
    wl_touch_add_listener(touch, &Listening::touchEvents, this);
  }
  if (keyboard == nullptr && (capabilities & WL_SEAT_CAPABILITY_KEYBOARD) != 0) {
    keyboard = wl_seat_get_keyboard(seat);
    wl_keyboard_add_listener(keyboard, &Listening::keyboardEvents, this);
  }
}

void LayerShell::Seat::leave() {
  if (pointer != nullptr) wl_pointer_release(std::exchange(pointer, nullptr));
  if (touch != nullptr) wl_touch_release(std::exchange(touch, nullptr));
  if (keyboard != nullptr) wl_keyboard_release(std::exchange(keyboard, nullptr));
  under = nullptr;
}

bool LayerShell::isInterface(std::string_view name) { return name == zwlr_layer_shell_v1_interface.name; }

std::unique_ptr<LayerShell> LayerShell::ofToolkit() {
  if (!QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) return {};
  auto* const display = static_cast<wl_display*>(
      QGuiApplication::platformNativeInterface()->nativeResourceForIntegration("wl_display"));
  if (display == nullptr) return {};
  std::unique_ptr<LayerShell> shell(new LayerShell(display));
  if (shell->m_shell == nullptr || shell->m_compositor == nullptr || shell->m_memory == nullptr) return {};
  return shell;
}

LayerShell::LayerShell(wl_display* display)
    : m_display(display), m_queue(display), m_registry(m_queue.makeRegistry()) {
  wl_registry_add_listener(m_registry, &Listening::registryEvents, this);
  m_queue.settle(longestAnnouncement);
  m_queue.handOver(m_registry); // seats come and go
  for (const auto& seat : m_seats) m_queue.handOver(seat->seat);
}

LayerShell::~LayerShell() {
  m_seats.clear();
  if (m_viewporter != nullptr) wp_viewporter_destroy(m_viewporter);
  if (m_memory != nullptr) wl_shm_destroy(m_memory);
  if (m_compositor != nullptr) wl_compositor_destroy(m_compositor);
  if (m_shell != nullptr) {
    if (zwlr_layer_shell_v1_get_version(m_shell) >= ZWLR_LAYER_SHELL_V1_DESTROY_SINCE_VERSION) {
      zwlr_layer_shell_v1_destroy(m_shell);
    } else {
      wl_proxy_destroy(reinterpret_cast<wl_proxy*>(m_shell)); // NOLINT: as the library's own interface does
    }
  }
  wl_registry_destroy(m_registry);
}

void LayerShell::bind(std::uint32_t name, std::string_view interface, std::uint32_t version) {
  const auto object = [&](const wl_interface& wanted, std::uint32_t highest) {
    return wl_registry_bind(m_registry, name, &wanted, std::min(version, highest));
  };
  if (interface == zwlr_layer_shell_v1_interface.name) {
    m_shell = static_cast<zwlr_layer_shell_v1*>(object(zwlr_layer_shell_v1_interface, shellVersion));
  } else if (interface == wl_compositor_interface.name) {
    m_compositor = static_cast<wl_compositor*>(object(wl_compositor_interface, compositorVersion));
  } else if (interface == wl_shm_interface.name) {
    m_memory = static_cast<wl_shm*>(object(wl_shm_interface, 1));
  } else if (interface == wp_viewporter_interface.name) {
    m_viewporter = static_cast<wp_viewporter*>(object(wp_viewporter_interface, 1));
  } else if (interface == wl_seat_interface.name && version >= seatVersion) {
    auto* const seat = static_cast<wl_seat*>(object(wl_seat_interface, seatVersion));
    m_seats.push_back(std::make_unique<Seat>(*this, seat, name));
  }
}

void LayerShell::forget(std::uint32_t name) {
  m_seats.remove_if([name](const auto& seat) { return seat->name == name; });
}

zwlr_layer_surface_v1* LayerShell::addLayer(wl_surface* surface, QScreen* screen, std::uint32_t layer) const {
  wl_output* output = nullptr;
  if (screen != nullptr) {
    output = static_cast<wl_output*>(
        QGuiApplication::platformNativeInterface()->nativeResourceForScreen("output", screen));
  }
  return zwlr_layer_shell_v1_get_layer_surface(m_shell, surface, output, layer, "vantle");
}

void LayerShell::followInput(InputHandlers handlers) {
  m_input = std::move(handlers);
  for (const auto& seat : m_seats) {
    if (isFollowed()) {
      seat->follow();
    } else {
      seat->leave();
    }
  }
}

} // namespace vantle
