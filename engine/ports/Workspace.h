// SPDX-License-Identifier: MIT
#pragma once

#include "base/Registration.h"
#include "engine/ports/RunningApplication.h"

#include <functional>
#include <memory>
#include <vector>

namespace vantle {

enum class WorkspaceEvent { activated, launched, terminated };

// The apps of the desktop session. Events arrive on the main loop, one at a time, never inside a call made
// here; an event whose app is unknown is never delivered.
class Workspace {
 public:
  using Handler = std::function<void(const AppRef&)>;

  virtual ~Workspace() = default;

  // In an order that does not change from one question to the next: of their launch, where the system tells.
  virtual std::vector<AppRef> runningApplications() const = 0;
  virtual AppRef frontmostApplication() const = 0;      // null when there is none or nobody can tell
  virtual AppRef runningApplication(Pid pid) const = 0; // null when no app has that main process
  virtual std::unique_ptr<Registration> observe(WorkspaceEvent event, Handler handler) = 0;
};

} // namespace vantle
