// SPDX-License-Identifier: MIT
#include "panel/FlowLayout.h"

#include "panel/FlowGeometry.h"

namespace vantle {

void FlowLayout::setSpacing(qreal value) {
  if (m_spacing == value) return;
  m_spacing = value;
  polish();
  emit spacingChanged();
}

void FlowLayout::itemChange(ItemChange change, const ItemChangeData& data) {
  if (change == ItemChildAddedChange) {
    connect(data.item, &QQuickItem::implicitWidthChanged, this, &QQuickItem::polish);
    connect(data.item, &QQuickItem::implicitHeightChanged, this, &QQuickItem::polish);
    connect(data.item, &QQuickItem::visibleChanged, this, &QQuickItem::polish);
    polish();
  } else if (change == ItemChildRemovedChange) {
    data.item->disconnect(this);
    polish();
  }
  QQuickItem::itemChange(change, data);
}

void FlowLayout::geometryChange(const QRectF& to, const QRectF& from) {
  QQuickItem::geometryChange(to, from);
  if (to.width() != from.width()) polish();
}

// A repeater is an item too, one that takes no room.
QList<QQuickItem*> FlowLayout::shownChildren() const {
  QList<QQuickItem*> shown;
  for (QQuickItem* child : childItems()) {
    const bool takesRoom = child->implicitWidth() > 0 || child->implicitHeight() > 0;
    if (child->isVisible() && takesRoom) shown.append(child);
  }
  return shown;
}

void FlowLayout::updatePolish() {
  const QList<QQuickItem*> children = shownChildren();
  std::vector<FlowSize> sizes;
  sizes.reserve(static_cast<std::size_t>(children.size()));
  for (const QQuickItem* child : children) sizes.push_back({child->implicitWidth(), child->implicitHeight()});

  const std::optional<double> proposed = widthValid() ? std::optional<double>(width()) : std::nullopt;
  const FlowSize needed = flowSize(proposed, sizes, m_spacing);
  setImplicitSize(needed.width, needed.height);

  const std::vector<FlowPoint> places = flowPlaces({0, 0, proposed.value_or(needed.width)}, sizes, m_spacing);
  for (qsizetype i = 0; i < children.size(); ++i) {
    const FlowSize& size = sizes[static_cast<std::size_t>(i)];
    const FlowPoint& place = places[static_cast<std::size_t>(i)];
    children[i]->setPosition({place.x, place.y});
    children[i]->setSize({size.width, size.height});
  }
}

} // namespace vantle
