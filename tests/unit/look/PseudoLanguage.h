// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QQuickItem>
#include <QStringList>
#include <QTranslator>
#include <algorithm>
#include <gtest/gtest.h>

namespace vantle {

// A language that nobody speaks, for as long as it lives: every text is a third longer and between brackets,
// so that one that is not translated, or has no room, is seen.
class PseudoLanguage final : public QTranslator {
 public:
  PseudoLanguage() { QCoreApplication::installTranslator(this); }
  ~PseudoLanguage() override { QCoreApplication::removeTranslator(this); }
  PseudoLanguage(const PseudoLanguage&) = delete;
  PseudoLanguage& operator=(const PseudoLanguage&) = delete;

  bool isEmpty() const override { return false; }
  QString translate(const char*, const char* source, const char*, int) const override {
    QString text = QString::fromUtf8(source);
    const qsizetype more = text.size() / 3;
    for (qsizetype at = 0; at < more; ++at) text.append(at % 6 == 5 ? u' ' : u'o');
    return u'[' + text + u']';
  }

  // Every text that is seen below the item is of this language or one of the others, which are names and
  // figures, and is shown as a whole.
  static void expectEverywhere(const QQuickItem& item, const QStringList& others) {
    if (!item.isVisible()) return;
    const QString text = item.property("text").toString();
    const bool isShown = item.inherits("QQuickText") || item.inherits("vantle::TabularText");
    if (isShown && !text.isEmpty()) expectShown(item, text, others);
    for (const QQuickItem* child : item.childItems()) expectEverywhere(*child, others);
  }

 private:
  static void expectShown(const QQuickItem& item, const QString& text, const QStringList& others) {
    const bool isOther =
        others.contains(text) || std::none_of(text.begin(), text.end(), [](QChar c) { return c.isLetter(); });
    EXPECT_TRUE(isOther || text.contains(u'[')) << "not translated: " << text.toStdString();
    EXPECT_FALSE(item.property("truncated").toBool()) << "clipped: " << text.toStdString();
    const qreal room = item.parentItem()->mapToScene(QPointF(item.parentItem()->width(), 0)).x();
    EXPECT_LE(item.mapToScene(QPointF(item.property("contentWidth").toReal(), 0)).x(), room + 1)
        << "too wide: " << text.toStdString();
  }
};

} // namespace vantle
