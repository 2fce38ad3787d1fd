// SPDX-License-Identifier: MIT
#include "look/Place.h"

#include "look/LookEngine.h"

namespace vantle {

Place* Place::create(QQmlEngine* engine, QJSEngine*) {
  return new Place(static_cast<LookEngine*>(engine)->words()); // the engine owns it
}

} // namespace vantle
