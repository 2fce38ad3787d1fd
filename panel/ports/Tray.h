// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>
#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace vantle {

// What an icon in the tray shows at one moment.
struct TrayFace {
  // Square, `pixels` on a side, to be seen on a dark or on a light bar.
  std::function<QImage(int pixels, bool onDark)> picture;
  QString state; // in words
};

// What a person can do with an icon. Called on the main loop, never within a call of the tray's; once,
// however often it was asked for until then.
struct TrayActions {
  struct Entry {
    QString label; // empty for a line between entries
    // Where the pointer was then, in device-independent screen coordinates; absent where nobody is told.
    std::function<void(std::optional<QPoint> pointer)> chosen;
  };

  // Where the icon is, in device-independent screen coordinates; absent when the tray does not know.
  std::function<void(std::optional<QRect>)> clicked;
  std::vector<Entry> menu;
};

// One icon in the tray, which leaves it when it is destroyed. With no tray at all nobody sees it; it follows
// a tray that starts later, ends or is replaced.
class TrayIcon {
 public:
  virtual ~TrayIcon() = default;

  virtual void show(const TrayFace& face) = 0;
};

// The desktop's tray, also where it is none.
class Tray {
 public:
  virtual ~Tray() = default;

  // The tray outlives the icon. It says by itself whether its bar is dark.
  virtual std::unique_ptr<TrayIcon> add(TrayActions actions) = 0;
};

} // namespace vantle
