// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <memory>
#include <optional>
#include <string>

namespace vantle {

enum class ActivationPolicy {
  regular,    // owns ordinary windows; the only kind that is ever slowed down
  accessory,  // panels, docks, tray programs, agents of the desktop
  prohibited, // background only
};

// What told the platform which app a process is.
struct KnownBy {
  std::string rule;   // a word of docs/scripting.md's
  std::string reason; // for a person: why that says something
  bool operator==(const KnownBy&) const = default;
};

// One running app. The object stays valid after the app has ended and then answers with what it last knew;
// `isTerminated` and `isActive` are always live. All texts are UTF-8, cleaned of malformed sequences.
class RunningApplication {
 public:
  virtual ~RunningApplication() = default;

  virtual Pid processIdentifier() const = 0;
  virtual std::optional<std::string> bundleIdentifier() const = 0;
  virtual std::optional<std::string> localizedName() const = 0;
  virtual std::optional<std::string> bundlePath() const = 0;     // the app's bundle or its desktop file
  virtual std::optional<std::string> executablePath() const = 0; // as the bundle declares it
  // The category that the bundle declares, in the platform's own words; games contain "games".
  virtual std::optional<std::string> bundleCategory() const = 0;
  virtual ActivationPolicy activationPolicy() const = 0;
  virtual bool isTerminated() const = 0;
  virtual bool isActive() const = 0; // in front now

  // Asks politely, so that the app can ask about unsaved work or refuse. True when the request was sent.
  virtual bool terminate() = 0;

  // Whether the desktop can be asked to bring its windows to the front …
  virtual bool canComeToFront() const = 0;
  // … and asking so, on behalf of the person. True when the request was sent.
  virtual bool bringToFront() = 0;

  // A themed icon name or the absolute path of a picture.
  virtual std::optional<std::string> iconName() const = 0;

  // Absent where the system itself knows apps.
  virtual std::optional<KnownBy> knownBy() const { return std::nullopt; }
};

using AppRef = std::shared_ptr<RunningApplication>;

} // namespace vantle
