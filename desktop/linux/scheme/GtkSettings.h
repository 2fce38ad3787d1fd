// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/scheme/PublishedSettings.h"

#include <QString>

namespace vantle {

// A value of the person's GTK settings file, or of the machine's; empty when neither has it.
QString gtkSetting(const QString& key);

// Whether the GTK theme in use is a dark one: that of the environment, else the one that the desktop
// publishes, else the one of the files.
bool gtkThemeIsDark(const PublishedSettings& published);

} // namespace vantle
