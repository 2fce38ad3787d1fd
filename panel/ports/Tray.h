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
  QString state;       // in words
  QString symbol = {}; // what the picture is called where a desktop has symbols of its own
};

// What a person can do with an icon, and in its menu. Called on the main loop, never within a call of the
// tray's; once, however often it was asked for until then.
struct TrayActions {
  // Where the icon is, in device-independent screen coordinates; absent when the tray does not know.
  std::function<void(std::optional<QRect>)> clicked;
  std::function<void()> middleClicked;
  // Of a tray that shows no menu by itself: beside the icon, which is there.
  std::function<void(QRect)> menuWanted;
};

// A line of the menu.
struct TrayEntry {
  QString label = {}; // empty for a line between entries
  // Where the pointer was then, in device-independent screen coordinates; absent where nobody is told. A line
  // without it can only be read.
  std::function<void(std::optional<QPoint> pointer)> chosen = {};
  std::optional<bool> isChecked = {}; // of a switch
  bool isShown = true;
};

// One icon in the tray, which leaves it when it is destroyed. With no tray at all nobody sees it; it follows
// a tray that starts later, ends or is replaced.
class TrayIcon {
 public:
  virtual ~TrayIcon() = default;

  virtual void show(const TrayFace& face) = 0;
  // Each time with the same entries in the same order: a person may have the menu open, and must not choose
  // what has come into the place of something else. What is of no use now is not shown.
  virtual void offer(std::vector<TrayEntry> menu) = 0;
};

// The desktop's tray, also where it is none.
class Tray {
 public:
  virtual ~Tray() = default;

  // The tray outlives the icon. It says by itself whether its bar is dark.
  virtual std::unique_ptr<TrayIcon> add(TrayActions actions) = 0;
};

} // namespace vantle
