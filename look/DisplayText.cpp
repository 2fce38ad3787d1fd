// SPDX-License-Identifier: MIT
#include "look/DisplayText.h"

#include "base/Text.h"

#include <QCoreApplication>
#include <QDate>
#include <QDateTime>
#include <QLocale>
#include <algorithm>
#include <array>
#include <chrono>

namespace vantle {
namespace {

constexpr std::size_t longestBytes = 4 * 1024; // more than any view can show

constexpr QChar isolate(0x2068);    // first strong isolate
constexpr QChar endIsolate(0x2069); // pop directional isolate

bool isHarmful(QChar each) {
  const QChar::Category category = each.category();
  return category == QChar::Other_Format || category == QChar::Other_NotAssigned;
}

constexpr QChar nonJoiner(0x200C);
constexpr QChar joiner(0x200D);

// Families of several faces are held together by joiners, and some scripts are written with both.
bool holdsTogether(const QString& text, qsizetype at) {
  constexpr char16_t lastOfAscii = 0x7F;
  const auto isHeld = [&](qsizetype other) {
    return other >= 0 && other < text.size() && text[other].unicode() > lastOfAscii &&
           !isHarmful(text[other]) && !text[other].isSpace();
  };
  return (text[at] == joiner || text[at] == nonJoiner) && isHeld(at - 1) && isHeld(at + 1);
}

QString withoutHarm(const QString& text) {
  QString clean;
  clean.reserve(text.size());
  for (qsizetype at = 0; at < text.size(); ++at) {
    if (!isHarmful(text[at]) || holdsTogether(text, at)) clean.append(text[at]);
  }
  return clean;
}

bool isBreak(QChar each) {
  const QChar::Category category = each.category();
  return category == QChar::Other_Control || category == QChar::Separator_Line ||
         category == QChar::Separator_Paragraph;
}

// Letters of scripts that fill a place and show nothing, and the cell of no dot.
constexpr auto fillers = std::to_array<char32_t>({0x115F, 0x1160, 0x2800, 0x3164, 0xFFA0});

bool canBeSeen(char32_t each) {
  switch (QChar::category(each)) {
  case QChar::Mark_NonSpacing:
  case QChar::Mark_Enclosing:
  case QChar::Separator_Space:
  case QChar::Separator_Line:
  case QChar::Separator_Paragraph:
  case QChar::Other_Control:
  case QChar::Other_Format:
  case QChar::Other_NotAssigned:
    return false;
  default:
    return std::find(fillers.begin(), fillers.end(), each) == fillers.end();
  }
}

bool canBeSeen(const QString& text) {
  const std::u32string all = text.toStdU32String();
  return std::any_of(all.begin(), all.end(), [](char32_t each) { return canBeSeen(each); });
}

QString namelessText() { return QStringLiteral("\u201C\u201D"); }

bool runsRightToLeft(const QString& text) {
  return std::any_of(text.begin(), text.end(), [](QChar each) {
    return each.direction() == QChar::DirR || each.direction() == QChar::DirAL;
  });
}

} // namespace

QString displayText(const std::string& utf8, qsizetype longest) {
  const auto bytes = static_cast<qsizetype>(std::min(utf8.size(), longestBytes));
  QString text = withoutHarm(QString::fromUtf8(utf8.data(), bytes));
  std::replace_if(text.begin(), text.end(), isBreak, QChar(u' '));
  text = text.simplified();
  if (!canBeSeen(text)) return {};
  if (text.size() > longest) {
    text.truncate(longest - 1);
    if (text.back().isHighSurrogate()) text.chop(1);
    text.append(QChar(0x2026));
  }
  return runsRightToLeft(text) ? isolate + text + endIsolate : text;
}

QString displayText(const std::string& utf8, const std::string& otherwise) {
  for (const std::string* name : {&utf8, &otherwise}) {
    if (const QString text = displayText(*name); !text.isEmpty()) return text;
  }
  return namelessText();
}

QString shownName(const AppRef& app, qsizetype longest) {
  const std::string name = app ? app->localizedName().value_or(std::string()) : std::string();
  const QString shown = displayText(name, longest);
  if (name.empty() || !shown.isEmpty()) return shown;
  const QString program = displayText(fileNameOf(app->executablePath().value_or(std::string())), longest);
  return program.isEmpty() ? namelessText() : program;
}

QString pauseText(const std::optional<Pause>& pause, const QDate& today) {
  if (!pause) return {};
  const QDateTime end = QDateTime::fromSecsSinceEpoch(std::chrono::system_clock::to_time_t(pause->end));
  const QString hour = end.toString(QStringLiteral("HH:mm"));
  const QString day = QLocale().toString(end.date(), QStringLiteral("ddd d MMM"));
  return QCoreApplication::translate("Pause", "Paused until %1")
      .arg(end.date() == today ? hour : day + QStringLiteral(", ") + hour);
}

} // namespace vantle
