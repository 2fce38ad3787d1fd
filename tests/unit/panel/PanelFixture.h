// SPDX-License-Identifier: MIT
#pragma once

#include "engine/Engine.h"
#include "look/ports/MacWords.h"
#include "panel/PanelController.h"
#include "panel/PanelWindow.h"
#include "platform/simulated/SampleDesktop.h"
#include "tests/unit/look/PlainDesktop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QQuickItem>
#include <QTimer>
#include <functional>
#include <gtest/gtest.h>

namespace vantle {

// Windows stand where they are put, and nothing tells of clicks elsewhere.
class PlainSurface final : public PanelSurface {
 public:
  bool isTranslucent() override { return true; }
  QSize roomOn(QScreen& screen) override { return screen.availableSize(); }
  void place(QWindow& window, QScreen& screen, const QRect& /*anchor*/, const QRect& place) override {
    window.setScreen(&screen);
    window.setGeometry(place);
  }
  void show(QWindow& window) override { window.show(); }
  void hide(QWindow& window) override { window.hide(); }
};

// A simulated desktop with an engine and a panel on it.
class PanelFixture : public ::testing::Test {
 protected:
  explicit PanelFixture(const PlaceWords& placeWords = macWords) : words(placeWords) {}

  const PlaceWords& words;
  SimulatedMachine machine;
  AppSettings settings{machine.defaults};
  Engine engine{machine.ports(), settings};
  int settingsOpened = 0;
  int quits = 0;
  PlainIcons icons;
  CountedHeap heap;
  PlainSurface surface;
  PanelController panel{
      engine, {settings, icons, heap, words}, surface, [this] { ++settingsOpened; }, [this] { ++quits; }};

  static bool until(const std::function<bool()>& holds) {
    const QDeadlineTimer guard(20'000);
    QTimer alarm; // ends the waiting for events when there are none
    alarm.start(1'000);
    while (!holds() && !guard.hasExpired()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return holds();
  }

  void open() {
    bool shown = false;
    const auto connection =
        QObject::connect(&panel, &PanelController::opened, &panel, [&shown] { shown = true; });
    panel.show();
    EXPECT_TRUE(until([&shown] { return shown; }));
    QObject::disconnect(connection);
  }

  // All texts that can be seen, from top to bottom in the order of the view.
  QStringList texts() const {
    QStringList found;
    if (panel.window() != nullptr) collect(*panel.window()->view(), found);
    return found;
  }

  QQuickItem* itemNamed(const QString& label) const { return find(*panel.window()->view(), label); }

  QQuickItem* textItem(const QString& text) const { return findText(*panel.window()->contentItem(), text); }

  void press(const QString& label) const {
    QQuickItem* item = itemNamed(label);
    ASSERT_NE(item, nullptr) << label.toStdString();
    ASSERT_TRUE(QMetaObject::invokeMethod(item, "trigger"));
  }

 private:
  static bool holdsText(const QQuickItem& item) {
    return item.inherits("QQuickText") || item.inherits("vantle::TabularText");
  }

  static void collect(const QQuickItem& item, QStringList& found) {
    if (!item.isVisible()) return;
    const QString text = item.property("text").toString();
    if (holdsText(item) && !text.isEmpty()) found.append(text);
    for (const QQuickItem* child : item.childItems()) collect(*child, found);
  }

  static QQuickItem* findText(QQuickItem& item, const QString& text) {
    if (item.isVisible() && holdsText(item) && item.property("text").toString() == text) return &item;
    for (QQuickItem* child : item.childItems()) {
      if (QQuickItem* found = findText(*child, text)) return found;
    }
    return nullptr;
  }

  static QQuickItem* find(QQuickItem& item, const QString& label) {
    if (item.isVisible() && item.property("label").toString() == label) return &item;
    for (QQuickItem* child : item.childItems()) {
      if (QQuickItem* found = find(*child, label)) return found;
    }
    return nullptr;
  }
};

} // namespace vantle
