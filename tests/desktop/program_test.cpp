// SPDX-License-Identifier: MIT
// The program itself from its first instruction to its last: how it starts, beside whom, and how it ends.
// What is slowed is asked of the kernel, for every process of the user, not of the program.
#include "tests/support/AccessibleTree.h"
#include "tests/support/Isolation.h"
#include "tests/support/KernelState.h"
#include "tests/support/Props.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VirtualDesktop.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <random>
#include <regex>
#include <sched.h>
#include <set>
#include <string>
#include <sys/mount.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace vantle::desktop {
namespace {

namespace fs = std::filesystem;

constexpr uid_t somebody = 65534;

enum class Who { root, somebodyElse };

std::string contents(const fs::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string nameOf(Pid pid) {
  std::string name;
  std::getline(std::ifstream("/proc/" + std::to_string(pid) + "/comm"), name);
  return name;
}

// What is there of a file, so that a new one with the same words is told apart.
std::string traceOf(const fs::path& path) {
  std::error_code error;
  const auto written = fs::last_write_time(path, error).time_since_epoch().count();
  return error ? "none" : contents(path) + " of " + std::to_string(written);
}

std::string desktopFile(const std::string& name, const std::string& more = {}) {
  return "[Desktop Entry]\nType=Application\nExec=true\nName=" + name + "\nStartupWMClass=" + name + "\n" +
         more;
}

class Vantle : public testing::TestWithParam<Who> {
 protected:
  struct Ended {
    std::optional<int> status;
    std::string output;
    std::string errors;
  };

  void SetUp() override {
    const bool isRoot = ::geteuid() == 0;
    if (GetParam() == Who::root && !isRoot) GTEST_SKIP() << "needs root";
    if (isRoot && GetParam() == Who::somebodyElse) m_options.user = somebody;
    m_user = m_options.user.value_or(::geteuid());
    m_options.windowManager = false; // it reads its configuration when it starts
    m_desktop = std::make_unique<VirtualDesktop>(m_options);
    m_desktop->setEnvironment("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    m_desktop->setEnvironment("QT_QPA_PLATFORM", "xcb");
    m_desktop->installDesktopFile("org.example.Game", desktopFile("Game", "Categories=Game;\n"));
    for (const char* name : {"Mail", "Editor"}) {
      m_desktop->installDesktopFile(std::string("org.example.") + name, desktopFile(name));
    }
    configureWindowManager();
    m_desktop->startWindowManager();
  }

  // Keys that have the window manager itself start apps.
  void configureWindowManager() {
    std::string keys;
    const auto key = [&](const std::string& name, const std::string& command) {
      keys += "<keybind key=\"" + name + "\"><action name=\"Execute\"><command>" + command +
              "</command></action></keybind>\n";
    };
    key("F5", testWindow() + " --class Editor --title Editor --threads 1");
    key("F6", testWindow() + " --class Game --title Game --background");
    key("F7", "setsid " + testWindow() + " --class Editor --title OnItsOwn");
    m_desktop->folder().folder("home/.config/openbox");
    m_desktop->folder().write(
        "home/.config/openbox/rc.xml",
        "<?xml version=\"1.0\"?>\n<openbox_config xmlns=\"http://openbox.org/3.4/rc\">\n"
        "<keyboard>\n" +
            keys + "</keyboard>\n</openbox_config>\n");
  }
  Pid pressed(const char* key, const char* title) {
    EXPECT_TRUE(m_desktop->run({"xdotool", "key", key}));
    return m_desktop->waitForWindowTitled(title).pid;
  }

  Program& app(const std::string& name, std::vector<std::string> more = {}) {
    std::vector<std::string> command{testWindow(), "--class", name, "--title", name};
    command.insert(command.end(), more.begin(), more.end());
    Program& program = m_desktop->launch(std::move(command));
    m_desktop->waitForWindow(program.pid());
    return program;
  }
  Program& game() { return app("Game", {"--background"}); }

  // What it says goes to files of its own; the process that is returned becomes the program.
  Program& launchVantle(const std::vector<std::string>& arguments = {}, const Environment& added = {}) {
    const std::string number = std::to_string(++m_runs);
    m_output = m_desktop->folder().path() / ("tmp/out" + number);
    m_errors = m_desktop->folder().path() / ("tmp/err" + number);
    std::vector<std::string> command{"/bin/sh", "-c",
                                     // A variable can be replaced for one program, but not left out.
                                     "test \"$DISPLAY\" != unset || unset DISPLAY; exec \"$0\" \"$@\" >" +
                                         m_output.string() + " 2>" + m_errors.string(),
                                     VANTLE_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return m_desktop->launch(std::move(command), added);
  }
  Ended end(Program& program) {
    const auto status = program.exitStatus();
    return {status, contents(m_output), contents(m_errors)};
  }
  void startVantle() {
    m_vantle = &launchVantle();
    require("Vantle", [&] { return m_desktop->hasBusName("com.halvo.vantle") || !m_vantle->isRunning(); });
    ASSERT_TRUE(m_vantle->isRunning()) << *m_vantle->exitStatus() << contents(m_errors);
  }

  fs::path journalFile() const { return m_desktop->dataHome() / "Vantle/journal.json"; }
  std::string journal() const { return contents(journalFile()); }
  fs::path settingsFile(const std::string& domain) const {
    return m_desktop->configHome() / domain / "defaults.json";
  }
  void writeSettings(const std::string& domain, const std::string& text) {
    m_desktop->folder().folder("home/.config/" + domain);
    m_desktop->folder().write("home/.config/" + domain + "/defaults.json", text);
  }

  void remember() { m_before = machineState(m_user); }
  std::string changes() const { return changesSince(m_before, m_user); }
  bool becomesUnchanged() {
    return waitUntil([&] { return changes().empty(); }, std::chrono::seconds(10));
  }
  bool becomesSlowed(const Program& program) { return becomesSlowed(program.pid()); }
  bool becomesSlowed(Pid pid) {
    return waitUntil([&] { return isSlowed(pid); });
  }
  // An app and a game; the game is in front and the app slowed, and before that all was remembered.
  void startBoost(Program& played, const Program& slowed) {
    startVantle();
    remember();
    m_desktop->activate(played);
    ASSERT_TRUE(becomesSlowed(slowed));
  }
  // A copy that was killed in the middle of a Boost has left this app slowed; nothing else is.
  void leaveSlowed(Program& played, const Program& slowed) {
    ASSERT_NO_FATAL_FAILURE(startBoost(played, slowed));
    m_vantle->kill();
    ASSERT_TRUE(isSlowed(slowed.pid()));
    ASSERT_NE(journal(), "[]");
  }

  // The name of a display whose server wants a password that nobody has.
  std::string refusingDisplay() {
    const std::string protocol = "MIT-MAGIC-COOKIE-1";
    std::string entry("\xff\xff\0\0\0\0\0", 7); // any machine, any display
    entry += static_cast<char>(protocol.size());
    entry += protocol + std::string("\0\x10", 2) + "0123456789abcdef";
    const fs::path file = m_desktop->folder().write("authority", entry);
    return otherDisplay("-auth " + file.string()).name;
  }
  // One whose server takes connections and never answers.
  std::string hungDisplay() {
    const OtherDisplay other = otherDisplay("-ac");
    other.server->signal(SIGSTOP);
    return other.name;
  }
  struct OtherDisplay {
    std::string name;
    Program* server;
  };
  OtherDisplay otherDisplay(const std::string& options) {
    const fs::path number = m_desktop->folder().path() / "tmp/number";
    Program& server = m_desktop->launch(
        {"/bin/sh", "-c",
         "exec Xvfb -displayfd 1 " + options + " -nolisten tcp -noreset >" + number.string()});
    require("the other X server", [&] { return contents(number).ends_with('\n'); });
    const std::string text = contents(number);
    return {":" + text.substr(0, text.find('\n')), &server};
  }

  VirtualDesktop::Options m_options;
  uid_t m_user = 0;
  std::unique_ptr<VirtualDesktop> m_desktop;
  Program* m_vantle = nullptr;
  MachineState m_before;
  int m_runs = 0;
  fs::path m_output;
  fs::path m_errors;
};

// --- The self-test
// ---------------------------------------------------------------------------------------------

constexpr const char* announcement =
    "Vantle self-test: takes about 8 seconds, the CPU runs at full load meanwhile.\n\n";
constexpr const char* worksLine =
    "\nRESULT: Works. Backgrounding is effective on this Mac and can be undone.\n";

int processors() {
  cpu_set_t set;
  CPU_ZERO(&set);
  ::sched_getaffinity(0, sizeof set, &set);
  return CPU_COUNT(&set);
}

std::vector<Pid> selfTestProcesses(uid_t user) {
  std::vector<Pid> found;
  for (const auto& [pid, state] : machineState(user)) {
    if (nameOf(pid) == "yes") found.push_back(pid);
  }
  return found;
}

class SelfTest : public Vantle {
 protected:
  // Every line to the character, and the verdict that follows from the figures.
  struct Report {
    int succeeded = 0;
    int flagged = 0;
    int share = 0;
    int restored = 0;
    bool works = false;
  };
  Report read(const Ended& ended, const std::string& desktop = "X11") {
    const std::string n = std::to_string(processors());
    const std::string own = std::to_string(20 + ::getpriority(PRIO_PROCESS, 0)); // which all inherit
    const std::regex form(
        std::string(announcement) + "1\\. Backgrounding: ([0-9]+)/" + n +
        " calls succeeded, flag seen on ([0-9]+)/" + n +
        " processes\n"
        "2\\. Scheduler priority: normal " +
        own + ", background " + own +
        "\n"
        "3\\. CPU share: background processes got ([0-9]+)% of the CPU the normal ones got\n"
        "4\\. Restore: ([0-9]+)/" +
        n + " processes back to normal\n([^]*)Desktop: " + desktop + "\n");
    std::smatch parts;
    Report report;
    EXPECT_TRUE(std::regex_match(ended.output, parts, form)) << ended.output;
    if (parts.empty()) return report;
    report.succeeded = std::stoi(parts[1]);
    report.flagged = std::stoi(parts[2]);
    report.share = std::stoi(parts[3]);
    report.restored = std::stoi(parts[4]);
    report.works = report.succeeded == processors() && report.flagged == processors() && report.share < 50 &&
                   report.restored == processors();
    EXPECT_EQ(parts[5].str(), report.works ? worksLine : "\nRESULT: Not as expected.\n");
    EXPECT_EQ(ended.status, report.works ? 0 : 1);
    EXPECT_EQ(ended.errors, "");
    EXPECT_THAT(selfTestProcesses(m_user), testing::IsEmpty()) << "left over";
    return report;
  }
  // While the test processes run: half of them slowed.
  void expectHalfSlowed() {
    const auto count = static_cast<std::size_t>(processors());
    std::vector<Pid> busy;
    EXPECT_TRUE(waitUntil([&] {
      busy = selfTestProcesses(m_user);
      return busy.size() == 2 * count &&
             std::count_if(busy.begin(), busy.end(), isSlowed) == static_cast<std::ptrdiff_t>(count);
    })) << busy.size();
  }
  void expectAllBusy() {
    require("the test processes",
            [&] { return selfTestProcesses(m_user).size() == 2 * static_cast<std::size_t>(processors()); });
  }
  void expectNoneBusy() {
    EXPECT_TRUE(waitUntil([&] { return selfTestProcesses(m_user).empty(); }, std::chrono::seconds(5)));
    for (const Pid pid : selfTestProcesses(m_user)) ::kill(pid, SIGKILL);
  }
  static bool sessionsWeigh() { return contents("/proc/sys/kernel/sched_autogroup_enabled") == "1\n"; }
};

TEST_P(SelfTest, SaysToTheCharacterWhatItFoundWithoutADesktop) {
  if (!sessionsWeigh()) GTEST_SKIP() << "this kernel has no automatic groups";
  remember();
  Program& vantle = launchVantle({"--test"}, {{"DISPLAY", "unset"}});
  expectHalfSlowed();
  EXPECT_TRUE(read(end(vantle), "no desktop \\(nothing is seen\\)").works) << contents(m_output);
  EXPECT_EQ(changes(), "");
  EXPECT_FALSE(fs::exists(m_desktop->dataHome() / "Vantle")) << "it keeps nothing";
}

TEST_P(SelfTest, AndABoostLeaveEachOtherAlone) {
  if (!sessionsWeigh()) GTEST_SKIP() << "this kernel has no automatic groups";
  Program& mail = app("Mail", {"--threads", "2", "--children", "1"});
  Program& played = game();
  ASSERT_NO_FATAL_FAILURE(startBoost(played, mail));
  // The weights of sessions follow one by one.
  require("the session", [&] { return kernelState(mail.pid()).sessionNice == 19; });
  const MachineState before = m_before;
  const std::string written = traceOf(journalFile());
  remember();
  Program& selfTest = launchVantle({"anything", "--test", "--else"});
  expectHalfSlowed();
  EXPECT_TRUE(isSlowed(mail.pid()));
  EXPECT_EQ(traceOf(journalFile()), written);
  EXPECT_TRUE(read(end(selfTest)).works) << contents(m_output);
  EXPECT_EQ(changes(), "") << "what is slowed stays so";
  EXPECT_EQ(traceOf(journalFile()), written);
  EXPECT_TRUE(m_vantle->isRunning());
  m_before = before;
  played.kill();
  EXPECT_TRUE(becomesUnchanged()) << changes();
}

TEST_P(SelfTest, ThatCannotBeReadHasFailed) {
  const fs::path errors = m_desktop->folder().path() / "tmp/full";
  Program& selfTest = m_desktop->launch(
      {"/bin/sh", "-c", "unset DISPLAY; exec " VANTLE_PROGRAM " --test >/dev/full 2>" + errors.string()});
  EXPECT_EQ(selfTest.exitStatus(), 1);
  EXPECT_EQ(contents(errors), "vantle: the report could not be written.\n");
}

TEST_P(SelfTest, TakesItsProcessesWithItWhenASignalEndsIt) {
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGKILL}) {
    SCOPED_TRACE(number);
    Program& selfTest = launchVantle({"--test"}, {{"DISPLAY", "unset"}});
    expectAllBusy();
    selfTest.signal(number);
    EXPECT_EQ(selfTest.exitStatus(), -number);
    expectNoneBusy();
  }
  // Whoever reads it may have seen enough.
  EXPECT_TRUE(
      m_desktop->run({"/bin/sh", "-c", "unset DISPLAY; " VANTLE_PROGRAM " --test | head -n 1 >/dev/null"}));
  expectNoneBusy();
}

TEST_P(SelfTest, TakesItsProcessesWithItWhenItsTerminalIsClosed) {
  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_GE(terminal, 0);
  ASSERT_EQ(::grantpt(terminal) + ::unlockpt(terminal), 0);
  const std::string name = ::ptsname(terminal);
  if (::geteuid() == 0) {
    ASSERT_EQ(::chown(name.c_str(), m_user, static_cast<gid_t>(-1)), 0);
  }
  // The leader of a session makes the first terminal that it opens its own.
  Program& selfTest =
      m_desktop->launch({"/bin/sh", "-c", "exec " VANTLE_PROGRAM " --test <" + name + " >" + name + " 2>&1"});
  expectAllBusy();
  ::close(terminal);
  EXPECT_EQ(selfTest.exitStatus(), -SIGHUP);
  expectNoneBusy();
}

TEST_P(SelfTest, IsLeftAloneWhileBoostsBeginAndEnd) {
  if (!sessionsWeigh()) GTEST_SKIP() << "this kernel has no automatic groups";
  Program& mail = app("Mail", {"--threads", "1"});
  startVantle();
  remember();
  Program& selfTest = launchVantle({"--test"});
  expectHalfSlowed();
  constexpr std::size_t most = 6;
  std::size_t boosts = 0;
  for (; boosts < most && selfTest.isRunning(); ++boosts) {
    // The X server gives a window the number of one that has gone. The window in front is to have one that no
    // earlier game's had.
    const std::size_t count = boosts + 1;
    Program& played = app("Game", {"--background", "--windows", std::to_string(count)});
    std::vector<XWindows::Window> windows;
    require("its windows",
            [&] { return (windows = m_desktop->windows().ofProcess(played.pid())).size() == count; });
    // The window manager may still be giving away the front that the last game had.
    ASSERT_TRUE(waitUntil([&] {
      if (m_desktop->windows().active() != windows.back().id)
        m_desktop->windows().activate(windows.back().id);
      return isSlowed(mail.pid());
    }));
    played.kill();
    ASSERT_TRUE(waitUntil([&] { return isAtFullSpeed(mail.pid()); }));
  }
  EXPECT_GT(boosts, 1U);
  EXPECT_TRUE(read(end(selfTest)).works) << contents(m_output);
  EXPECT_TRUE(becomesUnchanged()) << changes();
}

TEST_P(SelfTest, SaysNothingOfADesktopThatRefusesIt) {
  Program& selfTest = launchVantle({"--test"}, {{"DISPLAY", refusingDisplay()}});
  require("the test processes", [&] { return !selfTestProcesses(m_user).empty(); });
  selfTest.signal(SIGTERM);
  const Ended ended = end(selfTest);
  EXPECT_EQ(ended.status, -SIGTERM);
  EXPECT_EQ(ended.errors, "");
  EXPECT_TRUE(waitUntil([&] { return selfTestProcesses(m_user).empty(); }));
}

// The recovery of another copy looks at every process of this user that carries a mark.
TEST_P(SelfTest, IsLeftAloneByACopyThatStartsMeanwhile) {
  if (!sessionsWeigh()) GTEST_SKIP() << "this kernel has no automatic groups";
  Program& selfTest = launchVantle({"--test"});
  const fs::path output = m_output;
  expectHalfSlowed();
  startVantle();
  expectHalfSlowed();
  m_output = output;
  EXPECT_TRUE(read(end(selfTest)).works) << contents(output);
}

TEST_P(SelfTest, SaysThatItsProcessesCannotBeStarted) {
  if (::geteuid() != 0 || !canChooseNextPid()) GTEST_SKIP() << "needs mounts of its own";
  const fs::path nothing = m_desktop->folder().write("nothing", "");
  ASSERT_EQ(::mount(nothing.c_str(), "/usr/bin/yes", nullptr, MS_BIND, nullptr), 0);
  const Ended ended = end(launchVantle({"--test"}, {{"DISPLAY", "unset"}}));
  ASSERT_EQ(::umount("/usr/bin/yes"), 0);
  EXPECT_EQ(ended.output, std::string(announcement) + "ERROR: could not start the test processes.\n");
  EXPECT_EQ(ended.errors, "");
  EXPECT_EQ(ended.status, 1);
}

// --- Ends
// ------------------------------------------------------------------------------------------------------

class Ending : public Vantle {};

TEST_P(Ending, FromThePanelPutsEverythingBack) {
  AccessibleTree tree(*m_desktop);
  Program& mail = app("Mail", {"--threads", "2"});
  Program& editor = app("Editor", {"--children", "2"});
  Program& played = game();
  ASSERT_NO_FATAL_FAILURE(startBoost(played, mail));
  ASSERT_TRUE(becomesSlowed(editor));
  ASSERT_TRUE(m_desktop->callApplication("Activate"));
  std::optional<AccessibleTree::Node> quit;
  require("the button", [&] { return (quit = tree.control("vantle", "Quit Vantle")).has_value(); });
  EXPECT_TRUE(tree.shows("vantle", "Boost on"));
  EXPECT_TRUE(isSlowed(mail.pid()));
  tree.press(*quit);
  const Ended ended = end(*m_vantle);
  EXPECT_EQ(changes(), "") << "back before its end";
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(ended.errors, "");
  EXPECT_EQ(journal(), "[]");
}

// Whether a signal cannot end the program by itself. Before it is the program, the C library of Debian 13
// holds signals back for a moment, in the child of a fork.
bool isProofAgainst(Pid pid, int number) {
  const std::string status = contents("/proc/" + std::to_string(pid) + "/status");
  if (!status.starts_with("Name:\tvantle\n")) return false;
  for (const char* mask : {"\nSigBlk:", "\nSigCgt:"}) {
    const std::size_t at = status.find(mask);
    if (at == std::string::npos) continue;
    const auto bits = std::stoull(status.substr(at + 8), nullptr, 16);
    if ((bits >> (number - 1) & 1U) != 0) return true;
  }
  return false;
}

// Before it holds the signals it has not even looked for another copy, so it may simply die.
TEST_P(Ending, ByASignalAtAnyMomentOfTheStartLeavesNothingSlowed) {
  constexpr int rounds = 30;
  Program& mail = app("Mail", {"--threads", "1"});
  app("Editor", {"--children", "1"});
  Program& played = game();
  m_desktop->activate(played);
  remember();
  const auto began = std::chrono::steady_clock::now();
  m_vantle = &launchVantle();
  ASSERT_TRUE(becomesSlowed(mail)) << "a game in front starts a Boost";
  const auto whole = std::chrono::steady_clock::now() - began;
  m_vantle->signal(SIGTERM);
  ASSERT_EQ(m_vantle->exitStatus(), 0);

  int died = 0;
  int ended = 0;
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    const std::array numbers{SIGTERM, SIGINT, SIGHUP};
    const int number = numbers.at(static_cast<std::size_t>(round) % numbers.size());
    SCOPED_TRACE("signal " + std::to_string(number) + ", round " + std::to_string(round));
    Program& vantle = launchVantle();
    if (round % 4 == 3) { // in the middle of the first pass
      ASSERT_TRUE(waitUntil([&] { return !isAtFullSpeed(mail.pid()); }));
    } else {
      std::this_thread::sleep_for(whole * 5 / 4 * round / rounds);
    }
    const bool mustEndInOrder = isProofAgainst(vantle.pid(), number);
    vantle.signal(number);
    // Impatient people press twice.
    if (mustEndInOrder && round % 2 == 1) vantle.signal(number == SIGTERM ? SIGINT : SIGTERM);
    const auto status = vantle.exitStatus();
    if (mustEndInOrder || status == 0) {
      EXPECT_EQ(status, 0);
      ++ended;
    } else {
      EXPECT_EQ(status, -number);
      ++died;
    }
    EXPECT_EQ(changes(), "");
    EXPECT_EQ(journal(), "[]");
    EXPECT_EQ(contents(m_errors), "");
  }
  RecordProperty("died_before_anything", died);
  EXPECT_GT(ended, 0);
  EXPECT_TRUE(isAtFullSpeed(mail.pid()));
}

// The X server of the desktop takes what it is sent and answers nothing any more.
class HungServer {
 public:
  explicit HungServer(Program& server) : m_server(server) { m_server.signal(SIGSTOP); }
  ~HungServer() { m_server.signal(SIGCONT); }
  HungServer(const HungServer&) = delete;
  HungServer& operator=(const HungServer&) = delete;

 private:
  Program& m_server;
};

TEST_P(Ending, ByASignalIsInTimeBesideAServerThatHangs) {
  Program& mail = app("Mail", {"--threads", "2"});
  Program& played = game();
  ASSERT_NO_FATAL_FAILURE(startBoost(played, mail));
  const HungServer hung(m_desktop->xServer());
  m_vantle->signal(SIGTERM);
  const Ended ended = end(*m_vantle);
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(changes(), "") << "back before its end";
  EXPECT_EQ(journal(), "[]");
}

// A wait that no signal ends, as one for a file system that has died: only this thread stops.
void stopMainThread(Pid pid) {
  ASSERT_EQ(::ptrace(PTRACE_SEIZE, pid, nullptr, nullptr), 0);
  ASSERT_EQ(::ptrace(PTRACE_INTERRUPT, pid, nullptr, nullptr), 0);
  int status = 0;
  ASSERT_EQ(::waitpid(pid, &status, __WALL), pid);
  ASSERT_TRUE(WIFSTOPPED(status));
}

TEST_P(Ending, ByASignalIsInTimeWhenTheMainThreadHangs) {
  Program& mail = app("Mail", {"--threads", "2", "--children", "1"});
  Program& played = game();
  ASSERT_NO_FATAL_FAILURE(startBoost(played, mail));
  ASSERT_NO_FATAL_FAILURE(stopMainThread(m_vantle->pid()));
  m_vantle->signal(SIGTERM);
  const Ended ended = end(*m_vantle);
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(changes(), "") << "back before its end";
  EXPECT_EQ(journal(), "[]");
}

TEST_P(Ending, BySigquitIsACrashThatTheNextStartMends) {
  Program& mail = app("Mail", {"--threads", "1"});
  Program& editor = app("Editor", {"--children", "1"});
  Program& played = game();
  ASSERT_NO_FATAL_FAILURE(startBoost(played, mail));
  ASSERT_TRUE(becomesSlowed(editor));
  m_vantle->signal(SIGQUIT);
  EXPECT_EQ(m_vantle->exitStatus(), -SIGQUIT);
  EXPECT_TRUE(isSlowed(mail.pid()));
  m_desktop->activate(editor); // or the next copy starts with a Boost
  startVantle();
  EXPECT_TRUE(becomesUnchanged()) << changes();
  EXPECT_EQ(journal(), "[]");
}

// --- Starts
// ----------------------------------------------------------------------------------------------------

class Beginning : public Vantle {};

TEST_P(Beginning, AsksTheFormerEditionToQuitAndTakesOverWhatItLeft) {
  m_desktop->installDesktopFile("com.halvo.murn", desktopFile("Murn"));
  Program& mail = app("Mail", {"--threads", "1"});
  Program& played = game();
  ASSERT_NO_FATAL_FAILURE(leaveSlowed(played, mail));
  const fs::path former = m_desktop->dataHome() / "Murn";
  m_desktop->folder().folder("home/.local/share/Murn/more");
  m_desktop->folder().write("home/.local/share/Murn/kayit.json", journal());
  m_desktop->folder().write("home/.local/share/Murn/more/notes", "kept for nobody");
  fs::remove(journalFile());
  fs::remove(settingsFile("com.halvo.vantle"));
  writeSettings("com.halvo.murn", R"({"userGames": ["org.example.Editor"], "accent": "teal", "odd": [1]})");
  Program& edition = app("Murn");
  Program& stubborn = app("Murn", {"--ignore-close"});

  startVantle();
  EXPECT_EQ(edition.exitStatus(), 0) << "its window was closed";
  EXPECT_TRUE(stubborn.isRunning()) << "nobody is forced";
  EXPECT_TRUE(becomesUnchanged()) << changes();
  EXPECT_EQ(journal(), "[]");
  EXPECT_FALSE(fs::exists(former));
  const std::string settings = contents(settingsFile("com.halvo.vantle"));
  EXPECT_NE(settings.find("org.example.Editor"), std::string::npos) << settings;
  EXPECT_NE(settings.find("teal"), std::string::npos) << settings;
  EXPECT_EQ(settings.find("odd"), std::string::npos) << settings;
  Program& editor = app("Editor", {"--background"});
  m_desktop->activate(editor);
  EXPECT_TRUE(becomesSlowed(mail)) << "the former edition's own Boost app is one now";
  m_vantle->signal(SIGTERM);
  ASSERT_EQ(m_vantle->exitStatus(), 0);

  writeSettings("com.halvo.murn", R"({"accent": "pink", "appearance": "dark"})");
  m_desktop->activate(stubborn);
  startVantle();
  m_vantle->signal(SIGTERM);
  ASSERT_EQ(m_vantle->exitStatus(), 0);
  const std::string later = contents(settingsFile("com.halvo.vantle"));
  EXPECT_NE(later.find("teal"), std::string::npos) << later;
  EXPECT_EQ(later.find("dark"), std::string::npos) << "migrated once " << later;
}

TEST_P(Beginning, PutsBackWhatWasLeftBeforeItSlowsAnything) {
  Program& mail = app("Mail", {"--threads", "3", "--children", "3"});
  Program& played = game();
  ASSERT_NO_FATAL_FAILURE(leaveSlowed(played, mail));
  const std::set<Pid> left = processesOf({mail.pid()});
  ASSERT_EQ(left.size(), 4U);
  // From now on nothing may slow it, so that "slowed" can only mean "still slowed".
  writeSettings("com.halvo.vantle", R"({"protectedApps": ["org.example.Mail"], "migratedFromMurn": true})");
  Program& editor = app("Editor", {"--background"});
  ASSERT_TRUE(isAtFullSpeed(editor.pid()));
  ASSERT_EQ(m_desktop->windows().active(), m_desktop->waitForWindow(played.pid()).id);
  m_vantle = &launchVantle();
  const auto spinUntil = [](const auto& condition) {
    const auto end = std::chrono::steady_clock::now() + guardLimit;
    while (!condition() && std::chrono::steady_clock::now() < end) {
    }
  };
  // The kernel makes an ordinary user wait for the weights of sessions; the mark waits with them, nothing
  // else.
  spinUntil([&] { return !isAtFullSpeed(editor.pid()); });
  for (const Pid pid : left) {
    const KernelState now = kernelState(pid);
    for (const auto& [id, thread] : now.threads) {
      const test::ThreadState& before = m_before[pid].threads[id];
      EXPECT_EQ(thread.policy, before.policy) << "when the first new one was slowed";
      EXPECT_EQ(thread.affinity, before.affinity) << "when the first new one was slowed";
    }
    if (m_user == 0) {
      EXPECT_EQ(now, m_before[pid]);
    }
  }
  spinUntil([&] { return kernelState(editor.pid()).sessionNice == 19; });
  for (const Pid pid : left)
    EXPECT_EQ(kernelState(pid).sessionNice, 0) << "when the new one's weight changed";
  EXPECT_TRUE(becomesSlowed(editor));
  for (const Pid pid : left) {
    EXPECT_TRUE(waitUntil([&] { return kernelState(pid) == m_before[pid]; })) << kernelState(pid);
  }
  played.kill();
  EXPECT_TRUE(becomesUnchanged()) << changes();
}

TEST_P(Beginning, OfASecondCopyChangesNothing) {
  Program& mail = app("Mail", {"--threads", "1"});
  Program& played = game();
  startVantle();
  const auto expectNothing = [&] {
    const std::string written = traceOf(journalFile()) + traceOf(settingsFile("com.halvo.vantle"));
    const MachineState before = machineState(m_user);
    const Ended second = end(launchVantle());
    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(second.output + second.errors, "");
    EXPECT_EQ(changesSince(before, m_user), "");
    EXPECT_EQ(traceOf(journalFile()) + traceOf(settingsFile("com.halvo.vantle")), written);
    EXPECT_TRUE(m_vantle->isRunning());
  };
  expectNothing();
  remember();
  m_desktop->activate(played);
  ASSERT_TRUE(becomesSlowed(mail));
  require("the session", [&] { return kernelState(mail.pid()).sessionNice == 19; });
  expectNothing();
  // Where the first one cannot be asked, on a console, it holds its lock all the same.
  EXPECT_EQ(end(launchVantle({}, {{"DISPLAY", ":4711"}})).status, 0);
  EXPECT_TRUE(isSlowed(mail.pid()));
  played.kill();
  EXPECT_TRUE(becomesUnchanged()) << changes();
}

// As with "sudo -E": the folders of the environment are the person's, who leads what is written there
// elsewhere.
TEST_P(Beginning, AsRootInAPersonsFoldersWritesNothing) {
  if (::geteuid() != 0 || GetParam() == Who::root) GTEST_SKIP() << "needs root and a person";
  const TemporaryFolder roots;
  const fs::path precious = roots.write("precious", "precious");
  m_desktop->folder().folder("home/.local/share/Vantle");
  for (const char* name : {"journal.json", "boot.json", "com.halvo.vantle.lock"}) {
    fs::create_symlink(precious, m_desktop->dataHome() / "Vantle" / name);
  }
  const fs::path errors = roots.path() / "errors";
  Program& vantle = m_desktop->launchAs(
      uid_t{0}, {"/bin/sh", "-c", "unset DISPLAY; exec " VANTLE_PROGRAM " 2>" + errors.string()});
  EXPECT_EQ(vantle.exitStatus(), 1);
  EXPECT_EQ(contents(precious), "precious");
  EXPECT_THAT(contents(errors), testing::HasSubstr("nothing is kept there.\n"));
  for (const char* name : {"journal.json", "boot.json", "com.halvo.vantle.lock"}) {
    EXPECT_TRUE(fs::is_symlink(m_desktop->dataHome() / "Vantle" / name)) << name;
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(m_desktop->dataHome() / "Vantle"), {}), 3);
}

TEST_P(Beginning, OfASecondCopyEndsItThoughTheLockFileIsGone) {
  startVantle();
  fs::remove(m_desktop->runtimeDir() / "com.halvo.vantle.lock");
  EXPECT_EQ(end(launchVantle()).status, 0);
  EXPECT_TRUE(m_vantle->isRunning());
}

TEST_P(Beginning, BesideAPipeForAJournalAndForAProgram) {
  m_desktop->folder().folder("home/.local/share/Vantle");
  const fs::path pipe = m_desktop->folder().path() / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0777), 0);
  ASSERT_EQ(::chmod(pipe.c_str(), 0777), 0);
  ASSERT_EQ(::mkfifo(journalFile().c_str(), 0666), 0);
  m_desktop->installDesktopFile("org.example.Pipe",
                                "[Desktop Entry]\nType=Application\nName=Pipe\nExec=" + pipe.string() + "\n");
  Program& mail = app("Mail", {"--threads", "1"});
  Program& played = game();
  startBoost(played, mail);
  played.kill();
  EXPECT_TRUE(becomesUnchanged()) << changes();
}

// The argument is for nobody else: beside a copy that runs it would put back what that one has slowed.
TEST_P(Beginning, AsAHelperTakesAParentThatNeedsOne) {
  Program& mail = app("Mail", {"--threads", "1"});
  Program& played = game();
  ASSERT_NO_FATAL_FAILURE(startBoost(played, mail));
  EXPECT_EQ(end(launchVantle({"--put-back"})).status, 0);
  EXPECT_TRUE(isSlowed(mail.pid()));
}

TEST_P(Beginning, OfManyAtOnceLeavesOne) {
  constexpr std::size_t many = 6;
  std::vector<Program*> copies;
  copies.reserve(many);
  while (copies.size() < many) copies.push_back(&launchVantle());
  const auto running = [&] {
    return std::count_if(copies.begin(), copies.end(), [](Program* copy) { return copy->isRunning(); });
  };
  require("one", [&] { return running() <= 1 && m_desktop->hasBusName("com.halvo.vantle"); });
  EXPECT_EQ(running(), 1);
  for (Program* copy : copies) {
    copy->signal(SIGTERM);
    EXPECT_EQ(copy->exitStatus(), 0);
  }
}

class NoDesktop : public Vantle {
 protected:
  // The start fails, and has put back what another left.
  void expectOnlyRecovery(const Environment& environment, const std::string& line) {
    Program& mail = app("Mail", {"--threads", "2", "--children", "1"});
    Program& played = game();
    ASSERT_NO_FATAL_FAILURE(leaveSlowed(played, mail));
    m_desktop->setEnvironment("QT_QPA_PLATFORM", "");
    Program& vantle = launchVantle({}, environment);
    EXPECT_TRUE(vantle.exitStatus(2 * guardLimit)); // it may wait for an answer
    const Ended ended = end(vantle);
    EXPECT_EQ(changes(), "") << "back before its end";
    EXPECT_EQ(journal(), "[]");
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors, testing::EndsWith(line + "\n"));
  }
  static constexpr const char* none =
      "vantle: there is no desktop session here (neither DISPLAY nor WAYLAND_DISPLAY is set).";
  static constexpr const char* unreachable =
      "vantle: the desktop session that DISPLAY or WAYLAND_DISPLAY names cannot be reached.";
  static constexpr const char* silent = "vantle: the desktop session does not answer.";
};

TEST_P(NoDesktop, NamedIsSaidAndWhatWasLeftIsPutBack) { expectOnlyRecovery({{"DISPLAY", "unset"}}, none); }

TEST_P(NoDesktop, NamedByAnEmptyWordIsTheSame) { expectOnlyRecovery({{"DISPLAY", ""}}, none); }

TEST_P(NoDesktop, WhereTheNameLeadsIsSaidAndWhatWasLeftIsPutBack) {
  expectOnlyRecovery({{"DISPLAY", ":4711"}}, unreachable);
}

TEST_P(NoDesktop, WhereTheWaylandNameLeadsIsSaidAndWhatWasLeftIsPutBack) {
  expectOnlyRecovery({{"DISPLAY", "unset"}, {"WAYLAND_DISPLAY", "nowhere"}}, unreachable);
}

TEST_P(NoDesktop, NamedByEmptyWordsIsTheSame) {
  expectOnlyRecovery({{"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}}, none);
}

TEST_P(NoDesktop, ThatTheToolkitHasAWordForIsSaidAndWhatWasLeftIsPutBack) {
  expectOnlyRecovery({{"QT_QPA_PLATFORM", "nonsense"}}, unreachable);
}

TEST_P(NoDesktop, ThatAnswersIsSaidAndWhatWasLeftIsPutBack) {
  expectOnlyRecovery({{"DISPLAY", hungDisplay()}}, silent);
}

TEST_P(NoDesktop, ThatAnswersKeepsNothingSlowedAndNoSignalWaiting) {
  Program& mail = app("Mail", {"--threads", "2", "--children", "1"});
  Program& played = game();
  ASSERT_NO_FATAL_FAILURE(leaveSlowed(played, mail));
  const std::string display = hungDisplay();
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    Program& vantle = launchVantle({}, {{"DISPLAY", display}});
    EXPECT_TRUE(becomesUnchanged()) << changes();
    EXPECT_TRUE(waitUntil([&] { return journal() == "[]"; }));
    require("the signals to be held", [&] { return isProofAgainst(vantle.pid(), number); });
    vantle.signal(number);
    EXPECT_EQ(vantle.exitStatus(), 0);
    EXPECT_EQ(contents(m_errors), "");
  }
}

TEST_P(Beginning, CountsAnEmptyOrStaleNameBesideAGoodOneAsNone) {
  m_desktop->setEnvironment("QT_QPA_PLATFORM", "");
  for (const char* wayland : {"", "nowhere"}) {
    m_desktop->setEnvironment("WAYLAND_DISPLAY", wayland);
    ASSERT_NO_FATAL_FAILURE(startVantle()) << wayland;
    m_vantle->signal(SIGTERM);
    EXPECT_EQ(m_vantle->exitStatus(), 0);
    require("the name", [&] { return !m_desktop->hasBusName("com.halvo.vantle"); });
  }
}

TEST_P(NoDesktop, ThatLetsItInIsSaidAndWhatWasLeftIsPutBack) {
  expectOnlyRecovery({{"DISPLAY", refusingDisplay()}}, unreachable);
}

// --- Apps without a session of their own
// -----------------------------------------------------------------------

class WindowManagersApps : public SelfTest {
 protected:
  // It starts apps in its own session.
  Pid started(const char* key, const char* title) {
    const Pid pid = pressed(key, title);
    EXPECT_EQ(::getsid(pid), ::getsid(m_desktop->windowManager().pid())) << "see the window manager's manual";
    return pid;
  }
  bool canUndoAnything() const { return m_user == 0; }
};

TEST_P(WindowManagersApps, AreSlowedOnlyWhereThatCanBeUndone) {
  const Pid editor = started("F5", "Editor");
  const Pid played = started("F6", "Game");
  Program& mail = app("Mail", {"--background"});
  AccessibleTree tree(*m_desktop);
  startVantle();
  remember();
  m_desktop->activate(m_desktop->waitForWindow(played).id);
  // The pass that slowed this one has looked at the others, too.
  ASSERT_TRUE(becomesSlowed(mail));
  ASSERT_TRUE(m_desktop->callApplication("Activate"));
  require("the panel", [&] { return tree.lists("vantle", "Mail"); });
  EXPECT_EQ(tree.lists("vantle", "Editor"), canUndoAnything());
  EXPECT_EQ(isSlowed(editor), canUndoAnything());
  EXPECT_EQ(journal().find("\"pid\":" + std::to_string(editor)) != std::string::npos, canUndoAnything());
  if (!canUndoAnything()) {
    EXPECT_EQ(kernelState(editor), m_before[editor]);
  }
  EXPECT_EQ(kernelState(played), m_before[played]);
  const Pid manager = m_desktop->windowManager().pid();
  EXPECT_EQ(kernelState(manager), m_before[manager]);
  ::kill(played, SIGKILL);
  EXPECT_TRUE(becomesUnchanged()) << changes();
  EXPECT_TRUE(waitUntil([&] { return journal() == "[]"; }));
}

TEST_P(WindowManagersApps, AreSlowedWhenTheConfigurationGivesThemSessions) {
  const Pid editor = pressed("F7", "OnItsOwn");
  ASSERT_EQ(::getsid(editor), editor);
  Program& played = game();
  startVantle();
  remember();
  m_desktop->activate(played);
  EXPECT_TRUE(becomesSlowed(editor));
  EXPECT_TRUE(waitUntil([&] { return kernelState(editor).sessionNice == 19; }));
  played.kill();
  EXPECT_TRUE(becomesUnchanged()) << changes();
}

TEST_P(WindowManagersApps, AreWhatTheSelfTestPromises) {
  started("F5", "Editor");
  Program& selfTest = launchVantle({"--test"});
  std::vector<Pid> busy;
  require("the test processes", [&] {
    busy = selfTestProcesses(m_user);
    return busy.size() == 2 * static_cast<std::size_t>(processors());
  });
  for (const Pid pid : busy) EXPECT_EQ(::getsid(pid), ::getsid(selfTest.pid())) << "as the app stands";
  const Ended ended = end(selfTest);
  const Report report = read(ended);
  EXPECT_EQ(report.works, canUndoAnything()) << ended.output;
  if (!canUndoAnything()) {
    EXPECT_EQ(report.succeeded + report.flagged, 0) << ended.output;
  }
}

TEST_P(WindowManagersApps, DoNotSpeakForADesktopWhereMostHaveSessions) {
  if (!sessionsWeigh()) GTEST_SKIP() << "this kernel has no automatic groups";
  started("F5", "Editor");
  app("Mail");
  app("Notes");
  Program& selfTest = launchVantle({"--test"});
  expectHalfSlowed();
  for (const Pid pid : selfTestProcesses(m_user)) EXPECT_EQ(::getsid(pid), pid);
  selfTest.signal(SIGKILL); // the figures are another test's
  endProcessesOf({selfTest.pid()});
}

const auto everybody = testing::Values(Who::root, Who::somebodyElse);
const auto name = [](const auto& about) { return about.param == Who::root ? "AsRoot" : "AsOrdinaryUser"; };

INSTANTIATE_TEST_SUITE_P(Program, SelfTest, everybody, name);
INSTANTIATE_TEST_SUITE_P(Program, Ending, everybody, name);
INSTANTIATE_TEST_SUITE_P(Program, Beginning, everybody, name);
INSTANTIATE_TEST_SUITE_P(Program, NoDesktop, everybody, name);
INSTANTIATE_TEST_SUITE_P(Program, WindowManagersApps, everybody, name);

} // namespace
} // namespace vantle::desktop
