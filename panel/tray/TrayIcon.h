// SPDX-License-Identifier: MIT
#pragma once

#include "panel/tray/TrayTypes.h"

#include <QImage>

namespace vantle {

enum class BoltShape { outlined, filled };

// What the tray icon shows at one moment.
struct TrayIcon {
  BoltShape shape = BoltShape::outlined;
  bool forDarkTray = false;
  bool operator==(const TrayIcon&) const = default;
};

QImage trayImage(const TrayIcon& icon, int pixels);
TrayPixmaps trayPixmaps(const TrayIcon& icon); // in all the sizes that trays ask for

} // namespace vantle
