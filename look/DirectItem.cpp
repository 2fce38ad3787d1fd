// SPDX-License-Identifier: MIT
#include "look/DirectItem.h"

#include <QPainter>
#include <QQuickWindow>
#include <QSGRenderNode>
#include <QSGRendererInterface>

namespace vantle {
namespace {

class DirectNode final : public QSGRenderNode {
 public:
  explicit DirectNode(DirectItem& item) : m_item(item) {}

  void setBounds(const QRectF& bounds) { m_bounds = bounds; }

  QRectF rect() const override { return m_bounds; }
  RenderingFlags flags() const override { return BoundedRectRendering; }
  StateFlags changedStates() const override { return {}; }

  void render(const RenderState* state) override {
    QQuickWindow* window = m_item.window();
    auto* painter = static_cast<QPainter*>(
        window->rendererInterface()->getResource(window, QSGRendererInterface::PainterResource));
    if (painter == nullptr) return;
    const QRegion* clip = state->clipRegion();
    if (clip != nullptr) {
      if (clip->isEmpty()) return; // scrolled out of sight
      painter->setClipRegion(*clip, Qt::ReplaceClip);
    }
    painter->setTransform(matrix()->toTransform());
    painter->setOpacity(inheritedOpacity());
    painter->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    m_item.paint(*painter, m_bounds);
  }

 private:
  DirectItem& m_item;
  QRectF m_bounds;
};

} // namespace

DirectItem::DirectItem(QQuickItem* parent) : QQuickItem(parent) { setFlag(ItemHasContents); }

QSGNode* DirectItem::updatePaintNode(QSGNode* node, UpdatePaintNodeData*) {
  auto* direct = static_cast<DirectNode*>(node);
  if (direct == nullptr) direct = new DirectNode(*this); // the scene owns it
  direct->setBounds(boundingRect());
  direct->markDirty(QSGNode::DirtyMaterial | QSGNode::DirtyGeometry);
  return direct;
}

void DirectItem::geometryChange(const QRectF& to, const QRectF& from) {
  QQuickItem::geometryChange(to, from);
  if (to.size() != from.size()) update();
}

} // namespace vantle
