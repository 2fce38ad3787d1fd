// SPDX-License-Identifier: MIT
// A pointer for a Wayland desktop that has none, as long as it runs:
//
//   PROGRAM WIDTH HEIGHT
//
// of all screens together. Clicks at each "X Y" on its input and says "X Y" when the desktop has taken it in.
#include "virtual_pointer-client.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <span>
#include <wayland-client.h>

namespace {

constexpr std::uint32_t leftButton = 0x110; // of the kernel's input events

void announced(void* manager, wl_registry* registry, std::uint32_t name, const char* interface,
               std::uint32_t /*version*/) {
  if (std::strcmp(interface, zwlr_virtual_pointer_manager_v1_interface.name) != 0) return;
  *static_cast<void**>(manager) =
      wl_registry_bind(registry, name, &zwlr_virtual_pointer_manager_v1_interface, 1);
}
void gone(void* /*manager*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}
constexpr wl_registry_listener listener{.global = announced, .global_remove = gone};

} // namespace

int main(int argc, char** argv) {
  const std::span<char*> arguments(argv, static_cast<std::size_t>(argc));
  if (arguments.size() != 3) return 2;
  const auto width = static_cast<std::uint32_t>(std::atoi(arguments[1]));
  const auto height = static_cast<std::uint32_t>(std::atoi(arguments[2]));
  wl_display* const display = wl_display_connect(nullptr);
  if (display == nullptr) return 1;
  void* manager = nullptr;
  wl_registry_add_listener(wl_display_get_registry(display), &listener, static_cast<void*>(&manager));
  wl_display_roundtrip(display);
  if (manager == nullptr) return 1;
  zwlr_virtual_pointer_v1* const pointer = zwlr_virtual_pointer_manager_v1_create_virtual_pointer(
      static_cast<zwlr_virtual_pointer_manager_v1*>(manager), nullptr);
  wl_display_roundtrip(display);

  std::uint32_t x = 0;
  std::uint32_t y = 0;
  for (std::uint32_t time = 1; std::cin >> x >> y; ++time) {
    zwlr_virtual_pointer_v1_motion_absolute(pointer, time, x, y, width, height);
    zwlr_virtual_pointer_v1_frame(pointer);
    for (const auto state : {WL_POINTER_BUTTON_STATE_PRESSED, WL_POINTER_BUTTON_STATE_RELEASED}) {
      zwlr_virtual_pointer_v1_button(pointer, time, leftButton, state);
      zwlr_virtual_pointer_v1_frame(pointer);
    }
    if (wl_display_roundtrip(display) < 0) return 1;
    std::cout << x << ' ' << y << std::endl;
  }
  return 0;
}
