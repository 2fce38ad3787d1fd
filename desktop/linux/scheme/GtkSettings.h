// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace vantle {

// A value of the person's GTK settings file, or of the machine's; empty when neither has it.
QString gtkSetting(const QString& key);

// Whether the GTK theme in use is a dark one.
bool gtkThemeIsDark();

} // namespace vantle
