// SPDX-License-Identifier: MIT
#include "settings/Resources.h"

#include "look/TypeRegistrations.h"

#include <QtGlobal>

// Written by the build from the module's types.
void qml_register_types_Vantle_Settings();

// The resource macro needs a function outside every namespace.
static void initViews() {
  Q_INIT_RESOURCE(qmake_Vantle_Settings);
  Q_INIT_RESOURCE(vantle_settings_raw_qml_0);
  Q_INIT_RESOURCE(qmlcache_vantle_settings);
}

namespace vantle {

void registerSettingsTypes() {
  initViews();
  registerTypesOnce(qml_register_types_Vantle_Settings);
}

} // namespace vantle
