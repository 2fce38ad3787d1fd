// SPDX-License-Identifier: MIT
#include "desktop/linux/tray/IconTip.h"

#include "desktop/linux/tray/NativeCoordinates.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <algorithm>

namespace vantle {
namespace {

constexpr int textSize = 12; // points of the toolkit's, as all of these
constexpr int sideRoom = 8;
constexpr int room = 5;
constexpr int gap = 4;    // to the icon
constexpr int most = 400; // of its width

QImage pictureOf(const QString& text, qreal ratio) {
  QFont font = QGuiApplication::font();
  font.setPixelSize(qRound(textSize * ratio));
  const QFontMetrics metrics(font);
  const int side = qRound(sideRoom * ratio);
  const QString shown = metrics.elidedText(text, Qt::ElideRight, qRound(most * ratio) - 2 * side);
  QImage image(metrics.horizontalAdvance(shown) + 2 * side, metrics.height() + 2 * qRound(room * ratio),
               QImage::Format_RGB32);
  const QPalette palette = QGuiApplication::palette();
  image.fill(palette.color(QPalette::ToolTipBase));
  QPainter painter(&image);
  painter.setFont(font);
  painter.setPen(palette.color(QPalette::ToolTipText));
  painter.drawText(image.rect(), Qt::AlignCenter, shown);
  painter.setOpacity(0.4);
  painter.drawRect(image.rect().adjusted(0, 0, -1, -1));
  return image;
}

} // namespace

void IconTip::show(const QRect& icon, const QString& text) {
  hide();
  // No other depth is told in the pixels of the picture.
  if (m_server.raw() == nullptr || text.isEmpty() || m_server.screen().root_depth != 24) return;
  const NativeScreen screen = nativeScreenAt(icon.center());
  m_icon = icon;
  m_text = text;
  m_picture = pictureOf(text, screen.ratio);
  const QSize size = m_picture.size();
  const int distance = qRound(gap * screen.ratio);
  const QRect& whole = screen.geometry;
  const bool isBelow = icon.center().y() < whole.center().y();
  const int y = isBelow ? icon.y() + icon.height() + distance : icon.y() - distance - size.height();
  const int x = std::clamp(icon.center().x() - size.width() / 2, whole.left(),
                           std::max(whole.left(), whole.left() + whole.width() - size.width()));
  m_window = xcb_generate_id(m_server.raw());
  const std::uint32_t values[] = {1 /* no window manager's */, XCB_EVENT_MASK_EXPOSURE};
  xcb_create_window(m_server.raw(), XCB_COPY_FROM_PARENT, m_window, m_server.screen().root,
                    static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                    static_cast<std::uint16_t>(size.width()), static_cast<std::uint16_t>(size.height()), 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                    XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
  const QByteArray name = text.toLatin1(); // for those who look, as that property has it
  xcb_change_property(m_server.raw(), XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                      static_cast<std::uint32_t>(name.size()), name.constData());
  xcb_map_window(m_server.raw(), m_window);
  m_server.flush();
}

void IconTip::change(const QString& text) {
  if (m_window != XCB_NONE && text != m_text) show(QRect(m_icon), text);
}

// A request holds 64 KB, which is more than one of these has at the usual scales: in pieces of some rows.
void IconTip::draw() {
  if (m_window == XCB_NONE || m_server.raw() == nullptr) return;
  const xcb_gcontext_t context = xcb_generate_id(m_server.raw());
  xcb_create_gc(m_server.raw(), context, m_window, 0, nullptr);
  const int rows = std::max(1, static_cast<int>(60'000 / m_picture.bytesPerLine()));
  for (int y = 0; y < m_picture.height(); y += rows) {
    const int count = std::min(rows, m_picture.height() - y);
    xcb_put_image(m_server.raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, context,
                  static_cast<std::uint16_t>(m_picture.width()), static_cast<std::uint16_t>(count), 0,
                  static_cast<std::int16_t>(y), 0, m_server.screen().root_depth,
                  static_cast<std::uint32_t>(m_picture.bytesPerLine() * count), m_picture.constScanLine(y));
  }
  xcb_free_gc(m_server.raw(), context);
  m_server.flush();
}

void IconTip::hide() {
  if (m_window == XCB_NONE) return;
  if (m_server.raw() != nullptr) {
    xcb_destroy_window(m_server.raw(), m_window);
    m_server.flush();
  }
  m_window = XCB_NONE;
  m_picture = {};
}

} // namespace vantle
