// SPDX-License-Identifier: MIT
#include "platform/linux/windows/WindowKind.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace vantle {

namespace {

constexpr std::array<std::string_view, 2> shellTypes{"DOCK", "DESKTOP"};
constexpr std::array<std::string_view, 6> passingTypes{"NOTIFICATION", "TOOLTIP", "DROPDOWN_MENU",
                                                       "POPUP_MENU",   "COMBO",   "DND"};
constexpr std::array<std::string_view, 6> ordinaryTypes{"NORMAL", "DIALOG",  "UTILITY",
                                                        "SPLASH", "TOOLBAR", "MENU"};

template <class List> bool holds(const List& list, std::string_view item) {
  return std::find(list.begin(), list.end(), item) != list.end();
}

} // namespace

WindowKind windowKindOf(std::span<const std::string> types) {
  for (const std::string& type : types) {
    if (holds(shellTypes, type)) return WindowKind::shell;
    if (holds(passingTypes, type)) return WindowKind::passing;
    if (holds(ordinaryTypes, type)) return WindowKind::ordinary;
  }
  return WindowKind::ordinary;
}

} // namespace vantle
