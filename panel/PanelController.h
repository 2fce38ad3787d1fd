// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"
#include "engine/Engine.h"

#include <QElapsedTimer>
#include <QObject>
#include <QRect>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>

namespace vantle {

class PanelWindow;

// Opens and closes the panel. Nothing of the view toolkit's engine exists before the first opening; a closed
// panel is kept for a moment, so that it is back in a blink, and then given up with its memory.
class PanelController : public QObject {
  Q_OBJECT

 public:
  PanelController(Engine& engine, AppSettings& settings, std::function<void()> openSettings,
                  std::function<void()> quit);
  ~PanelController() override;

  // Beside the anchor, in device-independent screen coordinates; without one in the corner of the screen
  // where trays usually are. Opening an open panel moves it.
  void show(std::optional<QRect> anchor = std::nullopt);
  void toggle(std::optional<QRect> anchor = std::nullopt);
  void close();
  bool isOpen() const;

  void openSettings(); // closes the panel first
  void quit();

  // Null while there is none.
  PanelWindow* window() const { return m_window.get(); }
  // How long a closed panel is kept, in milliseconds; 10 s unless a test says otherwise.
  void setKeepTime(int milliseconds) { m_discard.setInterval(milliseconds); }

 signals:
  void opened();
  void closed();
  void discarded(); // the window and its engine are gone and their memory is given back

 private:
  void ensureWindow();
  void discard();

  Engine& m_engine;
  AppSettings& m_settings;
  std::function<void()> m_openSettings;
  std::function<void()> m_quit;
  std::unique_ptr<PanelWindow> m_window;
  QTimer m_discard;
  QElapsedTimer m_sinceClosed;
};

// Answers org.freedesktop.Application on the bus, so that starting Vantle again, from an app menu or with no
// tray at all, opens the panel of the copy that runs; as long as the panel's controller lives, under this
// name, on every bus that takes the place of one that ended. Actions: "settings" and "quit".
void exportApplication(PanelController& panel, const QString& busName);

} // namespace vantle
