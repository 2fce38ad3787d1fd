// SPDX-License-Identifier: MIT
#pragma once

#include "look/DirectItem.h"

#include <QColor>
#include <QString>

namespace vantle {

// One line of text in which every digit is as wide as the widest, whatever the font: figures in a column
// stand under one another. Never cut short.
class TabularText : public DirectItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QString text MEMBER m_text WRITE setText NOTIFY textChanged)
  Q_PROPERTY(QColor color MEMBER m_color WRITE setColor NOTIFY colorChanged)
  Q_PROPERTY(int pixelSize MEMBER m_pixelSize WRITE setPixelSize NOTIFY pixelSizeChanged)

 public:
  explicit TabularText(QQuickItem* parent = nullptr);

  void setText(const QString& value);
  void setColor(const QColor& value) { assign(m_color, value, &TabularText::colorChanged); }
  void setPixelSize(int value);
  void paint(QPainter& painter, const QRectF& bounds) override;

 signals:
  void textChanged();
  void colorChanged();
  void pixelSizeChanged();

 private:
  void measure();
  QFont font() const;

  QString m_text;
  QColor m_color = Qt::black;
  int m_pixelSize = 13;
};

} // namespace vantle
