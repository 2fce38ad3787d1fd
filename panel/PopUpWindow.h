// SPDX-License-Identifier: MIT
#pragma once

#include "look/LookEngine.h"
#include "panel/ports/PanelSurface.h"

#include <QQuickWindow>
#include <QString>
#include <QVariantMap>
#include <memory>

namespace vantle {

// A window that opens beside the tray's icon: no frame, over other windows, in no task bar. It goes when the
// person clicks elsewhere, when another window gets the keyboard, or on Escape.
class PopUpWindow : public QQuickWindow {
  Q_OBJECT

 public:
  virtual void dismiss() = 0; // hides it

 protected:
  explicit PopUpWindow(PanelSurface& surface); // which outlives it

  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

  PanelSurface& surface() const { return m_surface; }
  bool isTranslucent() const { return m_isTranslucent; } // as the desktop was when the window was made
  // The content, out of this room's view of that file.
  std::unique_ptr<QQuickItem> makeView(LookEngine& views, const QString& file, const QVariantMap& properties);

 private:
  PanelSurface& m_surface;
  bool m_isTranslucent;
};

} // namespace vantle
