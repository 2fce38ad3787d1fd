// SPDX-License-Identifier: MIT
#pragma once

#include <QQuickItem>

class QPainter;

namespace vantle {

// An item that paints straight into its window. It keeps no picture of its own, so it costs no memory and is
// exact at every scale, also at fractional ones. It needs the software renderer; with another it stays empty.
class DirectItem : public QQuickItem {
  Q_OBJECT
  QML_ANONYMOUS

 public:
  explicit DirectItem(QQuickItem* parent = nullptr);

  // Into `bounds`, in the item's own coordinates.
  virtual void paint(QPainter& painter, const QRectF& bounds) = 0;

 protected:
  QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;
  void geometryChange(const QRectF& to, const QRectF& from) override;

  // Stores a property's value, and repaints and tells of it when it is a new one.
  template <class Owner, class T> void assign(T& member, const T& value, void (Owner::*changed)()) {
    if (member == value) return;
    member = value;
    update();
    emit(static_cast<Owner*>(this)->*changed)();
  }
};

} // namespace vantle
