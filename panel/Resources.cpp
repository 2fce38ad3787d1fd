// SPDX-License-Identifier: MIT
#include "panel/Resources.h"

#include "look/TypeRegistrations.h"

#include <QtGlobal>
#include <qqml.h>

// Written by the build from the module's types.
void qml_register_types_Vantle_Panel();

// The resource macro needs a function outside every namespace.
static void initViews() {
  Q_INIT_RESOURCE(qmake_Vantle_Panel);
  Q_INIT_RESOURCE(vantle_panel_raw_qml_0);
  Q_INIT_RESOURCE(qmlcache_vantle_panel);
}

namespace vantle {

void registerPanelTypes() {
  initViews();
  registerTypesOnce(qml_register_types_Vantle_Panel);
}

} // namespace vantle
