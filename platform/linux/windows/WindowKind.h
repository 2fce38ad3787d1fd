// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>

namespace vantle {

// What a window is to the person, from its _NET_WM_WINDOW_TYPE.
enum class WindowKind {
  ordinary, // an app's own
  shell,    // a dock, panel or desktop: its process belongs to the desktop
  passing,  // menus, hints, notices: nobody's window
};

// The types in the order in which the window names them, without the common "_NET_WM_WINDOW_TYPE_" before
// each; the first that is known counts. A window that names none is ordinary.
WindowKind windowKindOf(std::span<const std::string> types);

} // namespace vantle
