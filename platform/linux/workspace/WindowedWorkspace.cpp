// SPDX-License-Identifier: MIT
#include "platform/linux/workspace/WindowedWorkspace.h"

#include "base/Text.h"
#include "platform/linux/process/KernelFile.h"
#include "platform/linux/process/ProcStat.h"
#include "platform/linux/programs/DesktopPrograms.h"
#include "platform/posix/process/BoundedWait.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <string_view>
#include <unistd.h>

namespace vantle {

namespace {

constexpr std::chrono::milliseconds longestLook{100}; // at a file that an app has named

// A window that opens in front gets there a moment after it appears. Its launch is told with its activation
// then, so that nobody slows the app down just to speed it up again; without one, after this time.
constexpr std::chrono::milliseconds timeToComeToFront{150};

// For which nothing may be said to be in front before it is believed: a Plasma desktop was seen to say so for
// up to 11 ms between two windows.
constexpr std::chrono::milliseconds longestGap{50};

std::optional<ProcStat> statOf(Pid pid) {
  const auto line = readKernelFile("/proc/" + std::to_string(pid) + "/stat");
  return line ? parseProcStat(*line) : std::nullopt;
}

// Nothing when the process is gone already.
std::optional<std::uint64_t> startTicks(Pid pid) {
  const std::optional<ProcStat> stat = statOf(pid);
  return stat && stat->isAlive() ? std::optional(stat->startTicks) : std::nullopt;
}

// What a window adds to what the process gives away; true when that is news.
bool addWindow(AppEvidence& evidence, const WindowFacts& window) {
  const auto take = [](std::string& kept, const std::string& told) {
    return kept != told && (kept = told, true);
  };
  const bool isIdNew = take(evidence.applicationId, window.applicationId);
  const bool isInstanceNew = take(evidence.windowInstance, window.instance);
  const bool isClassNew = take(evidence.windowClass, window.className);
  return isIdNew || isInstanceNew || isClassNew;
}

constexpr std::size_t mostNames = 64; // of one process's windows that are remembered

// What windows of one app have in common.
using WindowNames = std::array<std::string, 3>;

WindowNames namesOf(const WindowFacts& window) {
  return {window.applicationId, window.instance, window.className};
}

// 0 when it cannot be told.
Pid parentOf(Pid pid) {
  const std::optional<ProcStat> stat = statOf(pid);
  return stat ? stat->parent : 0;
}

// From the parent up; as far as it can be told.
std::vector<Pid> ancestorsOf(Pid pid) {
  constexpr std::size_t most = 64;
  std::vector<Pid> above;
  while (above.size() < most) {
    pid = parentOf(pid);
    if (pid <= 1) break;
    above.push_back(pid);
  }
  return above;
}

// Windows of other machines come through the secure shell: theirs is not the process that should be slowed.
bool isRemote(const AppEvidence& evidence) { return evidence.commandName.starts_with("sshd"); }

// What changes when a process becomes another program, or the same one again. Nothing of it has to be asked
// of the process itself, which may be slow to answer.
struct ProgramMark {
  std::string executable;
  std::uint64_t startStack = 0;
  bool operator==(const ProgramMark&) const = default;
};

ProgramMark markOf(Pid pid) {
  const std::optional<ProcStat> stat = statOf(pid);
  return {.executable =
              withoutDeletedMark(readKernelLink("/proc/" + std::to_string(pid) + "/exe").value_or("")),
          .startStack = stat ? stat->startStack : 0};
}

// What runs in a process, and with what.
struct ProgramRun {
  std::string executable;
  std::string program;
  std::vector<std::string> arguments;
  bool operator==(const ProgramRun&) const = default;
};

ProgramRun runOf(const AppEvidence& evidence) {
  return {evidence.executable, evidence.program, evidence.arguments};
}

bool isSame(const AppIdentity& identity, const LinuxApplication& app) {
  if (identity.bundlePath || app.bundlePath()) return identity.bundlePath == app.bundlePath();
  return identity.executablePath == app.executablePath() && identity.localizedName == app.localizedName();
}

bool belongsToShell(const AppEvidence& evidence) {
  return isShellComponent(fileNameOf(evidence.executable)) ||
         isShellComponent(fileNameOf(evidence.program)) ||
         (evidence.executable.empty() && isShellComponent(evidence.commandName));
}

} // namespace

struct WindowedWorkspace::App {
  std::shared_ptr<LinuxApplication> application;                  // who it is now
  std::map<WindowNames, std::shared_ptr<LinuxApplication>> roles; // by windows that were in front
  std::uint64_t startTicks = 0;
  std::shared_ptr<Descriptor> process;
  std::unique_ptr<EventLoop::Handle> exitWatch;
  ProgramMark mark; // of the program that it was last known as
  ProgramRun run;
  bool isSuccessor = false; // as in AppEvidence
  std::set<WindowId> seen;  // its windows at the last look
  // Until the launch is told:
  std::unique_ptr<EventLoop::Handle> launchTimer;
  std::unique_ptr<AppEvidence> evidence; // that its identity was read from
  WindowId window = 0;                   // the one that gave part of it
  // All windows that it had when it was last asked to close them, and whether it outlived that.
  std::set<WindowId> asked;
  bool staysWithoutWindows = false;

  Pid pid() const { return application->processIdentifier(); }
  bool isRegular() const { return application->activationPolicy() == ActivationPolicy::regular; }
  // Null for a window of a kind that has not been in front.
  std::shared_ptr<LinuxApplication> roleOf(const WindowFacts& shown) const {
    const auto role = roles.find(namesOf(shown));
    return role == roles.end() ? nullptr : role->second;
  }
  bool isOfAnotherRole(const WindowFacts& shown) const {
    const auto role = roleOf(shown);
    return role && role != application;
  }
  void setTerminated() {
    application->setTerminated();
    for (const auto& [names, role] : roles) role->setTerminated();
  }
};

WindowedWorkspace::WindowedWorkspace(EventLoop& loop, std::unique_ptr<DesktopWindows> windows,
                                     Options options)
    : m_loop(loop), m_options(std::move(options)),
      m_appWindows(std::make_shared<LinuxApplication::Windows>(LinuxApplication::Windows{
          .isActive = [this](Pid pid) { return m_front && m_front->processIdentifier() == pid; },
          .requestClose = [this](Pid pid) { return requestClose(pid); },
          .canBringToFront = [this](Pid pid) { return windowForFront(pid) != nullptr; },
          .requestFront =
              [this](Pid pid) {
                const WindowFacts* const window = windowForFront(pid);
                return window != nullptr && m_windows->requestFront(*window);
              }})),
      m_windows(std::move(windows)) {
  m_windows->start(
      {.changed = [this] { update(); }, .startedOver = [this] { startOver(); }, .lost = [this] { lost(); }});
  m_windows->settle(m_options.longestStart);
  update(); // some of it, or all, may have been known before anybody listened
  m_isStarting = false;
}

WindowedWorkspace::~WindowedWorkspace() = default;

std::vector<AppRef> WindowedWorkspace::runningApplications() const {
  std::vector<AppRef> apps;
  apps.reserve(m_apps.size());
  for (const auto& app : m_apps) apps.push_back(app->application);
  return apps;
}

AppRef WindowedWorkspace::frontmostApplication() const { return m_front; }

AppRef WindowedWorkspace::runningApplication(Pid pid) const {
  const App* const app = find(pid);
  return app == nullptr ? nullptr : app->application;
}

std::unique_ptr<Registration> WindowedWorkspace::observe(WorkspaceEvent event, Handler handler) {
  return m_observers[event].add(std::move(handler));
}

WindowedWorkspace::App* WindowedWorkspace::find(Pid pid) const {
  const auto found =
      std::find_if(m_apps.begin(), m_apps.end(), [pid](const auto& app) { return app->pid() == pid; });
  return found == m_apps.end() ? nullptr : found->get();
}

void WindowedWorkspace::update() {
  followPrograms();
  for (const auto& [id, window] : m_windows->known()) adoptOwner(window);
  for (const auto& app : m_apps) endRoles(*app);
  if (m_windows->isActiveKnown()) updateFront();
  deliver();
}

// A front end may leave its process to the game. Its windows close with it, so nobody is looked at before the
// next window opens where there was none, or a person turns to one.
void WindowedWorkspace::followPrograms() {
  std::map<Pid, std::set<WindowId>> shown;
  for (const auto& [id, window] : m_windows->known()) {
    if (window.pid != 0 && window.kind != WindowKind::passing) shown[window.pid].insert(id);
  }
  const bool isActivation =
      m_windows->isActiveKnown() && std::exchange(m_lastActive, m_windows->active()) != m_windows->active();
  const WindowFacts* const active = isActivation ? activeWindow() : nullptr;
  std::vector<std::pair<const WindowFacts*, bool>> successors;
  for (const auto& app : m_apps) {
    const auto windows = shown.find(app->pid());
    const std::set<WindowId> now = windows == shown.end() ? std::set<WindowId>() : windows->second;
    const std::set<WindowId> before = std::exchange(app->seen, now);
    const bool isLeft =
        std::any_of(now.begin(), now.end(), [&](WindowId window) { return before.contains(window); });
    const bool isActive = active != nullptr && active->pid == app->pid();
    if (now.empty() || (isLeft && !isActive)) continue;
    const WindowFacts& window = isActive ? *active : m_windows->known().at(*now.begin());
    if (isAnotherApp(*app, window)) successors.emplace_back(&window, app->isSuccessor);
  }
  for (const auto& [window, isSuccessor] : successors) {
    end(window->pid);
    adoptOwner(*window, isSuccessor);
  }
}

bool WindowedWorkspace::isAnotherApp(App& app, const WindowFacts& window) {
  ProgramMark mark = markOf(app.pid());
  if (mark == app.mark) return false;
  AppEvidence evidence = evidenceOf(app.pid());
  const ProgramRun run = runOf(evidence);
  const bool isTold = !run.executable.empty() && !run.arguments.empty();
  if (!isTold) return false; // another time, maybe
  app.mark = std::move(mark);
  if (run == app.run) return false;
  app.isSuccessor = app.isSuccessor || run.executable != app.run.executable || run.program != app.run.program;
  app.run = run;
  addWindow(evidence, window);
  evidence.isSuccessor = app.isSuccessor;
  return !isSame(identify(evidence), *app.application);
}

void WindowedWorkspace::updateFront() {
  const WindowFacts* const window = activeWindow();
  App* const owner = window == nullptr ? nullptr : find(window->pid);
  if (owner != nullptr && !isKeptBehind(*owner)) {
    takeRoleOf(*owner, *window);
    if (owner->application != m_front && !m_isStarting) endLaunchersAsGames(*owner);
    return becomeFront(owner);
  }
  // Using a panel or the desktop itself takes no app out of the front.
  if (!m_front || owner != nullptr) {
    m_gap.reset();
  } else if (m_options.front == FrontRule::asTold) {
    becomeFront(nullptr);
  } else if (!m_gap) {
    m_gap = m_loop.after(longestGap, [this] { becomeFront(nullptr); });
  }
}

void WindowedWorkspace::becomeFront(const App* app) {
  m_gap.reset();
  const AppRef front = app == nullptr ? nullptr : app->application;
  if (front == m_front) return;
  m_front = front;
  if (!front || m_isStarting) return;
  announceLaunches(app);
  m_events.emplace_back(WorkspaceEvent::activated, front);
}

bool WindowedWorkspace::isKeptBehind(const App& owner) const {
  return !owner.isRegular() || (m_options.front == FrontRule::settled && owner.pid() == ::getpid());
}

const WindowFacts* WindowedWorkspace::activeWindow() const {
  const auto window = m_windows->known().find(m_windows->active());
  return window == m_windows->known().end() ? nullptr : &window->second;
}

void WindowedWorkspace::takeRoleOf(App& app, const WindowFacts& window) {
  const WindowNames names = namesOf(window);
  if (window.kind != WindowKind::ordinary || names == WindowNames{}) return;
  if (const auto role = app.roles.find(names); role != app.roles.end()) {
    app.application = role->second;
    return;
  }
  AppEvidence evidence = evidenceOf(window.pid);
  addWindow(evidence, window);
  if (app.evidence) { // nobody has heard of it yet
    app.application->setIdentity(identify(evidence));
    app.evidence = std::make_unique<AppEvidence>(std::move(evidence));
    app.window = window.id;
    app.roles = {{names, app.application}};
    return;
  }
  // Some give each window a name of its own.
  if (app.roles.size() >= mostNames) {
    std::set<WindowNames> shown;
    for (const auto& [id, other] : m_windows->known()) shown.insert(namesOf(other));
    std::erase_if(app.roles, [&shown](const auto& other) { return !shown.contains(other.first); });
  }
  std::shared_ptr<LinuxApplication>& role = app.roles[names];
  role = app.application;
  const std::vector<DesktopEntry>& entries = m_options.installed->all();
  const auto ofRole = [&](const LinuxApplication& other) {
    const auto found = std::find_if(entries.begin(), entries.end(), [&](const DesktopEntry& entry) {
      return other.bundlePath() == entry.path;
    });
    return found == entries.end() ? nullptr : &*found;
  };
  const IdentityMatch known{ofRole(*app.application)};
  if (known.entry == nullptr && app.application->bundlePath()) return; // by a file that is installed nowhere
  const IdentityMatch shown = matchWindow(evidence, known, entries);
  if (shown.entry == known.entry) return;
  const auto same = std::find_if(app.roles.begin(), app.roles.end(),
                                 [&](const auto& other) { return ofRole(*other.second) == shown.entry; });
  if (same != app.roles.end()) {
    role = same->second;
  } else {
    role = std::make_shared<LinuxApplication>(app.pid(), identityOf(evidence, shown), m_appWindows);
    if (!m_isStarting) m_events.emplace_back(WorkspaceEvent::launched, role);
  }
  app.application = role;
}

// A program that has started a game of another name is known as that game's launcher from then on. It would
// stay the Boost app, or become it again, long after the game: its desktop file calls it a game as well.
void WindowedWorkspace::endLaunchersAsGames(const App& game) {
  const auto isGame = [](const App& app) { return app.application->bundleCategory() == gamesCategory; };
  if (!isGame(game)) return;
  const std::vector<Pid> above = ancestorsOf(game.pid());
  for (const auto& app : m_apps) {
    const bool isAbove = std::find(above.begin(), above.end(), app->pid()) != above.end();
    const bool isAnother = app->application->bundlePath() != game.application->bundlePath();
    if (!isAbove || !isAnother || app->evidence || !isGame(*app)) continue;
    const std::shared_ptr<LinuxApplication> role = app->application;
    app->application = role->asLauncher();
    for (auto& [names, other] : app->roles) {
      if (other == role) other = app->application;
    }
    role->setTerminated();
    m_events.emplace_back(WorkspaceEvent::terminated, role);
    m_events.emplace_back(WorkspaceEvent::launched, app->application);
  }
}

// A browser goes on when its web app's window is closed, and so does a web app's when the browser's is.
void WindowedWorkspace::endRoles(App& app) {
  if (app.roles.size() < 2) return;
  std::set<const LinuxApplication*> shown;
  const WindowFacts* any = nullptr;
  for (const auto& [id, window] : m_windows->known()) {
    if (window.pid != app.pid() || window.kind != WindowKind::ordinary) continue;
    any = &window;
    shown.insert(app.roleOf(window).get());
  }
  shown.erase(nullptr);
  if (shown.empty()) return;
  std::set<std::shared_ptr<LinuxApplication>> ended;
  for (const auto& [names, role] : app.roles) {
    if (!shown.contains(role.get())) ended.insert(role);
  }
  std::erase_if(app.roles, [&](const auto& role) { return ended.contains(role.second); });
  if (ended.contains(app.application)) takeRoleOf(app, *any);
  for (const auto& role : ended) {
    role->setTerminated();
    if (m_front == role) becomeFront(nullptr);
    m_events.emplace_back(WorkspaceEvent::terminated, role);
  }
  // To everybody an app is its process: what was said of the one counted for the other.
  if (!ended.empty()) m_events.emplace_back(WorkspaceEvent::launched, app.application);
}

void WindowedWorkspace::adoptOwner(const WindowFacts& window, bool isSuccessor) {
  if (window.pid == 0 || window.kind == WindowKind::passing) return;
  App* app = find(window.pid);
  if (app != nullptr) {
    identifyLate(*app, window);
  } else {
    std::unique_ptr<App> made = makeApp(window, isSuccessor);
    if (!made) return;
    app = made.get();
    const auto place =
        std::upper_bound(m_apps.begin(), m_apps.end(), made, [](const auto& left, const auto& right) {
          return std::pair(left->startTicks, left->pid()) < std::pair(right->startTicks, right->pid());
        });
    m_apps.insert(place, std::move(made));
    if (m_isStarting) {
      app->evidence.reset();
    } else {
      m_unannounced.push_back(app);
      app->launchTimer = m_loop.after(timeToComeToFront, [this, app] {
        announceLaunches(app);
        deliver();
      });
    }
  }
  if (window.kind == WindowKind::shell) app->application->setActivationPolicy(ActivationPolicy::accessory);
}

std::unique_ptr<WindowedWorkspace::App> WindowedWorkspace::makeApp(const WindowFacts& window,
                                                                   bool isSuccessor) {
  // A process whose end nobody would hear of cannot be an app here.
  if (!window.process || !*window.process) return nullptr;
  const std::optional<std::uint64_t> start = startTicks(window.pid);
  if (!start) return nullptr;
  auto app = std::make_unique<App>();
  app->mark = markOf(window.pid); // what it becomes from here on is another program
  AppEvidence evidence = evidenceOf(window.pid);
  if (isRemote(evidence)) return nullptr;
  addWindow(evidence, window);
  evidence.isSuccessor = isSuccessor;
  app->isSuccessor = isSuccessor;
  app->run = runOf(evidence);
  app->seen = {window.id};

  app->application = std::make_shared<LinuxApplication>(window.pid, identify(evidence), m_appWindows);
  if (belongsToShell(evidence)) app->application->setActivationPolicy(ActivationPolicy::accessory);
  app->roles = {{namesOf(window), app->application}};
  app->evidence = std::make_unique<AppEvidence>(std::move(evidence));
  app->window = window.id;
  app->startTicks = *start;
  app->process = window.process;
  app->exitWatch = m_loop.watch(app->process->get(), EventLoop::Readiness::readable,
                                [this, pid = window.pid] { ended(pid); });
  return app;
}

AppEvidence WindowedWorkspace::evidenceOf(Pid pid) const {
  AppEvidence evidence = readEvidence(pid);
  const App* const known = find(pid);
  evidence.isSuccessor = known != nullptr && known->isSuccessor;
  dropAppsFrom(evidence);
  return evidence;
}

void WindowedWorkspace::dropAppsFrom(AppEvidence& evidence) const {
  dropWrappersFrom(evidence, [this](Pid wrapper) { return find(wrapper) != nullptr; });
}

AppIdentity WindowedWorkspace::identify(const AppEvidence& evidence) {
  const IdentityMatch match = matchEntry(evidence, m_options.installed->all());
  if (match.entry != nullptr) return identityOf(evidence, match);
  static BoundedWait wait(8);
  // One on the desktop, say.
  if (!evidence.launchedFile.empty()) {
    const std::string id = fileNameOf(evidence.launchedFile);
    const auto entry = wait.answer(longestLook, [file = evidence.launchedFile, id] {
      return readDesktopEntry(file, id.substr(0, id.rfind(".desktop")));
    });
    if (entry && *entry) return identityOf(evidence, {&**entry, &uninstalledFileRule});
  }
  if (!evidence.imageFolder.empty()) {
    const auto entry =
        wait.answer(longestLook, [folder = evidence.imageFolder] { return readImagesEntry(folder); });
    if (entry && *entry) return identityOf(evidence, {&**entry, &imagesFileRule});
  }
  return identityOf(evidence, match);
}

// Some windows are shown before they say whose they are: an office's, while the document is still being read.
// It is the same app all the while, so nothing of it ends; but what was decided about it may be another
// matter.
void WindowedWorkspace::identifyLate(App& app, const WindowFacts& window) {
  const bool isFirst = app.window == window.id && app.roles.size() == 1 && !app.evidence;
  if (!isFirst || app.application->bundlePath() || app.roles.contains(namesOf(window))) return;
  AppEvidence evidence = evidenceOf(app.pid());
  addWindow(evidence, window);
  AppIdentity identity = identify(evidence);
  app.roles = {{namesOf(window), app.application}};
  if (!identity.bundlePath) return;
  app.application->setIdentity(std::move(identity));
  if (m_isStarting) return;
  const bool isInFront = app.application == m_front;
  m_events.emplace_back(isInFront ? WorkspaceEvent::activated : WorkspaceEvent::launched, app.application);
}

// In the order in which they came, so that nobody hears of a later app first.
void WindowedWorkspace::announceLaunches(const App* upTo) {
  const auto last = std::find(m_unannounced.begin(), m_unannounced.end(), upTo);
  if (last == m_unannounced.end()) return;
  for (auto app = m_unannounced.begin(); app <= last; ++app) announce(**app);
  m_unannounced.erase(m_unannounced.begin(), last + 1);
}

void WindowedWorkspace::announce(App& app) {
  app.launchTimer.reset();
  // Some desktops tell of a window before it has said what it is.
  const std::unique_ptr<AppEvidence> evidence = std::move(app.evidence);
  const auto window = m_windows->known().find(app.window);
  const bool isItsOwn = window != m_windows->known().end() && window->second.pid == app.pid();
  const bool isNamedAnew = isItsOwn && addWindow(*evidence, window->second);
  // What waits for it may have opened a window since, and is an app of its own then.
  const std::size_t wrappers = evidence->wrappers.size();
  dropAppsFrom(*evidence);
  if (isNamedAnew || evidence->wrappers.size() != wrappers) {
    app.application->setIdentity(identify(*evidence));
    if (isNamedAnew) app.roles = {{namesOf(window->second), app.application}};
  }
  m_events.emplace_back(WorkspaceEvent::launched, app.application);
}

void WindowedWorkspace::ended(Pid pid) {
  if (find(pid) == nullptr) return;
  end(pid);
  m_windows->forget(pid);
  deliver();
}

void WindowedWorkspace::end(Pid pid) {
  const auto found =
      std::find_if(m_apps.begin(), m_apps.end(), [pid](const auto& app) { return app->pid() == pid; });
  if (found == m_apps.end()) return;
  announceLaunches(found->get());
  const std::unique_ptr<App> app = std::move(*found);
  m_apps.erase(found);
  app->setTerminated();
  if (m_front == app->application) becomeFront(nullptr);
  m_events.emplace_back(WorkspaceEvent::terminated, app->application);
}

// Of an app that is not seen any more nobody would hear that the person turns to it: to everybody it has
// ended.
void WindowedWorkspace::startOver() {
  becomeFront(nullptr);
  if (!m_unannounced.empty()) announceLaunches(m_unannounced.back());
  for (const auto& app : std::exchange(m_apps, {})) {
    app->setTerminated();
    m_events.emplace_back(WorkspaceEvent::terminated, app->application);
  }
  deliver();
  update();
}

void WindowedWorkspace::deliver() {
  if (std::exchange(m_isDelivering, true)) return;
  // What happens meanwhile is told after what happened before.
  while (!m_events.empty()) {
    for (const auto& [event, app] : std::exchange(m_events, {})) m_observers[event].notify(app);
  }
  m_isDelivering = false;
}

// A window that has come since the last request, while others of that time are still there, is the question
// whether to save: to close it would be to answer it. And a program that has closed all its windows and goes
// on has only hidden from the person what it holds.
bool WindowedWorkspace::requestClose(Pid pid) {
  App* const app = find(pid);
  if (app == nullptr) return false;
  std::set<WindowId> all;
  for (const auto& [id, window] : m_windows->known()) {
    if (window.pid == pid) all.insert(id);
  }
  const bool isAnyLeft = std::any_of(app->asked.begin(), app->asked.end(),
                                     [&all](WindowId window) { return all.contains(window); });
  const bool isAnyNew = !std::includes(app->asked.begin(), app->asked.end(), all.begin(), all.end());
  if (isAnyLeft && isAnyNew) return false;
  if (!app->asked.empty() && !isAnyLeft) app->staysWithoutWindows = true;
  if (app->staysWithoutWindows) return false;
  bool isSent = false;
  for (const WindowId id : all) {
    const WindowFacts& window = m_windows->known().at(id);
    if (window.kind != WindowKind::ordinary || app->isOfAnotherRole(window)) continue;
    isSent = m_windows->requestClose(window) || isSent;
  }
  if (isSent) app->asked = std::move(all);
  return isSent;
}

// The app's oldest window that can be brought there: its main one, as a rule. Null without one.
const WindowFacts* WindowedWorkspace::windowForFront(Pid pid) const {
  const App* const app = find(pid);
  if (app == nullptr) return nullptr;
  for (const auto& [id, window] : m_windows->known()) {
    const bool isIts =
        window.pid == pid && window.kind == WindowKind::ordinary && !app->isOfAnotherRole(window);
    if (isIts && m_windows->canBringToFront(window)) return &window;
  }
  return nullptr;
}

void WindowedWorkspace::lost() {
  const bool wasThere = !m_isStarting;
  becomeFront(nullptr);
  if (wasThere && m_options.onDesktopLost) m_options.onDesktopLost();
}

} // namespace vantle
