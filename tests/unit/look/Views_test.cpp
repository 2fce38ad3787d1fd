// SPDX-License-Identifier: MIT
#include "look/Appearance.h"
#include "look/Colors.h"
#include "look/LookEngine.h"
#include "tests/unit/look/MemoryDefaults.h"
#include "tests/unit/look/PlainDesktop.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickWindow>
#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

namespace vantle {
namespace {

class Views : public ::testing::Test {
 protected:
  std::unique_ptr<QObject> make(const QByteArray& source) {
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nimport Vantle.Look\n" + source, QUrl());
    std::unique_ptr<QObject> object(component.create());
    EXPECT_TRUE(object) << component.errorString().toStdString();
    return object;
  }

  MemoryDefaults defaults;
  AppSettings settings{defaults};
  PlainScheme scheme;
  PlainIcons icons;
  LookEngine engine{settings, icons, linuxWords};
};

TEST_F(Views, EachOneCanBeMade) {
  for (const char* view :
       {"Words {}", "Card { Words {} }", "Divider {}", "ThemeTint { light: 0.1; dark: 0.2 }", "Pressable {}",
        "CapsuleButton { text: 'a' }", "PlainButton { text: 'a' }", "SymbolButton { symbol: 'bolt' }",
        "Toggle { text: 'a' }", "ScrollArea {}", "RoundedBox {}", "Symbol { name: 'bolt.fill' }",
        "AppImage { source: 'nothing-of-this-name' }"})
    EXPECT_TRUE(make(view)) << view;
}

// Views in a window, and a pointer over them.
class UnderThePointer : public Views {
 protected:
  QQuickItem& show(const QByteArray& source) {
    m_shown = make(source);
    auto* const item = qobject_cast<QQuickItem*>(m_shown.get());
    item->setParentItem(m_window.contentItem());
    m_window.resize(400, 300);
    m_window.show();
    m_window.grabWindow(); // a text knows whether it is cut short once it is laid out
    return *item;
  }
  // In two steps: what is under the pointer is told of where it was before.
  void moveTo(const QPointF& place) {
    for (const QPointF& step : {place - QPointF(1, 1), place}) {
      QMouseEvent move(QEvent::MouseMove, step, m_window.mapToGlobal(step), Qt::NoButton, Qt::NoButton,
                       Qt::NoModifier);
      QCoreApplication::sendEvent(&m_window, &move);
      QCoreApplication::processEvents();
    }
  }
  long countOf(const QString& text) const { return count(*m_window.contentItem(), text); }
  static bool until(const std::function<bool()>& holds) {
    const QDeadlineTimer guard(20'000);
    while (!holds() && !guard.hasExpired()) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return holds();
  }

 private:
  static long count(const QQuickItem& item, const QString& text) {
    long found =
        item.isVisible() && item.inherits("QQuickText") && item.property("text").toString() == text ? 1 : 0;
    for (const QQuickItem* child : item.childItems()) found += count(*child, text);
    return found;
  }

  QQuickWindow m_window;
  std::unique_ptr<QObject> m_shown;
};

TEST_F(UnderThePointer, ANameThatIsCutShortHasItsWholeAsATip) {
  const QString name = "An app whose name is longer than its line";
  show("NameText { width: 60; height: 30; text: '" + name.toUtf8() + "' }");
  EXPECT_EQ(countOf(name), 1);
  moveTo({20, 10});
  EXPECT_TRUE(until([&] { return countOf(name) == 2; }));
  moveTo({300, 250});
  EXPECT_TRUE(until([&] { return countOf(name) == 1; }));
}

TEST_F(UnderThePointer, ANameThatHasRoomHasNone) {
  const QQuickItem& name = show("NameText { width: 300; height: 30; text: 'Short' }");
  moveTo({20, 10});
  const QList<QQuickItem*> children = name.childItems();
  for (const QQuickItem* child : children) EXPECT_FALSE(child->property("wanted").toBool());
  EXPECT_TRUE(std::any_of(children.begin(), children.end(),
                          [](const QQuickItem* child) { return child->property("wanted").isValid(); }));
}

TEST_F(UnderThePointer, CapsulesReact) {
  for (const char* kind : {"false", "true"}) {
    const QQuickItem& button =
        show(QByteArray("CapsuleButton { width: 200; text: 'a'; prominent: ") + kind + " }");
    const auto look = [&button] {
      QStringList colors;
      for (const QQuickItem* child : button.childItems()) {
        if (child->isVisible()) colors.append(child->property("color").value<QColor>().name(QColor::HexArgb));
      }
      return colors;
    };
    moveTo({300, 250});
    const QStringList before = look();
    moveTo({100, 15});
    EXPECT_TRUE(until([&] { return look() != before; })) << kind;
    moveTo({300, 250});
    EXPECT_TRUE(until([&] { return look() == before; })) << kind;
  }
}

TEST_F(Views, FollowTheAccentAndTheAppearance) {
  Appearance appearance(scheme);
  appearance.apply(AppearanceMode::light);
  const auto tint =
      make("ThemeTint { property color c: Look.accent; property bool d: Look.dark; light: 0.5; dark: 1 }");
  EXPECT_EQ(tint->property("c").value<QColor>(), accentColor(AccentTheme::blue));
  EXPECT_FALSE(tint->property("d").toBool());
  settings.accent.set(AccentTheme::teal);
  appearance.apply(AppearanceMode::dark);
  EXPECT_EQ(scheme.drawn, true);
  EXPECT_EQ(tint->property("c").value<QColor>(), accentColor(AccentTheme::teal));
  EXPECT_TRUE(tint->property("d").toBool());
  const auto* fill = tint->findChild<QQuickItem*>();
  EXPECT_EQ(fill->property("color").value<QColor>().alpha(), 255);
  appearance.apply(AppearanceMode::light);
  EXPECT_NEAR(fill->property("color").value<QColor>().alphaF(), 0.5, 0.01);
}

TEST_F(Views, FollowTheDesktopWhileThePersonWantsThat) {
  Appearance appearance(scheme);
  appearance.apply(AppearanceMode::system);
  const auto words = make("Words { property bool d: Look.dark }");
  EXPECT_FALSE(words->property("d").toBool());
  EXPECT_EQ(scheme.drawn, std::nullopt);
  scheme.become(true);
  EXPECT_TRUE(words->property("d").toBool());
  appearance.apply(AppearanceMode::light);
  EXPECT_EQ(scheme.drawn, false) << "title bars too";
  EXPECT_FALSE(words->property("d").toBool());
  scheme.become(false);
  scheme.become(true);
  EXPECT_FALSE(words->property("d").toBool());
  appearance.apply(AppearanceMode::system);
  EXPECT_TRUE(words->property("d").toBool());
  appearance.apply(AppearanceMode::light);
}

TEST_F(Views, FiguresOfEqualLengthAreEquallyWide) {
  const auto widthOf = [this](const char* text) {
    return make(QByteArray("Figures { text: '") + text + "' }")->property("implicitWidth").toReal();
  };
  EXPECT_EQ(widthOf("1.11 GB"), widthOf("8.08 GB"));
  EXPECT_EQ(widthOf("11"), 2 * widthOf("4"));
  EXPECT_GT(widthOf("111 MB"), widthOf("11 MB"));
  EXPECT_EQ(widthOf(""), 0);
}

TEST_F(Views, AButtonIsPressedByKeyboardOnlyWhenEnabled) {
  QQuickWindow window;
  const auto object = make("CapsuleButton { property int presses: 0; text: 'a'; width: 90; height: 40;"
                           " onTriggered: presses++ }");
  auto* button = qobject_cast<QQuickItem*>(object.get());
  button->setParentItem(window.contentItem());
  button->forceActiveFocus();
  for (const int key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space, Qt::Key_A}) {
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier);
    QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &down);
    QCoreApplication::sendEvent(&window, &up);
  }
  EXPECT_EQ(button->property("presses").toInt(), 3);
  button->setEnabled(false);
  QMetaObject::invokeMethod(button, "trigger");
  EXPECT_EQ(button->property("presses").toInt(), 3);
}

} // namespace
} // namespace vantle
