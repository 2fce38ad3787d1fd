// SPDX-License-Identifier: MIT
#include "look/AppImage.h"

#include "look/AppIcons.h"
#include "look/LookEngine.h"

#include <QPainter>
#include <QQuickWindow>
#include <cmath>

namespace vantle {
namespace {
constexpr int side = 20; // points
}

AppImage::AppImage(QQuickItem* parent) : DirectItem(parent) { setImplicitSize(side, side); }

void AppImage::setSource(const QString& value) {
  if (m_source == value) return;
  m_source = value;
  load();
}

void AppImage::setIsApp(bool value) {
  if (m_isApp == value) return;
  m_isApp = value;
  load();
}

void AppImage::load() {
  const qreal scale = window() != nullptr ? window()->effectiveDevicePixelRatio() : 1.0;
  const int pixels = static_cast<int>(std::ceil(std::max(implicitWidth(), width()) * scale));
  const auto* engine = static_cast<LookEngine*>(qmlEngine(this));
  m_image = appIcon(engine->icons(), m_source, pixels);
  if (m_image.isNull() && m_isApp) m_image = appIcon(engine->icons(), engine->icons().genericName(), pixels);
  update();
  emit sourceChanged();
}

void AppImage::itemChange(ItemChange change, const ItemChangeData& data) {
  const bool otherScale =
      change == ItemDevicePixelRatioHasChanged || (change == ItemSceneChange && data.window != nullptr);
  if (otherScale && (m_isApp || !m_source.isEmpty())) load();
  DirectItem::itemChange(change, data);
}

void AppImage::paint(QPainter& painter, const QRectF& bounds) {
  if (!m_image.isNull()) painter.drawImage(bounds, m_image);
}

} // namespace vantle
