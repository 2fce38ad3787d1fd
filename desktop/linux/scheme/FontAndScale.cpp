// SPDX-License-Identifier: MIT
#include "desktop/linux/scheme/FontAndScale.h"

#include <QEvent>
#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QScreen>
#include <QStringList>
#include <algorithm>
#include <private/qhighdpiscaling_p.h>
#include <qpa/qplatformscreen.h>
#include <utility>

namespace vantle {
namespace {

constexpr qreal usualDots = 96; // an inch
constexpr qreal mostDots = 4 * usualDots;
// Letters here are as large as those of 10 points elsewhere; desktops come with 9 to 11.
constexpr qreal usualPoints = 10;
constexpr qreal largestUsualPoints = 11;
constexpr qreal mostPoints = 30;

// "Noto Sans Bold 24": a family, words for the style, the points.
struct FontName {
  QString family;
  qreal points = usualPoints;
};

bool isStyle(const QString& word) {
  static const QStringList styles{"Thin",       "Light",  "Regular",   "Book",     "Medium",   "Semi-Bold",
                                  "Semi-Light", "Bold",   "Heavy",     "Black",    "Italic",   "Oblique",
                                  "Roman",      "Normal", "Condensed", "SemiBold", "Demi-Bold"};
  return styles.contains(word, Qt::CaseInsensitive);
}

FontName parsed(const QString& description) {
  FontName name;
  QStringList words = description.simplified().split(u' ', Qt::SkipEmptyParts);
  if (words.isEmpty()) return name;
  bool isSize = false;
  const qreal points = words.last().toDouble(&isSize);
  if (isSize) {
    words.removeLast();
    if (points > 0) name.points = std::min(points, mostPoints);
  }
  while (words.size() > 1 && isStyle(words.last())) words.removeLast();
  name.family = words.join(u' ').remove(u',');
  return name;
}

// A person who has told the toolkit how large it is to draw has the last word.
bool isToldOtherwise() {
  return qEnvironmentVariableIsSet("QT_SCREEN_SCALE_FACTORS") || qEnvironmentVariableIsSet("QT_FONT_DPI") ||
         qEnvironmentVariable("QT_ENABLE_HIGHDPI_SCALING") == QLatin1String("0");
}

qreal toolkitsOwn(const QScreen& screen) {
  const QPlatformScreen& platform = *screen.handle();
  return platform.logicalDpi().first / platform.logicalBaseDpi().first;
}

} // namespace

TextLook textLookOf(const PublishedSettings& published) {
  TextLook look;
  if (const auto dots = published.numbers.find("Xft/DPI");
      dots != published.numbers.end() && dots->second > 0)
    look.dots = std::clamp(dots->second / 1024.0, usualDots, mostDots) / usualDots;
  if (const auto font = published.texts.find("Gtk/FontName"); font != published.texts.end()) {
    const FontName name = parsed(QString::fromStdString(font->second));
    look.family = name.family;
    if (name.points > largestUsualPoints) look.enlargement = name.points / usualPoints;
  }
  return look;
}

FontAndScale::FontAndScale(SettingsManager& manager)
    : m_manager(manager), m_observer(manager.observe([this] { follow(); })) {
  follow();
}

void FontAndScale::follow() {
  const TextLook look = textLookOf(m_manager.published());
  if (look == m_look || QGuiApplication::platformName() != QLatin1String("xcb")) return;
  const TextLook before = std::exchange(m_look, look);
  if ((look.dots != before.dots || look.enlargement != before.enlargement) && !isToldOtherwise()) useScale();
  if (look.family != before.family) useFamily();
}

void FontAndScale::useScale() const {
  for (QScreen* screen : QGuiApplication::screens())
    QHighDpiScaling::setScreenFactor(screen, m_look.dots.value_or(toolkitsOwn(*screen)) * m_look.enlargement);
  // The sign for windows to look how they are to be drawn.
  QEvent sign(QEvent::ApplicationFontChange);
  QCoreApplication::sendEvent(qApp, &sign);
}

void FontAndScale::useFamily() const {
  QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
  if (!m_look.family.isEmpty()) font.setFamily(m_look.family);
  QGuiApplication::setFont(font);
}

} // namespace vantle
