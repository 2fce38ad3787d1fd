// SPDX-License-Identifier: MIT
#pragma once

#include "look/ports/PlaceWords.h"

#include <QtGlobal>

namespace vantle {

// Categories are those of the app menu's entries. Only some machines have cores of two kinds; where the
// others go instead has no name, so the text says what it is to the apps.
inline constexpr PlaceWords linuxWords{.computer = QT_TRANSLATE_NOOP("Place", "computer"),
                                       .store = QT_TRANSLATE_NOOP("Place", "app menu"),
                                       .bar = QT_TRANSLATE_NOOP("Place", "panel"),
                                       .cores = QT_TRANSLATE_NOOP("Place", "the background"),
                                       .registrar = "gamemoderun"};

} // namespace vantle
