// SPDX-License-Identifier: MIT
#pragma once

#include "look/DirectItem.h"

#include <QColor>
#include <QImage>

namespace vantle {

// The picture of an app in a view; `found` tells whether there is one to show. One that is said to be of an
// app (`isApp`) is the theme's picture of any app where that has none of its own.
class AppImage : public DirectItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QString source MEMBER m_source WRITE setSource NOTIFY sourceChanged)
  Q_PROPERTY(bool isApp MEMBER m_isApp WRITE setIsApp)
  Q_PROPERTY(bool found READ found NOTIFY sourceChanged)

 public:
  explicit AppImage(QQuickItem* parent = nullptr);

  bool found() const { return !m_image.isNull(); }
  void setSource(const QString& value);
  void setIsApp(bool value);
  void paint(QPainter& painter, const QRectF& bounds) override;

 signals:
  void sourceChanged();

 protected:
  void itemChange(ItemChange change, const ItemChangeData& data) override;

 private:
  void load();

  QString m_source;
  bool m_isApp = false;
  QImage m_image;
};

} // namespace vantle
