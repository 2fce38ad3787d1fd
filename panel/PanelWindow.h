// SPDX-License-Identifier: MIT
#pragma once

#include "look/LookEngine.h"
#include "panel/PanelModel.h"
#include "panel/PopUpWindow.h"

#include <memory>
#include <optional>

namespace vantle {

// The panel's window.
class PanelWindow : public PopUpWindow {
  Q_OBJECT

 public:
  PanelWindow(LookEngine& views, Engine& engine, PanelSurface& surface, PanelModel::Actions actions);
  ~PanelWindow() override;

  void open(std::optional<QRect> anchor);
  void dismiss() override;

  PanelModel& model() { return m_model; }
  QQuickItem* view() const { return m_view.get(); }

 signals:
  void shown(); // its first frame since it was opened is on the screen
  void dismissed();

 protected:
  bool event(QEvent* event) override;

 private:
  void forgetPlace();
  void leave();
  void place();
  QScreen* screenOfAnchor() const;
  static QScreen* screenOfTray();
  QRect anchorOn(const QScreen& screen) const;
  void followScreens();

  PanelModel m_model;
  std::unique_ptr<QQuickItem> m_view;
  std::optional<QRect> m_anchor;
  bool m_awaitsFrame = false;
};

} // namespace vantle
