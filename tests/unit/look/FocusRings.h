// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QImage>
#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickWindow>
#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// Goes through a window with the Tab key, and fails the test where the ring around what has the keyboard is
// cut off or not to be seen, or runs over a text or a neighbour.
class FocusRings {
 public:
  // The place is what of the window can be reached, if it is not all of it.
  explicit FocusRings(QQuickWindow& window, const QQuickItem* place = nullptr)
      : m_window(window), m_place(place != nullptr ? *place : *window.contentItem()) {}

  // What had the keyboard with a ring around it, one after the other, until the first of them had it again.
  std::vector<std::string> walk() {
    constexpr int most = 200;
    std::vector<const QQuickItem*> seen;
    std::vector<std::string> names;
    for (int step = 0; step < most; ++step) {
      press(Qt::Key_Tab);
      const QQuickItem* const item = m_window.activeFocusItem();
      if (!seen.empty() && item == seen.front()) return names;
      seen.push_back(item);
      if (QQuickItem* const ring = shownRing(*m_window.contentItem())) {
        names.push_back(nameOf(*ring->parentItem()));
        check(*ring);
        checkPicture(*ring);
      }
    }
    ADD_FAILURE() << "the walk does not come round";
    return names;
  }

 private:
  static constexpr qreal tolerance = 0.5; // points: less than a pixel

  void press(int key) {
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
      QKeyEvent event(type, key, Qt::NoModifier);
      QCoreApplication::sendEvent(&m_window, &event);
    }
    QCoreApplication::processEvents();
  }

  static bool isOf(const QQuickItem& item, std::string_view type) {
    return std::string_view(item.metaObject()->className()).starts_with(type);
  }

  static QQuickItem* shownRing(QQuickItem& item) {
    if (!item.isVisible()) return nullptr;
    if (isOf(item, "FocusRing_")) return &item;
    for (QQuickItem* child : item.childItems()) {
      if (QQuickItem* ring = shownRing(*child)) return ring;
    }
    return nullptr;
  }

  static std::string nameOf(const QQuickItem& item) {
    for (const char* property : {"label", "name", "text"}) {
      if (const QString name = item.property(property).toString(); !name.isEmpty()) return name.toStdString();
    }
    return item.metaObject()->className();
  }

  static QRectF sceneRect(const QQuickItem& item) { return item.mapRectToScene(item.boundingRect()); }

  // A text is in the middle of an item that is higher than it.
  static QRectF textRect(const QQuickItem& item) {
    const qreal spare = std::max(0.0, item.height() - item.implicitHeight());
    return item.mapRectToScene(item.boundingRect().adjusted(0, spare / 2, 0, -spare / 2));
  }

  static bool isWithin(const QRectF& inner, const QRectF& outer) {
    return outer.adjusted(-tolerance, -tolerance, tolerance, tolerance).contains(inner);
  }

  static bool overlap(const QRectF& one, const QRectF& other) {
    const QRectF both = one & other;
    return both.width() > tolerance && both.height() > tolerance;
  }

  // What is seen of the item's rectangle.
  static QRectF shownPart(const QQuickItem& item, QRectF scene) {
    for (const QQuickItem* each = item.parentItem(); each != nullptr; each = each->parentItem()) {
      if (each->clip()) scene &= each->mapRectToScene(each->clipRect());
    }
    return scene;
  }

  void check(const QQuickItem& ring) const {
    const QQuickItem& owner = *ring.parentItem();
    const QRectF around = sceneRect(ring);
    const QRectF window(QPointF(), QSizeF(m_window.contentItem()->size()));
    EXPECT_TRUE(isWithin(around, window)) << nameOf(owner) << ": beyond the window";
    EXPECT_TRUE(isWithin(around, shownPart(ring, around))) << nameOf(owner) << ": cut off";
    checkNeighbours(m_place, owner, ring);
  }

  // Each of its sides, in the middle, is another colour than what is below.
  void checkPicture(QQuickItem& ring) const {
    const QImage with = m_window.grabWindow();
    ring.setOpacity(0);
    const QImage without = m_window.grabWindow();
    ring.setOpacity(1);
    const qreal within = ring.property("edgeWidth").toReal() / 2;
    const QRectF line = sceneRect(ring).adjusted(within, within, -within, -within);
    const QPointF middle = line.center();
    for (const QPointF point : {QPointF(line.left(), middle.y()), QPointF(line.right(), middle.y()),
                                QPointF(middle.x(), line.top()), QPointF(middle.x(), line.bottom())}) {
      const QPoint pixel = (point * with.devicePixelRatio()).toPoint();
      if (!with.rect().contains(pixel)) continue;
      EXPECT_NE(with.pixelColor(pixel), without.pixelColor(pixel))
          << nameOf(*ring.parentItem()) << ": not to be seen at " << point.x() << ", " << point.y();
    }
  }

  static bool isText(const QQuickItem& item) {
    return item.inherits("QQuickText") || item.inherits("QQuickTextInput") ||
           item.inherits("vantle::TabularText");
  }

  // What is drawn as a surface of its own: a button, a field, a switch.
  static bool isSurface(const QQuickItem& item) {
    return item.inherits("vantle::RoundedBox") || item.inherits("QQuickRectangle");
  }

  static void checkNeighbours(const QQuickItem& item, const QQuickItem& owner, const QQuickItem& ring) {
    if (!item.isVisible() || &item == &ring) return;
    const QRectF around = sceneRect(ring);
    const bool isOwn = &item == &owner || owner.isAncestorOf(&item);
    const QRectF shown = shownPart(item, isText(item) ? textRect(item) : sceneRect(item));
    if (isText(item) && !item.property("text").toString().isEmpty()) {
      const qreal edge = ring.property("edgeWidth").toReal();
      const QRectF room = around.adjusted(edge, edge, -edge, -edge);
      EXPECT_TRUE(isOwn ? isWithin(shown, room) : !overlap(shown, around))
          << nameOf(owner) << ": on the text \"" << item.property("text").toString().toStdString() << '"';
    } else if (!isOwn && isSurface(item) && !isWithin(around, shown)) {
      EXPECT_FALSE(overlap(shown, around))
          << nameOf(owner) << ": on a part of " << nameOf(*item.parentItem());
    }
    for (const QQuickItem* child : item.childItems()) checkNeighbours(*child, owner, ring);
  }

  QQuickWindow& m_window;
  const QQuickItem& m_place;
};

} // namespace vantle
