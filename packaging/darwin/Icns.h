// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

namespace vantle {

// The icon of an app as macOS keeps it: one drawing in all sizes that it asks for, each as a PNG picture in
// an entry that says which size it is. Empty when there is no such drawing.
QByteArray icnsOf(const QString& svgFile);

} // namespace vantle
