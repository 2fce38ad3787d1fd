// SPDX-License-Identifier: MIT
#include "look/Resources.h"

#include "look/TypeRegistrations.h"

#include <QtGlobal>
#include <qqml.h>

// Written by the build from the module's types.
void qml_register_types_Vantle_Look();

// The resource macro needs a function outside every namespace.
static void initSymbols() {
  Q_INIT_RESOURCE(symbols);
  Q_INIT_RESOURCE(program_icon);
}
static void initViews() {
  Q_INIT_RESOURCE(qmake_Vantle_Look);
  Q_INIT_RESOURCE(vantle_look_raw_qml_0);
  Q_INIT_RESOURCE(qmlcache_vantle_look);
}

namespace vantle {

void loadLookResources() { initSymbols(); }

void registerLookTypes() {
  loadLookResources();
  initViews();
  registerTypesOnce(qml_register_types_Vantle_Look);
}

} // namespace vantle
