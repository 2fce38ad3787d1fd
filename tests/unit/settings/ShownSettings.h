// SPDX-License-Identifier: MIT
#pragma once

#include "platform/simulated/SimulatedMachine.h"
#include "settings/SettingsWindow.h"
#include "tests/unit/look/PlainDesktop.h"
#include "tests/unit/settings/ScriptedExtension.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <gtest/gtest.h>
#include <stdexcept>

namespace vantle {

// The settings window on a simulated machine, shown.
class ShownSettings : public testing::Test {
 protected:
  explicit ShownSettings(const PlaceWords& words, const WindowState& state = {})
      : views(settings, icons, words),
        window(views, {engine, settings, checker, login, catalog, extension}, state, [] {}) {
    window.show();
  }

  static QQuickView& view() {
    for (QWindow* each : QGuiApplication::topLevelWindows()) {
      if (auto* view = qobject_cast<QQuickView*>(each)) return *view;
    }
    throw std::logic_error("no window");
  }
  static SettingsModel& model() { return *view().rootObject()->property("model").value<SettingsModel*>(); }

  SimulatedMachine machine;
  AppSettings settings{machine.defaults};
  Engine engine{machine.ports(), settings};
  UpdateChecker checker{
      {.version = "1.2", .feed = {}, .vendorHost = {}, .authorities = {}}, settings, machine.clock, {}};
  SimulatedLoginItem login;
  SimulatedCatalog catalog;
  ScriptedExtension extension{ShellExtension::State::out};
  PlainIcons icons;
  LookEngine views;
  SettingsWindow window;
};

} // namespace vantle
