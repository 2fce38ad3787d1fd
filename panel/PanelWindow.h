// SPDX-License-Identifier: MIT
#pragma once

#include "look/LookEngine.h"
#include "panel/PanelModel.h"

#include <QQuickWindow>
#include <QTimer>
#include <memory>
#include <optional>

namespace vantle {

// The panel's window: no frame, over other windows, in no task bar. It goes when the person clicks elsewhere,
// when another window gets the keyboard, or on Escape.
class PanelWindow : public QQuickWindow {
  Q_OBJECT

 public:
  PanelWindow(Engine& engine, AppSettings& settings, PanelModel::Actions actions);
  ~PanelWindow() override;

  void open(std::optional<QRect> anchor);
  void dismiss(); // hides it

  PanelModel& model() { return m_model; }
  QQuickItem* view() const { return m_view.get(); }

 signals:
  void shown(); // its first frame since it was opened is on the screen
  void dismissed();

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void makeView();
  void place();
  QScreen* screenOfAnchor() const;
  QRect anchorOn(const QScreen& screen) const;
  void followScreens();
  void grabPointer();

  LookEngine m_engine;
  PanelModel m_model;
  std::unique_ptr<QQuickItem> m_view;
  std::optional<QRect> m_anchor;
  QTimer m_grabRetry;
  int m_grabAttempts = 0;
  bool m_awaitsFrame = false;
};

} // namespace vantle
