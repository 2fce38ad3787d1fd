// SPDX-License-Identifier: MIT
#include "look/TabularText.h"

#include <QFont>
#include <QGuiApplication>
#include <QPainter>
#include <QTextLayout>
#include <algorithm>
#include <utility>

namespace vantle {
namespace {

bool isDigit(QChar each) { return each >= QChar(u'0') && each <= QChar(u'9'); }

// Laid out as the toolkit's own texts are, so that both look alike side by side.
class Piece {
 public:
  Piece(const QString& text, const QFont& font) : m_layout(text, font) {
    QTextOption option;
    option.setUseDesignMetrics(true);
    option.setWrapMode(QTextOption::NoWrap);
    m_layout.setTextOption(option);
    m_layout.beginLayout();
    m_line = m_layout.createLine();
    m_layout.endLayout();
  }

  qreal width() const { return m_line.naturalTextWidth(); }
  qreal height() const { return m_line.height(); }
  void draw(QPainter& painter, qreal x, qreal y) const { m_layout.draw(&painter, {x, y}); }

 private:
  QTextLayout m_layout;
  QTextLine m_line;
};

qreal digitWidth(const QFont& font) {
  qreal widest = 0;
  for (char16_t digit = u'0'; digit <= u'9'; ++digit)
    widest = std::max(widest, Piece(QString(QChar(digit)), font).width());
  return widest;
}

// Calls with each digit by itself and everything between digits as a whole, and its width.
template <class Call> void eachPiece(const QString& text, const QFont& font, const Call& call) {
  const qreal cell = digitWidth(font);
  for (qsizetype from = 0; from < text.size();) {
    const bool digit = isDigit(text[from]);
    qsizetype to = from + 1;
    while (!digit && to < text.size() && !isDigit(text[to])) ++to;
    const Piece piece(text.mid(from, to - from), font);
    call(piece, digit ? cell : piece.width());
    from = to;
  }
}

} // namespace

TabularText::TabularText(QQuickItem* parent) : DirectItem(parent) { measure(); }

QFont TabularText::font() const {
  QFont font = QGuiApplication::font();
  font.setPixelSize(m_pixelSize);
  return font;
}

void TabularText::setText(const QString& value) {
  if (m_text == value) return;
  m_text = value;
  measure();
  emit textChanged();
}

void TabularText::setPixelSize(int value) {
  if (m_pixelSize == value || value <= 0) return;
  m_pixelSize = value;
  measure();
  emit pixelSizeChanged();
}

void TabularText::measure() {
  qreal width = 0;
  eachPiece(m_text, font(), [&width](const Piece&, qreal room) { width += room; });
  setImplicitSize(width, Piece(QStringLiteral("0"), font()).height());
  update();
}

void TabularText::paint(QPainter& painter, const QRectF& bounds) {
  painter.setPen(m_color);
  qreal x = bounds.left();
  eachPiece(m_text, font(), [&](const Piece& piece, qreal room) {
    piece.draw(painter, x + (room - piece.width()) / 2,
               bounds.top() + (bounds.height() - piece.height()) / 2);
    x += room;
  });
}

} // namespace vantle
