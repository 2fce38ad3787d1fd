// SPDX-License-Identifier: MIT
#pragma once

#include <QQuickItem>

namespace vantle {

// Lays its children out in lines; see FlowGeometry.h. Each child has its implicit size. The item's own
// implicit size is what the arrangement needs in the item's width. Nothing is kept between two passes.
class FlowLayout : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(qreal spacing READ spacing WRITE setSpacing NOTIFY spacingChanged)

 public:
  using QQuickItem::QQuickItem;

  qreal spacing() const { return m_spacing; }
  void setSpacing(qreal value);

 signals:
  void spacingChanged();

 protected:
  void itemChange(ItemChange change, const ItemChangeData& data) override;
  void geometryChange(const QRectF& to, const QRectF& from) override;
  void updatePolish() override;

 private:
  QList<QQuickItem*> shownChildren() const;

  qreal m_spacing = 0;
};

} // namespace vantle
