// SPDX-License-Identifier: MIT
#include "look/DisplayText.h"

#include <QCoreApplication>
#include <QDateTime>
#include <algorithm>
#include <chrono>

namespace vantle {
namespace {

constexpr qsizetype longest = 300;             // characters; more than any view can show
constexpr std::size_t longestBytes = 4 * 1024; // enough to find them in

constexpr QChar isolate(0x2068);    // first strong isolate
constexpr QChar endIsolate(0x2069); // pop directional isolate

bool isHarmful(QChar each) {
  const QChar::Category category = each.category();
  return category == QChar::Other_Format || category == QChar::Other_NotAssigned;
}

bool isBreak(QChar each) {
  const QChar::Category category = each.category();
  return category == QChar::Other_Control || category == QChar::Separator_Line ||
         category == QChar::Separator_Paragraph;
}

bool runsRightToLeft(const QString& text) {
  return std::any_of(text.begin(), text.end(), [](QChar each) {
    return each.direction() == QChar::DirR || each.direction() == QChar::DirAL;
  });
}

} // namespace

QString displayText(const std::string& utf8) {
  const auto bytes = static_cast<qsizetype>(std::min(utf8.size(), longestBytes));
  QString text = QString::fromUtf8(utf8.data(), bytes);
  text.removeIf(isHarmful);
  std::replace_if(text.begin(), text.end(), isBreak, QChar(u' '));
  text = text.simplified();
  if (text.size() > longest) {
    text.truncate(longest - 1);
    if (text.back().isHighSurrogate()) text.chop(1);
    text.append(QChar(0x2026));
  }
  return runsRightToLeft(text) ? isolate + text + endIsolate : text;
}

QString shownName(const AppRef& app) {
  return app ? displayText(app->localizedName().value_or(std::string())) : QString();
}

QString pauseText(const std::optional<Pause>& pause) {
  if (!pause) return {};
  const QDateTime end = QDateTime::fromSecsSinceEpoch(std::chrono::system_clock::to_time_t(pause->end));
  return QCoreApplication::translate("Pause", "Paused until %1").arg(end.toString(QStringLiteral("HH:mm")));
}

} // namespace vantle
