// SPDX-License-Identifier: MIT
#pragma once

#include "look/DirectItem.h"
#include "look/SymbolDrawing.h"

#include <QColor>
#include <memory>

namespace vantle {

// A symbol in a view.
class Symbol : public DirectItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QString name MEMBER m_name WRITE setName NOTIFY nameChanged)
  Q_PROPERTY(QColor color MEMBER m_color WRITE setColor NOTIFY colorChanged)

 public:
  explicit Symbol(QQuickItem* parent = nullptr);

  void setName(const QString& value);
  void setColor(const QColor& value);
  void paint(QPainter& painter, const QRectF& bounds) override;

 signals:
  void nameChanged();
  void colorChanged();

 private:
  QString m_name;
  QColor m_color = Qt::black;
  std::unique_ptr<SymbolDrawing> m_drawing; // read when it is first painted
};

} // namespace vantle
