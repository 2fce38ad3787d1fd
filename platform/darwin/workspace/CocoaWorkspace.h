// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Workspace.h"

#include <memory>

namespace vantle {

// The apps of the session, as the shared workspace tells of them, on the main thread.
//
// The system makes a new object for an app whenever it is asked, and an app that has ended may have lost its
// pid, its name and its identifier by the time that this is told; here an app is one object, which knows what
// it was at first sight. The system tells of the end of apps with a Dock icon only: each app's process is
// watched as well, and whichever comes first is told. Apps without a process are none.
class CocoaWorkspace final : public Workspace {
 public:
  CocoaWorkspace();
  ~CocoaWorkspace() override;
  CocoaWorkspace(const CocoaWorkspace&) = delete;
  CocoaWorkspace& operator=(const CocoaWorkspace&) = delete;

  std::vector<AppRef> runningApplications() const override; // in the system's order, which it leaves open
  AppRef frontmostApplication() const override;
  AppRef runningApplication(Pid pid) const override;
  std::unique_ptr<Registration> observe(WorkspaceEvent event, Handler handler) override;

 private:
  class Session;
  std::unique_ptr<Session> m_session;
};

} // namespace vantle
