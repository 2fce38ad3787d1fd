// SPDX-License-Identifier: MIT
#pragma once

#include "base/Published.h"
#include "engine/ports/Workspace.h"
#include "platform/simulated/SimulatedCalls.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vantle {

class SimulatedWorkspace;

// What an app does when it is asked to quit.
enum class QuitReaction { quits, refuses };

struct AppSpec {
  std::optional<std::string> name{};
  std::optional<std::string> bundleID{};
  std::optional<std::string> bundlePath{};
  std::optional<std::string> executablePath{}; // as the bundle declares it
  std::optional<std::string> category{};
  std::optional<std::string> icon{};
  ActivationPolicy policy = ActivationPolicy::regular;
  QuitReaction quitReaction = QuitReaction::quits;
  Pid parent = 1;                              // of its main process
  std::string program = "/usr/bin/program";    // the executable of its main process
  std::uint64_t footprint = 100 * 1024 * 1024; // of its main process, in bytes
  std::optional<Pid> pid{};                    // a particular free one for its main process
  bool leadsSession = false;                   // its main process has a session of its own
  std::string place{};                         // that the desktop made for it
  std::string origin{};                        // what its main process came with
  std::vector<std::string> furtherOrigins{};   // of what it brings along
  bool canComeToFront = true;
  std::optional<KnownBy> knownBy{};
};

class SimulatedApp final : public RunningApplication {
 public:
  SimulatedApp(SimulatedWorkspace& workspace, SimulatedCalls& calls, Pid pid, AppSpec appSpec)
      : spec(std::move(appSpec)), m_workspace(workspace), m_calls(calls), m_pid(pid) {}

  AppSpec spec; // may be changed while the app runs

  Pid processIdentifier() const override { return m_pid; }
  std::optional<std::string> bundleIdentifier() const override { return spec.bundleID; }
  std::optional<std::string> localizedName() const override { return spec.name; }
  std::optional<std::string> bundlePath() const override { return spec.bundlePath; }
  std::optional<std::string> executablePath() const override { return spec.executablePath; }
  std::optional<std::string> bundleCategory() const override { return spec.category; }
  ActivationPolicy activationPolicy() const override { return spec.policy; }
  bool isTerminated() const override { return m_isTerminated; }
  bool isActive() const override;
  bool terminate() override; // refusing the call makes it return false
  bool canComeToFront() const override { return spec.canComeToFront; }
  bool bringToFront() override;
  std::optional<std::string> iconName() const override { return spec.icon; }
  std::optional<KnownBy> knownBy() const override { return spec.knownBy; }

 private:
  friend class SimulatedWorkspace;

  SimulatedWorkspace& m_workspace;
  SimulatedCalls& m_calls;
  Pid m_pid;
  bool m_isTerminated = false;
};

using SimulatedAppRef = std::shared_ptr<SimulatedApp>;

// The apps of the session. Changes are queued as events and reach the observers only when they are delivered.
class SimulatedWorkspace final : public Workspace {
 public:
  explicit SimulatedWorkspace(SimulatedCalls& calls) : m_calls(calls) {}

  void add(const SimulatedAppRef& app);          // and queues "launched"
  void addAgain(const SimulatedAppRef& app);     // queues "launched" once more: it is known by something else
  void setFrontmost(const SimulatedAppRef& app); // and queues "activated"; null: nobody is in front
  // The app's main process has ended. It stays listed until its event is delivered.
  void markTerminated(Pid pid);

  bool deliverNext(); // one event; false when there was none
  void deliverAll();
  void dropEvents(); // as if nobody had been there to hear them
  std::size_t queuedEvents() const { return m_events.size(); }

  // What requests to an app lead to. Set by the machine.
  std::function<void(SimulatedApp&)> onQuitRequest;
  std::function<void(Pid)> onFrontRequest;

  const std::vector<SimulatedAppRef>& apps() const { return m_apps; }
  const SimulatedAppRef& front() const { return m_front; }

  std::vector<AppRef> runningApplications() const override;
  AppRef frontmostApplication() const override;
  AppRef runningApplication(Pid pid) const override;
  std::unique_ptr<Registration> observe(WorkspaceEvent event, Handler handler) override;

 private:
  struct Event {
    WorkspaceEvent kind = WorkspaceEvent::activated;
    SimulatedAppRef app;
  };

  SimulatedCalls& m_calls;
  std::vector<SimulatedAppRef> m_apps;
  SimulatedAppRef m_front;
  std::deque<Event> m_events;
  bool m_isDelivering = false;
  Observers<const AppRef&> m_activated;
  Observers<const AppRef&> m_launched;
  Observers<const AppRef&> m_terminated;
};

} // namespace vantle
