// SPDX-License-Identifier: MIT
#include "settings/model/Pane.h"

#include <QtGlobal>
#include <cstddef>

namespace vantle {

namespace {

struct PaneEntry {
  const char* title;
  const char* symbol;
};

constexpr std::array<PaneEntry, allPanes.size()> entries{{
    {QT_TRANSLATE_NOOP("Pane", "General"), "gearshape"},
    {QT_TRANSLATE_NOOP("Pane", "Boost"), "bolt"},
    {QT_TRANSLATE_NOOP("Pane", "Appearance"), "paintpalette"},
    {QT_TRANSLATE_NOOP("Pane", "Updates"), "arrow.triangle.2.circlepath"},
    {QT_TRANSLATE_NOOP("Pane", "About"), "info.circle"},
}};

} // namespace

const char* titleOf(Pane pane) { return entries.at(static_cast<std::size_t>(pane)).title; }
const char* symbolOf(Pane pane) { return entries.at(static_cast<std::size_t>(pane)).symbol; }

} // namespace vantle
