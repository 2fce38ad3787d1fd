// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Workspace.h"

#include <map>
#include <memory>

namespace vantle {

// Who wants to hear of a workspace's events. Handlers may end any registration, their own included.
class WorkspaceObservers {
 public:
  std::unique_ptr<Registration> add(WorkspaceEvent event, Workspace::Handler handler);
  void deliver(WorkspaceEvent event, const AppRef& app) const;

 private:
  struct Observer {
    WorkspaceEvent event;
    Workspace::Handler handler;
  };
  using Observers = std::map<int, Observer>; // in the order of their registration
  class Entry;

  std::shared_ptr<Observers> m_observers = std::make_shared<Observers>();
  int m_nextId = 0;
};

} // namespace vantle
