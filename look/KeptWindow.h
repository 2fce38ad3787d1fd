// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"
#include "look/ports/Front.h"
#include "look/ports/Heap.h"
#include "look/ports/IconTheme.h"
#include "look/ports/PlaceWords.h"

#include <QFont>
#include <QObject>
#include <QTimer>
#include <chrono>
#include <memory>

namespace vantle {

class LookEngine;

// What every window is made with. All of it outlives the window.
struct WindowParts {
  AppSettings& settings;
  IconTheme& icons;
  Heap& heap;
  const PlaceWords& words;
  Front* front = nullptr; // null where windows come forward by themselves
};

// A window that costs memory only while it is wanted. Nothing of the view toolkit's engine exists before it
// is first opened; once closed it is kept for a while, so that it is back in a blink, and then given up with
// its engine and their memory.
class KeptWindow : public QObject {
  Q_OBJECT

 public:
  ~KeptWindow() override;
  KeptWindow(const KeptWindow&) = delete;
  KeptWindow& operator=(const KeptWindow&) = delete;

  bool eventFilter(QObject* watched, QEvent* event) override;

  bool holdsMemory() const { return m_engine != nullptr; }
  // How long a closed window is kept, in case it is wanted again.
  void setKeepTime(std::chrono::milliseconds time) { m_release.setInterval(time); }

 signals:
  void discarded(); // the window and its engine are gone and their memory is given back

 protected:
  KeptWindow(const WindowParts& parts, std::chrono::milliseconds keepTime);

  void keep();         // it is about to be shown, or brought forward: makes it unless it is there
  void releaseLater(); // it was closed

  // The window, drawn by that engine, and its end. The engine outlives the window.
  virtual void make(LookEngine& engine) = 0;
  virtual void destroy() = 0;
  // Letters or pixels have another size now: what is shown is drawn anew.
  virtual void renew(LookEngine& engine) = 0;

 private:
  void release();
  void followScreen();
  void checkDrawing();

  WindowParts m_parts;
  std::unique_ptr<LookEngine> m_engine;
  QTimer m_release;
  QTimer m_check; // runs from a sign that the desktop draws otherwise until that is looked into
  QFont m_font;   // with which the window was made, as the scale
  qreal m_scale = 1;
};

} // namespace vantle
