// SPDX-License-Identifier: MIT
#pragma once

#import <AppKit/AppKit.h>
#include <QRect>
#include <QStringList>
#include <functional>
#include <string>
#include <vector>

namespace vantle {

// The classes of the system that the windows call, as badly as their documentation allows: what nobody keeps
// is gone, the program's start takes back what was said before it, and the toolkit changes its windows when
// it shows them. One at a time.
class StandInAppKit {
 public:
  StandInAppKit();
  ~StandInAppKit();
  StandInAppKit(const StandInAppKit&) = delete;
  StandInAppKit& operator=(const StandInAppKit&) = delete;

  std::vector<std::string> calls; // in their order
  std::vector<std::string> callsOf(const std::string& beginning) const;
  int objects() const; // that were made here and not released by everybody

  // The program.
  bool isActive = false;
  bool isHidden = false;
  void becomeDrawnIn(NSString* appearance); // by the system, unless the program wants another one
  void finishLaunching();                   // which sets answers of the system's own
  bool openAgain();                         // false when nobody answers
  int reliefs = 0;                          // of the allocator

  // Screens, from the lower left corner of the first.
  std::vector<NSRect> screens{NSMakeRect(0, 0, 1440, 900)};
  NSRect button = NSMakeRect(0, 0, 30, 24); // within its window
  NSPoint buttonWindow = {1000, 876};
  bool buttonHasWindow = true;

  // The menu bar.
  NSStatusItem* item() const; // the only one; nil when there is none
  void press(NSEventType type, NSEventModifierFlags modifiers = 0) const;
  void pressWithoutEvent() const;
  QStringList lines() const; // that the menu shows, switches that are on with " (on)", grey ones in brackets
  std::function<void(NSMenu*)> menuIsOpen;
  bool closesBeforeChoice = true; // which way round is said nowhere
  void chooseLine(NSInteger line) const;

  // Windows.
  NSInteger levelWhenShown = 0;
  NSUInteger behaviourWhenShown = 0;
  bool wasSeenWhenShown = false;
  NSWindow* windowOf(const void* window); // a panel
  bool canBeSeen(NSWindow* window) const; // once it is shown
  NSEventMask monitored() const;          // 0 when nobody monitors
  void pressElsewhere() const;

  // Pictures: a red upper and a half opaque green lower half.
  bool canDraw = true;
  int savedStates = 0;

  // The dialog.
  std::function<NSModalResponse()> answer;
  NSString* chosenPath = nil;
  bool cancelsInTime = true; // the person may have been quicker
};

} // namespace vantle
