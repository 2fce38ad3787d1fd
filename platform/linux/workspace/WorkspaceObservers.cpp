// SPDX-License-Identifier: MIT
#include "platform/linux/workspace/WorkspaceObservers.h"

#include <utility>
#include <vector>

namespace vantle {

class WorkspaceObservers::Entry final : public Registration {
 public:
  Entry(std::weak_ptr<Observers> observers, int id) : m_observers(std::move(observers)), m_id(id) {}
  ~Entry() override {
    if (const auto observers = m_observers.lock()) observers->erase(m_id);
  }
  Entry(const Entry&) = delete;
  Entry& operator=(const Entry&) = delete;

 private:
  std::weak_ptr<Observers> m_observers;
  int m_id;
};

std::unique_ptr<Registration> WorkspaceObservers::add(WorkspaceEvent event, Workspace::Handler handler) {
  const int id = m_nextId++;
  m_observers->emplace(id, Observer{event, std::move(handler)});
  return std::make_unique<Entry>(m_observers, id);
}

void WorkspaceObservers::deliver(WorkspaceEvent event, const AppRef& app) const {
  const std::shared_ptr<Observers> observers = m_observers; // a handler may end everything
  std::vector<int> ids;
  for (const auto& [id, observer] : *observers) {
    if (observer.event == event) ids.push_back(id);
  }
  for (const int id : ids) {
    const auto found = observers->find(id);
    if (found == observers->end()) continue;
    const Workspace::Handler handler = found->second.handler;
    handler(app);
  }
}

} // namespace vantle
