// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QString>

namespace vantle {

class IconTheme;

// The picture of an app, by the name of a themed icon or by the absolute path of a file, square and `pixels`
// on a side at most. Null when there is none, it cannot be read, or it is larger than an icon has any reason
// to be (a file over 8 MB, a picture over 4096 by 4096).
QImage appIcon(const IconTheme& icons, const QString& source, int pixels);

} // namespace vantle
