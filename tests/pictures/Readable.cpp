// SPDX-License-Identifier: MIT
#include "tests/pictures/Readable.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QQuickWindow>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace vantle::pictures {
namespace {

constexpr double leastContrast = 4.5;
constexpr double leastContrastOfCards = 1.2;

double linear(double component) {
  return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other) {
  const double a = luminance(one);
  const double b = luminance(other);
  return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

// What most of the area's rim shows: the ground under a text.
QColor groundOf(const QImage& picture, const QRect& area) {
  QHash<QRgb, int> counts;
  QRgb most = 0;
  for (int y = area.top(); y <= area.bottom(); ++y) {
    for (int x = area.left(); x <= area.right(); ++x) {
      const bool onRim = std::min({x - area.left(), y - area.top(), area.right() - x, area.bottom() - y}) < 2;
      if (!onRim) continue;
      const QRgb pixel = picture.pixel(x, y);
      if (++counts[pixel] > counts.value(most)) most = pixel;
    }
  }
  return QColor::fromRgb(most);
}

QColor blended(const QColor& color, const QColor& ground) {
  const auto mix = [a = color.alphaF()](float over, float under) { return over * a + under * (1 - a); };
  return QColor::fromRgbF(mix(color.redF(), ground.redF()), mix(color.greenF(), ground.greenF()),
                          mix(color.blueF(), ground.blueF()));
}

// The part of the picture that shows that part of the item; the rest of it is scrolled away.
QRect shownArea(const QQuickItem& item, const QRectF& part, const QImage& picture) {
  const qreal scale = picture.width() / item.window()->contentItem()->width();
  QRectF scene = item.mapRectToScene(part);
  for (const QQuickItem* each = &item; each != nullptr; each = each->parentItem()) {
    if (each->clip()) scene &= each->mapRectToScene(each->clipRect());
  }
  return QRectF(scene.topLeft() * scale, scene.size() * scale).toAlignedRect() & picture.rect();
}

// A text is in the middle of an item that is higher than it.
QRect areaOfText(const QQuickItem& item, const QImage& picture) {
  const QRectF all = item.boundingRect();
  const qreal spare = std::max(0.0, all.height() - item.implicitHeight());
  return shownArea(item, all.adjusted(-2, spare / 2 - 2, 2, 2 - spare / 2), picture);
}

// On both sides of the card's left edge, where nothing else is; as much as to 1. Infinite for one that is not
// in the picture.
double contrastOfCard(const QQuickItem& card, const QImage& picture) {
  const qreal middle = card.height() / 2;
  const QRect inside = shownArea(card, {2.5, middle, 1, 1}, picture);
  const QRect outside = shownArea(card, {-4, middle, 1, 1}, picture);
  if (inside.isEmpty() || outside.isEmpty()) return std::numeric_limits<double>::infinity();
  return contrast(picture.pixelColor(inside.topLeft()), picture.pixelColor(outside.topLeft()));
}

// Prominent capsules and the sidebar's chosen row are white on the accent as it is.
bool isWhiteByDesign(const QQuickItem& item, const QColor& color) {
  const char* owner = item.parentItem() != nullptr ? item.parentItem()->metaObject()->className() : "";
  const bool designed =
      std::strncmp(owner, "CapsuleButton", 13) == 0 || std::strncmp(owner, "SidebarRow", 10) == 0;
  return designed && color == QColor(Qt::white);
}

void check(const QQuickItem& item, const QImage& picture, Findings& findings) {
  if (!item.isVisible() || !item.isEnabled()) return;
  const bool holdsText =
      item.inherits("QQuickText") || item.inherits("QQuickTextInput") || item.inherits("vantle::TabularText");
  const QString text = holdsText ? item.property("text").toString() : QString();
  const QRect area = text.isEmpty() ? QRect() : areaOfText(item, picture);
  if (!area.isEmpty()) {
    const auto color = item.property("color").value<QColor>();
    const QColor ground = groundOf(picture, area);
    const double found = contrast(blended(color, ground), ground);
    ++findings.texts;
    if (isWhiteByDesign(item, color)) {
      findings.leastOnAccent = std::min(findings.leastOnAccent, found);
    } else if (found < leastContrast) {
      ++findings.unreadable;
      std::printf("  hard to read (%.2f): %s\n", found, qPrintable(text));
    }
  }
  const bool isCard = std::strncmp(item.metaObject()->className(), "Card_", 5) == 0;
  const double ofCard = isCard ? contrastOfCard(item, picture) : leastContrastOfCards;
  if (ofCard < leastContrastOfCards) {
    ++findings.faintCards;
    std::printf("  a card hardly stands out (%.2f)\n", ofCard);
  }
  for (const QQuickItem* child : item.childItems()) check(*child, picture, findings);
}

} // namespace

Findings checkTexts(const QQuickItem& view, const QImage& picture) {
  Findings findings;
  check(view, picture, findings);
  return findings;
}

bool waitFor(const std::function<bool()>& holds) {
  const QDeadlineTimer guard(30'000);
  QTimer alarm; // ends the waiting for events when there are none
  alarm.start(1'000);
  while (!holds() && !guard.hasExpired()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  return holds();
}

bool keep(const QQuickItem& view, const QImage& picture, const QString& path, int leastTexts) {
  if (!picture.save(path)) return false;
  const Findings findings = checkTexts(view, picture);
  const bool good = findings.texts >= leastTexts && findings.unreadable == 0 && findings.faintCards == 0;
  std::printf("%s %s: %d texts", good ? "ok" : "NOT OK", qPrintable(QFileInfo(path).fileName()),
              findings.texts);
  if (findings.leastOnAccent < 21) std::printf(", white on the accent %.2f", findings.leastOnAccent);
  std::printf("\n");
  return good;
}

int drawAll(const QString& folder, const char* window, const std::vector<Subject>& states, const Draw& draw) {
  const QDir pictures(folder);
  if (!pictures.mkpath(".")) return 1;
  const QString scale = qEnvironmentVariable("QT_SCALE_FACTOR", "1");
  bool good = true;
  for (const AppearanceMode mode : {AppearanceMode::light, AppearanceMode::dark}) {
    const std::string look(rawValue(mode));
    const auto pathOf = [&](const std::string& what) {
      return pictures.filePath(QStringLiteral("%1-%2-%3-%4.png")
                                   .arg(QString::fromUtf8(window), QString::fromStdString(what),
                                        QString::fromStdString(look), scale));
    };
    for (std::size_t at = 0; at < states.size(); ++at) {
      good = draw(at, mode, AccentTheme::blue, pathOf(states[at].name)) && good;
    }
    if (scale != "1") continue;
    for (const AccentTheme accent : allAccentThemes) {
      for (std::size_t at = 0; at < states.size(); ++at) {
        if (!states[at].inEveryAccent) continue;
        const std::string name = states[at].name + "-" + std::string(rawValue(accent));
        good = draw(at, mode, accent, pathOf(name)) && good;
      }
    }
  }
  return good ? 0 : 1;
}

} // namespace vantle::pictures
