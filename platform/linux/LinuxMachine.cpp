// SPDX-License-Identifier: MIT
#include "platform/linux/LinuxMachine.h"

#include "base/Names.h"
#include "engine/AppTrees.h"
#include "platform/linux/audio/LinuxAudio.h"
#include "platform/linux/band/LinuxBand.h"
#include "platform/linux/band/UserManager.h"
#include "platform/linux/bus/BusConnection.h"
#include "platform/linux/catalog/DesktopCatalog.h"
#include "platform/linux/games/GameModeGames.h"
#include "platform/linux/hooks/PersonsHooks.h"
#include "platform/linux/login/AutostartLoginItem.h"
#include "platform/linux/notices/DesktopNotifications.h"
#include "platform/linux/power/DesktopPowerAssertions.h"
#include "platform/linux/pressure/PsiMemoryPressure.h"
#include "platform/linux/process/AppSessions.h"
#include "platform/linux/process/BootClock.h"
#include "platform/linux/process/LinuxHost.h"
#include "platform/linux/process/ProcfsProcessTable.h"
#include "platform/linux/windows/DesktopProbe.h"
#include "platform/linux/workspace/WindowedWorkspace.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/files/PosixFileStore.h"
#include "platform/posix/process/SessionLauncher.h"
#include "platform/shared/Absent.h"
#include "platform/shared/IcuText.h"
#include "platform/shared/JsonUserDefaults.h"
#include "platform/shared/PollEventLoop.h"

#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <set>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vantle {

namespace {

// The data folder, so that identities outlive the session; the runtime folder when that one is full or
// read-only.
std::vector<std::string> epochPaths(const XdgFolders& folders) {
  std::vector<std::string> paths{folders.data + "/" + names::display + "/boot.json"};
  if (folders.runtime) paths.push_back(*folders.runtime + "/" + names::identifier + ".boot.json");
  return paths;
}

// The other way round: what it remembers ends with the user manager, and so does the runtime folder.
std::vector<std::string> ledgerPaths(const XdgFolders& folders) {
  std::vector<std::string> paths;
  if (folders.runtime) paths.push_back(*folders.runtime + "/" + names::identifier + ".band.json");
  paths.push_back(folders.data + "/" + names::display + "/band.json");
  return paths;
}

// The bus that the user's service manager is on; another session bus may stand beside it.
std::string userBus(const XdgFolders& folders) {
  if (!folders.runtime || ::access((*folders.runtime + "/bus").c_str(), F_OK) != 0) return {};
  return "unix:path=" + *folders.runtime + "/bus";
}

// Where Flatpak keeps what it knows of its sandboxes.
std::string flatpakFolder(const XdgFolders& folders) {
  return folders.runtime ? *folders.runtime + "/.flatpak" : std::string();
}

std::string oneLine(const std::string& text) { return text.substr(0, text.find('\n')); }

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr && *value != '\0' ? value : "unknown";
}

std::vector<std::pair<std::string, std::string>> systemFacts(const Kernel& kernel) {
  std::string system = "unknown";
  std::ifstream release("/etc/os-release");
  for (std::string line; std::getline(release, line);) {
    if (line.starts_with("PRETTY_NAME=")) system = line.substr(line.find('=') + 1);
  }
  return {{"System", system},
          {"Kernel", oneLine(kernel.read("/proc/sys/kernel/osrelease").value_or("unknown"))},
          {"Desktop", variable("XDG_CURRENT_DESKTOP") + ", " + variable("XDG_SESSION_TYPE")}};
}

// The X library writes to the standard errors when a server does not let it in.
class SilentErrors {
 public:
  SilentErrors() : m_kept(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)) {
    const Descriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    if (m_kept && nowhere) ::dup2(nowhere.get(), STDERR_FILENO);
  }
  ~SilentErrors() {
    if (m_kept) ::dup2(m_kept.get(), STDERR_FILENO);
  }
  SilentErrors(const SilentErrors&) = delete;
  SilentErrors& operator=(const SilentErrors&) = delete;

 private:
  Descriptor m_kept;
};

std::unique_ptr<WindowedWorkspace> workspaceOn(EventLoop& loop, DesktopSource source,
                                               WindowedWorkspace::Options options) {
  options.front = source.front;
  options.longestStart = source.longestStart;
  return std::make_unique<WindowedWorkspace>(loop, std::move(source.windows), std::move(options));
}

// Whether this desktop leaves the apps of this user without sessions of their own.
bool appsShareSessions(PollEventLoop& loop, DesktopSource source, const Kernel& kernel,
                       const ProcessTable& processes) {
  const std::unique_ptr<WindowedWorkspace> owned = workspaceOn(loop, std::move(source), {});
  const WindowedWorkspace& workspace = *owned;
  // A server that is slow is not a desktop without apps.
  loop.runUntil([&] { return !workspace.runningApplications().empty(); }, std::chrono::seconds(1));
  std::set<Pid> apps;
  for (const AppRef& app : workspace.runningApplications()) {
    const Pid pid = app->processIdentifier();
    if (app->activationPolicy() == ActivationPolicy::regular && kernel.isOwn(pid)) apps.insert(pid);
  }
  return mostShareTheirSession(AppTrees(processes, {.apps = apps, .self = ::getpid()}), apps);
}

} // namespace

struct LinuxMachine::Parts {
  Parts(const XdgFolders& folders, const std::vector<std::string>& keptEpochs)
      : files(folders.data, PosixFileStore::Sync::none),
        settingsFiles(folders.data, PosixFileStore::Sync::disk, PosixFileStore::Foreign::readable),
        epoch(BootEpoch::load(files, keptEpochs, kernel->bootId())), processes(epoch, kernel), clock(epoch),
        defaults(settingsFiles, folders.config, names::identifier) {}

  PosixFileStore files;         // another boot has no use for what is kept here: the disk need not be awaited
  PosixFileStore settingsFiles; // the person's choices
  std::shared_ptr<ProcKernel> kernel = std::make_shared<ProcKernel>();
  BootEpoch epoch;
  LinuxHost host;
  ProcfsProcessTable processes;
  BootClock clock;
  JsonUserDefaults defaults;
  SessionLauncher launcher;
  IcuText text;

  PollEventLoop ownLoop; // for what runs without a toolkit
  // Connected by whoever first needs them; shared by the parts below.
  std::unique_ptr<BusConnection> systemBus;
  std::unique_ptr<BusConnection> sessionBus;

  std::shared_ptr<const std::string> desktop =
      std::make_shared<const std::string>(); // what shows its windows
  std::unique_ptr<BackgroundBand> band;
  const LinuxBand* linuxBand = nullptr; // the same; null in the self-test, which has another
  std::function<std::vector<std::pair<std::string, std::string>>()> desktopFacts; // null: there are none
  std::unique_ptr<Workspace> workspace = std::make_unique<AbsentWorkspace>();
  std::unique_ptr<AudioActivity> audio = std::make_unique<AbsentAudioActivity>();
  std::unique_ptr<PowerAssertions> power = std::make_unique<AbsentPowerAssertions>();
  std::unique_ptr<MemoryPressureEvents> pressure = std::make_unique<AbsentMemoryPressure>();
  std::unique_ptr<Notifications> notifications = std::make_unique<AbsentNotifications>();
  std::unique_ptr<LoginItem> loginItem = std::make_unique<AbsentLoginItem>();
  std::unique_ptr<ApplicationCatalog> catalog = std::make_unique<AbsentCatalog>();
  std::unique_ptr<Hooks> hooks = std::make_unique<AbsentHooks>();
  std::unique_ptr<RegisteredGames> games = std::make_unique<AbsentRegisteredGames>();
};

LinuxMachine::LinuxMachine(std::unique_ptr<Parts> parts) : m_parts(std::move(parts)) {}
LinuxMachine::~LinuxMachine() = default;

std::unique_ptr<LinuxMachine> LinuxMachine::forDesktop(const XdgFolders& folders, EventLoop& loop,
                                                       std::string program,
                                                       std::function<void()> onDesktopLost) {
  std::unique_ptr<LinuxMachine> machine = withBand(folders, &loop);
  const auto& parts = machine->m_parts;
  parts->systemBus = std::make_unique<BusConnection>(loop, BusConnection::Kind::system);
  parts->sessionBus = std::make_unique<BusConnection>(loop, BusConnection::Kind::session);
  const auto installed = std::make_shared<DesktopEntries>(folders.allData());
  auto power = std::make_unique<DesktopPowerAssertions>(
      *parts->systemBus, *parts->sessionBus,
      HolderSources{parts->processes, flatpakFolder(folders), installed});
  auto audio = std::make_unique<LinuxAudio>(
      parts->kernel, LinuxAudio::Servers{.pipeWire = pipeWireSocket([](const char* name) -> const char* {
                                           return std::getenv(name);
                                         })},
      std::vector<Question*>{&power->question()});
  // Both are asked afresh, which takes no longer than at a Boost.
  parts->desktopFacts = [sound = audio.get(), holders = power.get(), band = parts->linuxBand] {
    auto facts = band->levers();
    holders->ask(); // at the same time as the sound servers, as for a decision
    const std::size_t heard = sound->runningOutput().size();
    facts.emplace_back("Sound", (sound->hasAnswered() ? "" : "no sound server answers, ") +
                                    std::to_string(heard) + " processes are heard");
    const std::size_t awake = holders->assertions().size();
    facts.emplace_back("Inhibitors", std::to_string(awake) + " are held" +
                                         (holders->hasLogindAnswered() ? "" : ", logind does not answer"));
    return facts;
  };
  parts->audio = std::move(audio);
  parts->power = std::move(power);
  parts->pressure = std::make_unique<PsiMemoryPressure>(loop);
  DesktopSource source = DesktopProbe(loop, *parts->kernel, *parts->sessionBus,
                                      SessionNames::fromEnvironment(), names::feed, installed)
                             .find();
  parts->desktop = source.name;
  parts->workspace = workspaceOn(loop, std::move(source),
                                 {.installed = installed, .onDesktopLost = std::move(onDesktopLost)});
  parts->notifications = std::make_unique<DesktopNotifications>(*parts->sessionBus);
  parts->loginItem = std::make_unique<AutostartLoginItem>(AutostartSetup::from(
      folders, [](const char* name) -> const char* { return std::getenv(name); }, std::move(program)));
  parts->catalog = std::make_unique<DesktopCatalog>(installed);
  parts->hooks = std::make_unique<PersonsHooks>(loop, folders.config + "/" + names::display + "/hooks");
  parts->games = std::make_unique<GameModeGames>(loop, *parts->sessionBus, *parts->kernel, parts->processes);
  return machine;
}

std::unique_ptr<LinuxMachine> LinuxMachine::forRecovery(const XdgFolders& folders) {
  return withBand(folders, nullptr);
}

std::unique_ptr<LinuxMachine> LinuxMachine::withBand(const XdgFolders& folders, EventLoop* given) {
  auto parts = std::make_unique<Parts>(folders, epochPaths(folders));
  EventLoop& loop = given != nullptr ? *given : parts->ownLoop;
  auto band =
      std::make_unique<LinuxBand>(loop, parts->files,
                                  BandParts{.kernel = parts->kernel,
                                            .manager = std::make_unique<UserManager>(loop, userBus(folders)),
                                            .ledgers = ledgerPaths(folders)});
  parts->linuxBand = band.get();
  parts->band = std::move(band);
  return std::unique_ptr<LinuxMachine>(new LinuxMachine(std::move(parts)));
}

std::unique_ptr<LinuxMachine> LinuxMachine::forSelfTest(const XdgFolders& folders) {
  auto parts = std::make_unique<Parts>(folders, std::vector<std::string>{});
  // A copy of the program may be running, so the test keeps out of its ledger; and an emulated machine may
  // take its time.
  auto band = std::make_unique<LinuxBand>(
      parts->ownLoop, parts->files,
      BandParts{.manager = std::make_unique<UserManager>(parts->ownLoop, userBus(folders)),
                .busLimit = std::chrono::seconds(2)});
  const SilentErrors silence;
  const SessionNames session = SessionNames::fromEnvironment();
  // Beside the program's own, which a running copy has.
  parts->sessionBus = std::make_unique<BusConnection>(parts->ownLoop, BusConnection::Kind::session);
  DesktopSource source =
      DesktopProbe(parts->ownLoop, *parts->kernel, *parts->sessionBus, session,
                   std::string(names::feed) + ".test", std::make_shared<DesktopEntries>(folders.allData()))
          .find();
  parts->desktop = source.name;
  const bool isDesktop = !session.display.empty() || !session.waylandDisplay.empty();
  if (isDesktop && appsShareSessions(parts->ownLoop, std::move(source), *parts->kernel, parts->processes)) {
    // Among those that share a session, only a comparison with the app in front tells what helps. The process
    // that is started first is none of those that are slowed.
    parts->launcher = SessionLauncher(
        [band = band.get(), isFirst = true](Pid pid) mutable {
          band->placeAsApp(pid);
          if (std::exchange(isFirst, false)) band->compareWith(pid);
        },
        SessionLauncher::Session::shared);
  } else {
    parts->launcher = SessionLauncher([band = band.get()](Pid pid) { band->placeAsApp(pid); });
  }
  parts->band = std::move(band);
  return std::unique_ptr<LinuxMachine>(new LinuxMachine(std::move(parts)));
}

std::string LinuxMachine::desktop() const { return *m_parts->desktop; }

std::vector<std::pair<std::string, std::string>> LinuxMachine::facts() const {
  std::vector<std::pair<std::string, std::string>> all = systemFacts(*m_parts->kernel);
  all.emplace_back("Windows are seen through", desktop());
  if (m_parts->desktopFacts) {
    for (auto& fact : m_parts->desktopFacts()) all.push_back(std::move(fact));
  }
  return all;
}

Machine LinuxMachine::machine() {
  Parts& parts = *m_parts;
  return {parts.host,   parts.processes, *parts.band,          *parts.workspace, *parts.audio,
          *parts.power, *parts.pressure, *parts.notifications, parts.defaults,   parts.files,
          parts.clock,  parts.launcher,  parts.text,           *parts.loginItem, *parts.catalog,
          *parts.hooks, *parts.games};
}

} // namespace vantle
