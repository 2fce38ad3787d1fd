// SPDX-License-Identifier: MIT
#pragma once

#include "look/LookEngine.h"
#include "panel/PanelModel.h"
#include "panel/ports/PanelSurface.h"

#include <QQuickWindow>
#include <memory>
#include <optional>

namespace vantle {

// The panel's window: no frame, over other windows, in no task bar. It goes when the person clicks elsewhere,
// when another window gets the keyboard, or on Escape.
class PanelWindow : public QQuickWindow {
  Q_OBJECT

 public:
  PanelWindow(LookEngine& views, Engine& engine, PanelSurface& surface, PanelModel::Actions actions);
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
  void leave();
  void place();
  QScreen* screenOfAnchor() const;
  static QScreen* screenOfTray();
  QRect anchorOn(const QScreen& screen) const;
  void followScreens();

  LookEngine& m_views;
  PanelSurface& m_surface;
  PanelModel m_model;
  std::unique_ptr<QQuickItem> m_view;
  std::optional<QRect> m_anchor;
  bool m_awaitsFrame = false;
};

} // namespace vantle
