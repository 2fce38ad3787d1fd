// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/RunningApplication.h"
#include "platform/darwin/cocoa/Retained.h"

#import <AppKit/AppKit.h>

namespace vantle {

// One app. What names it is read once, while it runs.
class CocoaApplication final : public RunningApplication {
 public:
  explicit CocoaApplication(NSRunningApplication* app);

  bool standsFor(NSRunningApplication* app) const;
  // Its process is over, whatever the system says of it.
  void markEnded() { m_hasEnded = true; }
  bool hasEnded() const { return m_hasEnded; }

  Pid processIdentifier() const override { return m_pid; }
  std::optional<std::string> bundleIdentifier() const override { return m_bundleIdentifier; }
  std::optional<std::string> localizedName() const override { return m_name; }
  std::optional<std::string> bundlePath() const override { return m_bundlePath; }
  std::optional<std::string> executablePath() const override { return m_executablePath; }
  std::optional<std::string> bundleCategory() const override;
  ActivationPolicy activationPolicy() const override;
  bool isTerminated() const override;
  bool isActive() const override;
  bool terminate() override;
  bool canComeToFront() const override;
  bool bringToFront() override;
  std::optional<std::string> iconName() const override { return m_bundlePath; } // it has the picture

 private:
  Retained<NSRunningApplication> m_app;
  bool m_hasEnded = false;
  Pid m_pid;
  std::optional<std::string> m_bundleIdentifier;
  std::optional<std::string> m_name;
  std::optional<std::string> m_bundlePath;
  std::optional<std::string> m_executablePath;
};

} // namespace vantle
