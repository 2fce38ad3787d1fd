// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/RunningApplication.h"
#include "platform/linux/apps/DesktopIdentity.h"

#include <functional>
#include <memory>
#include <utility>

namespace vantle {

// One app of the desktop: a process that owns windows, or owned one and still lives. Who it is was read when
// its first window was seen, and once its launch has been told it is not read again if a desktop file was
// found.
class LinuxApplication final : public RunningApplication {
 public:
  // What only the window system can tell or do. Outlived by the apps: a dead one answers nothing.
  struct Windows {
    std::function<bool(Pid)> isActive;
    std::function<bool(Pid)> requestClose;
    std::function<bool(Pid)> canBringToFront;
    std::function<bool(Pid)> requestFront;
  };

  LinuxApplication(Pid pid, AppIdentity identity, std::weak_ptr<const Windows> windows)
      : m_pid(pid), m_identity(std::move(identity)), m_windows(std::move(windows)) {}

  Pid processIdentifier() const override { return m_pid; }
  std::optional<std::string> bundleIdentifier() const override { return m_identity.bundleIdentifier; }
  std::optional<std::string> localizedName() const override { return m_identity.localizedName; }
  std::optional<std::string> bundlePath() const override { return m_identity.bundlePath; }
  std::optional<std::string> executablePath() const override { return m_identity.executablePath; }
  std::optional<std::string> bundleCategory() const override { return m_identity.bundleCategory; }
  ActivationPolicy activationPolicy() const override { return m_policy; }
  bool isTerminated() const override { return m_isTerminated; }
  bool isActive() const override;
  bool terminate() override;
  bool canComeToFront() const override;
  bool bringToFront() override;
  std::optional<std::string> iconName() const override { return m_identity.iconName; }
  std::optional<KnownBy> knownBy() const override {
    return KnownBy{std::string(m_identity.rule->name), std::string(m_identity.rule->reason)};
  }

  // The same app, but none that counts as a game for what its desktop file says.
  std::shared_ptr<LinuxApplication> asLauncher() const {
    auto launcher = std::make_shared<LinuxApplication>(m_pid, m_identity, m_windows);
    launcher->m_identity.bundleCategory.reset();
    launcher->m_policy = m_policy;
    return launcher;
  }
  void setActivationPolicy(ActivationPolicy policy) { m_policy = policy; }
  void setIdentity(AppIdentity identity) { m_identity = std::move(identity); }
  void setTerminated() { m_isTerminated = true; }

 private:
  Pid m_pid;
  AppIdentity m_identity;
  std::weak_ptr<const Windows> m_windows;
  ActivationPolicy m_policy = ActivationPolicy::regular;
  bool m_isTerminated = false;
};

} // namespace vantle
