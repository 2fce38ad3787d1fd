// SPDX-License-Identifier: MIT
#include "platform/simulated/SimulatedWorkspace.h"

#include <algorithm>
#include <string_view>

namespace vantle {

namespace {

std::string_view eventName(WorkspaceEvent event) {
  switch (event) {
  case WorkspaceEvent::activated:
    return "activated";
  case WorkspaceEvent::launched:
    return "launched";
  case WorkspaceEvent::terminated:
    return "terminated";
  }
  return "unknown";
}

// Holds a flag while an event is under way, also when the program dies in the middle of it.
class Holding {
 public:
  explicit Holding(bool& flag) : m_flag(flag) { m_flag = true; }
  ~Holding() { m_flag = false; }
  Holding(const Holding&) = delete;
  Holding& operator=(const Holding&) = delete;

 private:
  bool& m_flag;
};

} // namespace

bool SimulatedApp::isActive() const { return m_workspace.front().get() == this; }

bool SimulatedApp::terminate() {
  return m_calls.change({.operation = Operation::terminateApp, .pid = m_pid}, [this] {
    if (!m_isTerminated && m_workspace.onQuitRequest) m_workspace.onQuitRequest(*this);
  });
}

bool SimulatedApp::bringToFront() {
  return !m_isTerminated && m_calls.change({.operation = Operation::bringToFront, .pid = m_pid}, [this] {
    if (m_workspace.onFrontRequest) m_workspace.onFrontRequest(m_pid);
  });
}

void SimulatedWorkspace::add(const SimulatedAppRef& app) {
  m_apps.push_back(app);
  m_events.push_back({WorkspaceEvent::launched, app});
}

void SimulatedWorkspace::addAgain(const SimulatedAppRef& app) {
  m_events.push_back({WorkspaceEvent::launched, app});
}

void SimulatedWorkspace::setFrontmost(const SimulatedAppRef& app) {
  m_front = app;
  if (app) m_events.push_back({WorkspaceEvent::activated, app});
}

void SimulatedWorkspace::markTerminated(Pid pid) {
  for (const SimulatedAppRef& app : m_apps) {
    if (app->m_pid != pid || app->m_isTerminated) continue;
    app->m_isTerminated = true;
    if (m_front == app) m_front = nullptr;
    m_events.push_back({WorkspaceEvent::terminated, app});
  }
}

bool SimulatedWorkspace::deliverNext() {
  if (m_events.empty() || m_isDelivering) return false;
  const Event event = std::move(m_events.front());
  m_events.pop_front();
  if (event.kind == WorkspaceEvent::terminated) std::erase(m_apps, event.app);
  const Holding delivering(m_isDelivering);
  switch (event.kind) {
  case WorkspaceEvent::activated:
    m_activated.notify(event.app);
    break;
  case WorkspaceEvent::launched:
    m_launched.notify(event.app);
    break;
  case WorkspaceEvent::terminated:
    m_terminated.notify(event.app);
    break;
  }
  return true;
}

void SimulatedWorkspace::deliverAll() {
  while (deliverNext()) {
  }
}

void SimulatedWorkspace::dropEvents() {
  for (const Event& event : m_events) {
    if (event.kind == WorkspaceEvent::terminated) std::erase(m_apps, event.app);
  }
  m_events.clear();
}

std::vector<AppRef> SimulatedWorkspace::runningApplications() const {
  if (!m_calls.read({.operation = Operation::listApps})) return {};
  return {m_apps.begin(), m_apps.end()};
}

AppRef SimulatedWorkspace::frontmostApplication() const {
  return m_calls.read({.operation = Operation::frontmostApp}) ? m_front : nullptr;
}

AppRef SimulatedWorkspace::runningApplication(Pid pid) const {
  if (!m_calls.read({.operation = Operation::findApp, .pid = pid})) return nullptr;
  const auto found = std::find_if(m_apps.begin(), m_apps.end(), [pid](const SimulatedAppRef& app) {
    return app->m_pid == pid && !app->m_isTerminated;
  });
  return found == m_apps.end() ? nullptr : *found;
}

std::unique_ptr<Registration> SimulatedWorkspace::observe(WorkspaceEvent event, Handler handler) {
  m_calls.read({.operation = Operation::observeEvents, .about = eventName(event)});
  switch (event) {
  case WorkspaceEvent::launched:
    return m_launched.add(std::move(handler));
  case WorkspaceEvent::terminated:
    return m_terminated.add(std::move(handler));
  case WorkspaceEvent::activated:
    break;
  }
  return m_activated.add(std::move(handler));
}

} // namespace vantle
