// SPDX-License-Identifier: MIT
#pragma once

#include "base/Observers.h"
#include "look/ports/ColorScheme.h"
#include "platform/darwin/cocoa/Retained.h"

#import <AppKit/AppKit.h>

@class VantleAppearanceWatcher;

namespace vantle {

// What the system draws this program in; while the program wants nothing of its own, that is the system's
// choice.
class AppAppearance final : public ColorScheme {
 public:
  AppAppearance();
  ~AppAppearance() override;
  AppAppearance(const AppAppearance&) = delete;
  AppAppearance& operator=(const AppAppearance&) = delete;

  bool isDark() const override;
  std::unique_ptr<Registration> observe(std::function<void()> changed) override;
  void draw(std::optional<bool> dark) override;

 private:
  Retained<VantleAppearanceWatcher> m_watcher;
  std::optional<bool> m_drawn;
  Observers<> m_observers;
};

} // namespace vantle
