// SPDX-License-Identifier: MIT
#pragma once

#include <array>

namespace vantle {

// The panes of the settings window, in the order of its sidebar.
enum class Pane { general, boost, appearance, updates, about };

inline constexpr std::array allPanes{Pane::general, Pane::boost, Pane::appearance, Pane::updates,
                                     Pane::about};

const char* titleOf(Pane pane);
const char* symbolOf(Pane pane);

} // namespace vantle
