// SPDX-License-Identifier: MIT
#include "platform/linux/workspace/X11Workspace.h"

#include "base/Text.h"
#include "platform/linux/process/KernelFile.h"
#include "platform/linux/process/ProcStat.h"
#include "platform/linux/programs/DesktopPrograms.h"
#include "platform/posix/process/BoundedWait.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace vantle {

namespace {

constexpr std::chrono::milliseconds longestStart{200};
constexpr std::chrono::milliseconds longestLook{100}; // at a file that an app has named

// A window that opens in front gets there a moment after it appears. Its launch is told with its activation
// then, so that nobody slows the app down just to speed it up again; without one, after this time.
constexpr std::chrono::milliseconds timeToComeToFront{150};

// Nothing when the process is gone already.
std::optional<std::uint64_t> startTicks(Pid pid) {
  const auto line = readKernelFile("/proc/" + std::to_string(pid) + "/stat");
  const std::optional<ProcStat> stat = line ? parseProcStat(*line) : std::nullopt;
  return stat && stat->isAlive() ? std::optional(stat->startTicks) : std::nullopt;
}

// Windows of other machines come through the secure shell: theirs is not the process that should be slowed.
bool isRemote(const AppEvidence& evidence) { return evidence.commandName.starts_with("sshd"); }

bool belongsToShell(const AppEvidence& evidence) {
  return isShellComponent(fileNameOf(evidence.executable)) ||
         isShellComponent(fileNameOf(evidence.program)) ||
         (evidence.executable.empty() && isShellComponent(evidence.commandName));
}

} // namespace

struct X11Workspace::App {
  std::shared_ptr<LinuxApplication> application;
  std::uint64_t startTicks = 0;
  std::shared_ptr<Descriptor> process;
  std::unique_ptr<EventLoop::Handle> exitWatch;
  std::unique_ptr<EventLoop::Handle> launchTimer; // set until the launch is told

  Pid pid() const { return application->processIdentifier(); }
  bool isRegular() const { return application->activationPolicy() == ActivationPolicy::regular; }
};

X11Workspace::X11Workspace(EventLoop& loop, Options options)
    : m_loop(loop), m_options(std::move(options)),
      m_appWindows(std::make_shared<LinuxApplication::Windows>(LinuxApplication::Windows{
          .isActive = [this](Pid pid) { return m_front && m_front->processIdentifier() == pid; },
          .requestClose = [this](Pid pid) { return requestClose(pid); }})) {
  m_windows = std::make_unique<X11Windows>(
      m_loop, m_options.display,
      X11Windows::Handlers{.changed = [this] { update(); }, .lost = [this] { lost(); }});
  m_windows->settle(longestStart);
  m_isStarting = false;
}

X11Workspace::~X11Workspace() = default;

std::vector<AppRef> X11Workspace::runningApplications() const {
  std::vector<AppRef> apps;
  apps.reserve(m_apps.size());
  for (const auto& app : m_apps) apps.push_back(app->application);
  return apps;
}

AppRef X11Workspace::frontmostApplication() const { return m_front; }

AppRef X11Workspace::runningApplication(Pid pid) const {
  const App* const app = find(pid);
  return app == nullptr ? nullptr : app->application;
}

std::unique_ptr<Registration> X11Workspace::observe(WorkspaceEvent event, Handler handler) {
  return m_observers[event].add(std::move(handler));
}

X11Workspace::App* X11Workspace::find(Pid pid) const {
  const auto found =
      std::find_if(m_apps.begin(), m_apps.end(), [pid](const auto& app) { return app->pid() == pid; });
  return found == m_apps.end() ? nullptr : found->get();
}

void X11Workspace::update() {
  for (const auto& [id, window] : m_windows->known()) adoptOwner(window);
  if (m_windows->isActiveKnown()) {
    App* const owner = ownerOfActive();
    // Using a panel or the desktop itself takes no app out of the front.
    const bool isFrontKept = owner != nullptr && !owner->isRegular() && m_front;
    const AppRef front = owner != nullptr && owner->isRegular() ? owner->application : nullptr;
    if (!isFrontKept && front != m_front) {
      m_front = front;
      if (front && !m_isStarting) {
        announceLaunches(owner);
        m_events.emplace_back(WorkspaceEvent::activated, front);
      }
    }
  }
  deliver();
}

X11Workspace::App* X11Workspace::ownerOfActive() const {
  const auto window = m_windows->known().find(m_windows->active());
  return window == m_windows->known().end() ? nullptr : find(window->second.pid);
}

void X11Workspace::adoptOwner(const WindowFacts& window) {
  if (window.pid == 0 || window.kind == WindowKind::passing) return;
  App* app = find(window.pid);
  if (app == nullptr) {
    std::unique_ptr<App> made = makeApp(window);
    if (!made) return;
    app = made.get();
    const auto place =
        std::upper_bound(m_apps.begin(), m_apps.end(), made, [](const auto& left, const auto& right) {
          return std::pair(left->startTicks, left->pid()) < std::pair(right->startTicks, right->pid());
        });
    m_apps.insert(place, std::move(made));
    if (!m_isStarting) {
      m_unannounced.push_back(app);
      app->launchTimer = m_loop.after(timeToComeToFront, [this, app] {
        announceLaunches(app);
        deliver();
      });
    }
  }
  if (window.kind == WindowKind::shell) app->application->setActivationPolicy(ActivationPolicy::accessory);
}

std::unique_ptr<X11Workspace::App> X11Workspace::makeApp(const WindowFacts& window) {
  // A process whose end nobody would hear of cannot be an app here.
  if (!window.process || !*window.process) return nullptr;
  const std::optional<std::uint64_t> start = startTicks(window.pid);
  if (!start) return nullptr;
  AppEvidence evidence = readEvidence(window.pid);
  if (isRemote(evidence)) return nullptr;
  evidence.applicationId = window.applicationId;
  evidence.windowInstance = window.instance;
  evidence.windowClass = window.className;

  auto app = std::make_unique<App>();
  app->application = std::make_shared<LinuxApplication>(window.pid, identify(evidence), m_appWindows);
  if (belongsToShell(evidence)) app->application->setActivationPolicy(ActivationPolicy::accessory);
  app->startTicks = *start;
  app->process = window.process;
  app->exitWatch = m_loop.watch(app->process->get(), EventLoop::Readiness::readable,
                                [this, pid = window.pid] { ended(pid); });
  return app;
}

AppIdentity X11Workspace::identify(const AppEvidence& evidence) {
  const std::vector<DesktopEntry>& entries = m_options.installed->all();
  if (const DesktopEntry* entry = findEntry(evidence, entries)) return identityOf(evidence, entry);
  // Started from a desktop file that is installed nowhere, such as one on the desktop.
  if (!evidence.launchedFile.empty()) {
    const std::string id = fileNameOf(evidence.launchedFile);
    static BoundedWait wait(8);
    const auto entry = wait.answer(longestLook, [file = evidence.launchedFile, id] {
      return readDesktopEntry(file, id.substr(0, id.rfind(".desktop")));
    });
    if (entry && *entry) return identityOf(evidence, &**entry);
  }
  return identityOf(evidence, nullptr);
}

// In the order in which they came, so that nobody hears of a later app first.
void X11Workspace::announceLaunches(const App* upTo) {
  const auto last = std::find(m_unannounced.begin(), m_unannounced.end(), upTo);
  if (last == m_unannounced.end()) return;
  for (auto app = m_unannounced.begin(); app <= last; ++app) announce(**app);
  m_unannounced.erase(m_unannounced.begin(), last + 1);
}

void X11Workspace::announce(App& app) {
  app.launchTimer.reset();
  m_events.emplace_back(WorkspaceEvent::launched, app.application);
}

void X11Workspace::ended(Pid pid) {
  const auto found =
      std::find_if(m_apps.begin(), m_apps.end(), [pid](const auto& app) { return app->pid() == pid; });
  if (found == m_apps.end()) return;
  announceLaunches(found->get());
  const std::unique_ptr<App> app = std::move(*found);
  m_apps.erase(found);
  app->application->setTerminated();
  if (m_front == app->application) m_front = nullptr;
  m_events.emplace_back(WorkspaceEvent::terminated, app->application);
  m_windows->forget(pid);
  deliver();
}

void X11Workspace::deliver() {
  if (std::exchange(m_isDelivering, true)) return;
  // What happens meanwhile is told after what happened before.
  while (!m_events.empty()) {
    for (const auto& [event, app] : std::exchange(m_events, {})) m_observers[event].notify(app);
  }
  m_isDelivering = false;
}

bool X11Workspace::requestClose(Pid pid) {
  bool isSent = false;
  for (const auto& [id, window] : m_windows->known()) {
    if (window.pid != pid || window.kind != WindowKind::ordinary) continue;
    isSent = m_windows->requestClose(window) || isSent;
  }
  return isSent;
}

void X11Workspace::lost() {
  const bool wasThere = !m_isStarting;
  m_front = nullptr;
  if (wasThere && m_options.onConnectionLost) m_options.onConnectionLost();
}

} // namespace vantle
