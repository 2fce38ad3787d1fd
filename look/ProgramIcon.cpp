// SPDX-License-Identifier: MIT
#include "look/ProgramIcon.h"

#include "base/Invariant.h"
#include "look/Resources.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace vantle {

QIcon programIcon() {
  loadLookResources();
  QSvgRenderer drawing(QStringLiteral(":/vantle/com.halvo.vantle.svg"));
  invariant(drawing.isValid(), "the icon is part of the program");
  QIcon icon;
  for (const int pixels : {16, 24, 32, 48, 64, 128}) {
    QPixmap picture(pixels, pixels);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    drawing.render(&painter);
    painter.end();
    icon.addPixmap(picture);
  }
  return icon;
}

} // namespace vantle
