// SPDX-License-Identifier: MIT
#include "look/Appearance.h"
#include "look/Colors.h"
#include "look/LookEngine.h"
#include "tests/unit/look/MemoryDefaults.h"
#include "tests/unit/look/PlainDesktop.h"

#include <QDir>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickWindow>
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
