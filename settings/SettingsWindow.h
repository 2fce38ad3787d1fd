// SPDX-License-Identifier: MIT
#pragma once

#include "look/LookEngine.h"
#include "settings/model/SettingsModel.h"

#include <QPoint>
#include <QQuickView>
#include <QSize>
#include <functional>
#include <optional>
#include <utility>

namespace vantle {

// How the person left the window.
struct WindowState {
  Pane pane = Pane::boost;
  QSize size{760, 560};
  std::optional<QPoint> position; // of its frame; absent until it was shown
  qreal scale = 0;                // of the screen it was on
};

// The settings window while it costs memory: models and views.
class SettingsWindow {
 public:
  // `closed` is called whenever the person closes it, which only hides it. The engine outlives the window.
  SettingsWindow(LookEngine& engine, const SettingsParts& parts, const WindowState& state,
                 std::function<void()> closed);
  SettingsWindow(const SettingsWindow&) = delete;
  SettingsWindow& operator=(const SettingsWindow&) = delete;

  void show(); // and to the front
  bool isShown() const { return m_view.isVisible(); }
  WindowState state() const;

 private:
  // Tells of its closing while its place on the screen is still known.
  class View final : public QQuickView {
   public:
    View(QQmlEngine* engine, std::function<void()> closing)
        : QQuickView(engine, nullptr), m_closing(std::move(closing)) {}

   protected:
    void closeEvent(QCloseEvent* event) override;

   private:
    std::function<void()> m_closing;
  };

  QSize sizeAsLeft() const; // in points of the scale that it was shown with
  void place(const std::optional<QPoint>& position);

  SettingsModel m_model;
  View m_view;
  std::optional<QPoint> m_position;
  qreal m_scale; // of the screen that the position is on
};

} // namespace vantle
