// SPDX-License-Identifier: MIT
#include "settings/model/Pane.h"

#include <cstddef>

namespace vantle {

namespace {

struct PaneEntry {
  const char* title;
  const char* symbol;
};

constexpr std::array<PaneEntry, allPanes.size()> entries{{
    {"General", "gearshape"},
    {"Boost", "bolt"},
    {"Appearance", "paintpalette"},
    {"Updates", "arrow.triangle.2.circlepath"},
    {"About", "info.circle"},
}};

} // namespace

const char* titleOf(Pane pane) { return entries.at(static_cast<std::size_t>(pane)).title; }
const char* symbolOf(Pane pane) { return entries.at(static_cast<std::size_t>(pane)).symbol; }

} // namespace vantle
