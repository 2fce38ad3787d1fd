// SPDX-License-Identifier: MIT
// The program itself on a real desktop: what it slows down, and that everything comes back, whatever happens.
#include "tests/support/Isolation.h"
#include "tests/support/KernelState.h"
#include "tests/support/Logind.h"
#include "tests/support/NotificationDaemon.h"
#include "tests/support/Props.h"
#include "tests/support/SoundServer.h"
#include "tests/support/Spammer.h"
#include "tests/support/VirtualDesktop.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>
#include <string>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vantle::desktop {
namespace {

constexpr uid_t somebody = 65534;

enum class Who { root, somebodyElse };

class Boost : public testing::TestWithParam<Who> {
 protected:
  void SetUp() override {
    const bool isRoot = ::geteuid() == 0;
    if (GetParam() == Who::root && !isRoot) GTEST_SKIP() << "needs root";
    VirtualDesktop::Options options;
    if (isRoot && GetParam() == Who::somebodyElse) options.user = somebody;
    m_desktop = std::make_unique<VirtualDesktop>(options);
    for (const char* name : {"Game", "OtherGame"}) {
      // Known by the class of its window: the program itself is that of the other apps, too.
      m_desktop->installDesktopFile(std::string("org.example.") + name,
                                    "[Desktop Entry]\nType=Application\nExec=true\nCategories=Game;\nName=" +
                                        std::string(name) + "\nStartupWMClass=" + name + "\n");
    }
  }

  Program& app(std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.begin(), testWindow());
    Program& program = m_desktop->launch(std::move(arguments));
    m_desktop->waitForWindow(program.pid());
    return program;
  }
  Program& game(const char* name = "Game") { return app({"--class", name, "--background"}); }

  void startVantle(const std::string& errors = "/dev/null") {
    m_vantle = &m_desktop->launch({"sh", "-c", std::string("exec ") + VANTLE_PROGRAM + " 2>" + errors});
    // Recovery has run when the bus knows the program: it is the last thing that it does when it starts.
    require("Vantle", [&] { return m_desktop->hasBusName("com.halvo.vantle") || !m_vantle->isRunning(); });
    ASSERT_TRUE(m_vantle->isRunning()) << *m_vantle->exitStatus();
  }

  std::string journal() const {
    std::ifstream file(m_desktop->dataHome() / "Vantle/journal.json");
    std::string text;
    std::getline(file, text, '\0');
    return text;
  }

  void remember(const std::vector<Pid>& pids) {
    for (const Pid pid : pids) m_before[pid] = kernelState(pid);
  }
  // Everything remembered is as it was, to the last bit.
  void expectAllBack() {
    for (const auto& [pid, before] : m_before) {
      if (!isAlive(pid)) continue;
      EXPECT_TRUE(waitUntil([&] { return kernelState(pid) == before; }, std::chrono::seconds(10)))
          << pid << " was " << before << "\nand is " << kernelState(pid);
    }
    EXPECT_TRUE(waitUntil([&] { return journal() == "[]"; }, std::chrono::seconds(10))) << journal();
  }
  bool becomesSlowed(const Program& program) {
    return waitUntil([&] { return isSlowed(program.pid()); });
  }
  bool becomesFast(const Program& program) {
    return waitUntil([&] { return isAtFullSpeed(program.pid()); });
  }

  std::unique_ptr<VirtualDesktop> m_desktop;
  Program* m_vantle = nullptr;
  std::map<Pid, KernelState> m_before;
};

TEST_P(Boost, LastsFromTheGamesActivationToItsEnd) {
  Program& played = game();
  Program& threaded = app({"--threads", "3", "--children", "2"});
  Program& plain = app();
  Program& notAnApp = m_desktop->launch({"sleep", "1000"});
  std::vector<Pid> all{played.pid(), plain.pid(), notAnApp.pid()};
  for (const Pid pid : processesOf({threaded.pid()})) all.push_back(pid);
  startVantle();
  remember(all);
  m_desktop->activate(played);
  EXPECT_TRUE(becomesSlowed(plain));
  for (const Pid pid : processesOf({threaded.pid()})) {
    EXPECT_TRUE(waitUntil([&] { return isSlowed(pid); })) << pid;
    EXPECT_NE(journal().find("\"pid\":" + std::to_string(pid)), std::string::npos) << journal();
  }
  EXPECT_EQ(kernelState(played.pid()).threads, m_before[played.pid()].threads);
  EXPECT_EQ(kernelState(notAnApp.pid()), m_before[notAnApp.pid()]);
  played.kill();
  expectAllBack();
}

// More windows than descriptors.
TEST_P(Boost, PutsAllBackHoweverManyWindowsThereAre) {
  Program& played = game();
  Program& plain = app();
  Program& many = app({"--windows", "300", "--background"});
  require("the windows", [&] { return m_desktop->windows().list().size() == 302; });
  m_vantle = &m_desktop->launch({"prlimit", "--nofile=256:256", VANTLE_PROGRAM});
  require("Vantle", [&] { return m_desktop->hasBusName("com.halvo.vantle"); });
  remember({played.pid(), plain.pid(), many.pid()});
  m_desktop->activate(played);
  EXPECT_TRUE(becomesSlowed(many));
  EXPECT_TRUE(becomesSlowed(plain));
  m_vantle->signal(SIGTERM);
  EXPECT_EQ(m_vantle->exitStatus(), 0);
  expectAllBack();
}

TEST_P(Boost, PutsAllBackWithFewerDescriptorsThanApps) {
  Program& played = game();
  std::vector<Program*> apps(60);
  for (Program*& other : apps) other = &m_desktop->launch({testWindow(), "--background"});
  std::vector<Pid> pids;
  for (const Program* other : apps) pids.push_back(m_desktop->waitForWindow(other->pid()).pid);
  m_vantle = &m_desktop->launch({"prlimit", "--nofile=128:128", VANTLE_PROGRAM});
  require("Vantle", [&] { return m_desktop->hasBusName("com.halvo.vantle"); });
  remember(pids);
  const auto slowed = [&] { return std::count_if(pids.begin(), pids.end(), isSlowed); };
  m_desktop->activate(played);
  EXPECT_TRUE(waitUntil([&] { return slowed() >= 5; })) << slowed();
  played.kill();
  expectAllBack();

  m_desktop->activate(game());
  EXPECT_TRUE(waitUntil([&] { return slowed() >= 5; })) << slowed();
  m_vantle->signal(SIGTERM);
  EXPECT_EQ(m_vantle->exitStatus(), 0);
  expectAllBack();
}

class Flood : public Boost {
 protected:
  long memoryOfVantle() const { // kB
    std::ifstream status("/proc/" + std::to_string(m_vantle->pid()) + "/status");
    for (std::string word; status >> word;) {
      long size = 0;
      if (word == "VmRSS:" && status >> size) return size;
    }
    return 0;
  }

  // What asks for the front at the same moment may win it. A person sees that, and asks again.
  bool isInFrontUntil(const Program& program, const std::function<bool()>& condition) {
    return waitUntil([&] {
      m_desktop->activate(program);
      return waitUntil(condition, std::chrono::seconds(2));
    });
  }

  // What the person does and the end of the program get their turn while it lasts, and it does not pile up.
  void expectLifeDuring(std::vector<std::string> flood) {
    Program& played = game();
    Program& plain = app();
    remember({played.pid(), plain.pid()});
    startVantle();
    for (std::string& word : flood) {
      if (word == "VANTLE") word = std::to_string(m_vantle->pid());
    }
    flood.insert(flood.begin(), flooder());
    Program& flooder = m_desktop->launch(flood);
    std::this_thread::sleep_for(std::chrono::seconds(2)); // so that the flood is there
    ASSERT_TRUE(flooder.isRunning());
    const long before = memoryOfVantle();
    const auto isSlow = [&] { return isSlowed(plain.pid()); };
    for (int round = 0; round < 3; ++round) {
      EXPECT_TRUE(isInFrontUntil(played, isSlow));
      EXPECT_TRUE(isInFrontUntil(plain, [&] { return isAtFullSpeed(plain.pid()); }));
    }
    EXPECT_TRUE(isInFrontUntil(played, isSlow));
    std::this_thread::sleep_for(std::chrono::seconds(3)); // so that something could pile up
    constexpr long muchMemory = 48 * 1024;                // kB
    EXPECT_LT(memoryOfVantle() - before, muchMemory);
    ASSERT_TRUE(flooder.isRunning());
    m_vantle->signal(SIGTERM);
    EXPECT_EQ(m_vantle->exitStatus(), 0);
    expectAllBack();
  }
};

TEST_P(Flood, OfTraysKeepsNothingFromHappening) { expectLifeDuring({"manager"}); }
TEST_P(Flood, OfWindowListsKeepsNothingFromHappening) { expectLifeDuring({"list"}); }
TEST_P(Flood, OfCallsToOpenKeepsNothingFromHappening) { expectLifeDuring({"activate"}); }
TEST_P(Flood, OfClicksKeepsNothingFromHappening) { expectLifeDuring({"click", "VANTLE"}); }

TEST_P(Boost, StartsWhenTheGameIsInFrontAlready) {
  Program& plain = app();
  Program& played = game();
  m_desktop->activate(played);
  m_vantle = &m_desktop->launch({VANTLE_PROGRAM});
  EXPECT_TRUE(becomesSlowed(plain));
}

TEST_P(Boost, SlowsALaunchInTheBackgroundButNotOneInFront) {
  Program& played = game();
  startVantle();
  m_desktop->activate(played);
  Program& background = app({"--background"});
  EXPECT_TRUE(becomesSlowed(background));
  Program& front = app();
  require("the launch in front",
          [&] { return m_desktop->windows().active() == m_desktop->waitForWindow(front.pid()).id; });
  m_desktop->activate(background);
  EXPECT_TRUE(becomesFast(background));
  EXPECT_TRUE(becomesSlowed(front)) << "it has left the front";
}

TEST_P(Boost, FreesAnAppThatASlowedOneStarted) {
  const std::filesystem::path fifo = m_desktop->folder().path() / "start";
  const std::filesystem::path born = m_desktop->folder().path() / "born";
  ASSERT_TRUE(m_desktop->run({"mkfifo", fifo.string()}));
  // The shell waits for a word, and then starts an app as a person does who types its name.
  Program& terminal = m_desktop->launch({"xterm", "-e", "sh", "-c",
                                         "read word < " + fifo.string() + "; setsid sh -c 'echo $$ > " +
                                             born.string() + ".new; mv " + born.string() + ".new " +
                                             born.string() + "; exec " + testWindow() + "' & wait"});
  m_desktop->waitForWindow(terminal.pid());
  Program& played = game();
  startVantle();
  m_desktop->activate(played);
  ASSERT_TRUE(becomesSlowed(terminal));
  ASSERT_TRUE(m_desktop->run({"sh", "-c", "echo now > " + fifo.string()}));
  require("the app was started", [&] { return std::filesystem::exists(born); });
  Pid app = 0;
  std::ifstream(born) >> app;
  const auto window = m_desktop->waitForWindow(app).id;
  require("it is in front", [&] { return m_desktop->windows().active() == window; });
  EXPECT_TRUE(waitUntil([&] { return isAtFullSpeed(app); }));
  EXPECT_TRUE(isSlowed(terminal.pid()));
  m_desktop->activate(played);
  EXPECT_TRUE(waitUntil([&] { return isSlowed(app); }));
  played.kill();
  EXPECT_TRUE(waitUntil([&] { return isAtFullSpeed(app); }));
  EXPECT_TRUE(becomesFast(terminal));
}

TEST_P(Boost, LeavesTheAppInFrontAlone) {
  Program& first = app();
  Program& second = app();
  Program& played = game();
  startVantle();
  remember({first.pid(), second.pid()});
  m_desktop->activate(played);
  ASSERT_TRUE(becomesSlowed(first));
  ASSERT_TRUE(becomesSlowed(second));
  m_desktop->activate(first);
  EXPECT_TRUE(becomesFast(first));
  EXPECT_TRUE(isSlowed(second.pid()));
  m_desktop->activate(second);
  EXPECT_TRUE(becomesFast(second));
  EXPECT_TRUE(becomesSlowed(first));
  m_desktop->activate(played);
  EXPECT_TRUE(becomesSlowed(second));
  played.kill();
  expectAllBack();
}

TEST_P(Boost, PassesToTheNextGame) {
  Program& plain = app();
  Program& first = game();
  Program& second = game("OtherGame");
  startVantle();
  remember({plain.pid()});
  m_desktop->activate(first);
  ASSERT_TRUE(becomesSlowed(plain));
  EXPECT_TRUE(isAtFullSpeed(second.pid()));
  first.kill();
  m_desktop->activate(second);
  // A later event has passed, so the end of the first game is dealt with.
  Program& later = app({"--background"});
  EXPECT_TRUE(becomesSlowed(later));
  EXPECT_TRUE(isSlowed(plain.pid()));
  second.kill();
  expectAllBack();
}

TEST_P(Boost, EndsWithEachTerminationSignal) {
  Program& plain = app({"--children", "1"});
  Program& played = game();
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    m_desktop->activate(plain);
    startVantle();
    remember({plain.pid()});
    m_desktop->activate(played);
    ASSERT_TRUE(becomesSlowed(plain));
    m_vantle->signal(number);
    EXPECT_EQ(m_vantle->exitStatus(), 0) << number;
    EXPECT_EQ(kernelState(plain.pid()), m_before[plain.pid()]) << "back before its end, signal " << number;
    expectAllBack();
  }
}

// Apps in sessions that have lost their weight to a game, and a rival for every turn to give it back.
class Giving : public Boost {
 protected:
  void SetUp() override {
    Boost::SetUp();
    m_errors = (m_desktop->folder().path() / "tmp/errors").string();
  }
  void slow(int count) {
    for (int number = 0; number < count; ++number) m_apps.push_back(app().pid());
    Program& played = game();
    startVantle(m_errors);
    remember(m_apps);
    m_desktop->activate(played);
    const auto isLow = [](Pid pid) { return kernelState(pid).sessionNice == 19; };
    ASSERT_TRUE(waitUntil([&] { return std::all_of(m_apps.begin(), m_apps.end(), isLow); }));
  }

  std::string m_errors;
  std::vector<Pid> m_apps;
};

TEST_P(Giving, LastsUntilEverybodyIsBackWhateverElseIsAsked) {
  slow(12);
  const test::Spammer spammer(somebody - 1);
  m_vantle->signal(SIGTERM);
  while (m_vantle->isRunning()) {
    m_vantle->signal(SIGINT);
    m_vantle->signal(SIGTERM);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  EXPECT_EQ(m_vantle->exitStatus(), 0);
  for (const Pid pid : m_apps) EXPECT_EQ(kernelState(pid), m_before[pid]) << "back before its end";
  expectAllBack();
  std::ifstream errors(m_errors);
  std::string line;
  EXPECT_TRUE(std::getline(errors, line));
  EXPECT_THAT(line, testing::MatchesRegex("vantle: giving [0-9]+ apps? their speed back; .*"));
  EXPECT_FALSE(std::getline(errors, line)) << line;
}

// Killed in the middle, and then the apps overwrite what they carried.
TEST_P(Giving, IsFinishedByTheNextStartWhateverTheAppsRemember) {
  slow(6);
  test::Spammer spammer(somebody - 1);
  m_vantle->signal(SIGTERM);
  require("an empty journal", [&] { return journal() == "[]"; });
  m_vantle->kill();
  for (const Pid pid : m_apps) {
    for (const auto& [tid, thread] : m_before[pid].threads) {
      ASSERT_EQ(::syscall(SYS_ioprio_set, 1, tid, thread.ioPriority), 0);
    }
  }
  EXPECT_TRUE(std::any_of(m_apps.begin(), m_apps.end(), [](Pid pid) {
    return kernelState(pid).sessionNice == 19;
  })) << "nothing was put to the test";
  spammer.end();
  m_desktop->windows().activate(m_desktop->waitForWindow(m_apps.front()).id); // or it starts with a Boost
  startVantle();
  expectAllBack();
}

TEST_P(Boost, TakesBackAChildBornMeanwhile) {
  Program& plain = app();
  Program& played = game();
  startVantle();
  m_desktop->activate(played);
  ASSERT_TRUE(becomesSlowed(plain));
  plain.signal(SIGUSR1);
  std::set<Pid> family;
  require("a child", [&] { return (family = processesOf({plain.pid()})).size() == 2; });
  for (const Pid pid : family) EXPECT_TRUE(waitUntil([&] { return isSlowed(pid); }));
  played.kill();
  for (const Pid pid : family) EXPECT_TRUE(waitUntil([&] { return isAtFullSpeed(pid); }));
  expectAllBack();
}

TEST_P(Boost, LeavesAloneWhatIsHeardAndWhatKeepsTheMachineAwake) {
  const SoundServer sound(*m_desktop);
  const auto inTerminal = [&](const std::string& command) -> Program& {
    Program& program = m_desktop->launch({"xterm", "-e", "/bin/sh", "-c", command});
    m_desktop->waitForWindow(program.pid());
    return program;
  };
  const std::string said = m_desktop->logs() / "tone";
  std::vector<Program*> useful{&inTerminal("exec '" + tonePlayer() + "' >'" + said + "'")};
  require("the tone", [&] { return std::filesystem::exists(said) && std::filesystem::file_size(said) > 0; });
  std::unique_ptr<Logind> logind;
  if (GetParam() == Who::root &&
      Logind::isPossible()) { // the daemon lets nobody else block, and has nobody to ask
    logind = std::make_unique<Logind>();
    m_desktop->setEnvironment("DBUS_SYSTEM_BUS_ADDRESS", logind->bus().address());
    useful.push_back(&inTerminal("exec systemd-inhibit --what=idle --mode=block --who=useful sleep 1000"));
    require("the inhibitor", [&] {
      return logind->run({"sh", "-c", "systemd-inhibit --list --no-legend | grep -q useful"});
    });
  }
  Program& plain = app();
  Program& played = game();
  startVantle();
  for (const Program* program : useful) remember({program->pid()});
  m_desktop->activate(played);
  EXPECT_TRUE(becomesSlowed(plain));
  for (const Program* program : useful) {
    EXPECT_EQ(kernelState(program->pid()), m_before[program->pid()]);
    for (const Pid pid : processesOf({program->pid()})) EXPECT_TRUE(isAtFullSpeed(pid));
  }
}

// A whole workstation's program, as it is and in a process-number namespace. That it is heard is what keeps
// it fast: the next Boost, which hears nothing of it, slows it.
TEST_P(Boost, LeavesATrackerAloneForAsLongAsItIsHeard) {
  const SoundServer sound(*m_desktop);
  const std::string song = sound.song();
  const auto owner = [&](const Program& program) {
    Pid found = 0;
    require("the tracker's window", [&] {
      const std::set<Pid> family = processesOf({program.pid()});
      for (const auto& window : m_desktop->windows().list()) {
        if (family.contains(window.pid)) found = window.pid;
      }
      return found != 0;
    });
    return found;
  };
  const std::set<Pid> trackers{owner(m_desktop->launch({"milkytracker", song})),
                               owner(m_desktop->launch({"unshare", "--user", "--map-current-user", "--pid",
                                                        "--fork", "--kill-child", "milkytracker", song}))};
  const auto allTrackers = [&](bool (*isSo)(Pid)) {
    return std::all_of(trackers.begin(), trackers.end(), isSo);
  };
  const auto playingBoth = [&](const std::string& muted) {
    return m_desktop->run(
        {"sh", "-c",
         "pw-dump | jq -e '[.[].info | select(.state == \"running\" and .props.\"media.class\" == "
         "\"Stream/Output/Audio\" and .params.Props[0].mute == " +
             muted + ")] | length == 2'"});
  };
  require("the song of both", [&] { return playingBoth("false"); });

  Program& plain = app();
  Program& first = game();
  startVantle();
  m_desktop->activate(first);
  EXPECT_TRUE(becomesSlowed(plain));
  EXPECT_TRUE(allTrackers(isAtFullSpeed));
  first.kill();
  EXPECT_TRUE(becomesFast(plain));

  ASSERT_TRUE(m_desktop->run({"sh", "-c",
                              "for stream in $(pactl list short sink-inputs | cut -f1); do "
                              "pactl set-sink-input-mute $stream 1; done"}));
  require("their silence", [&] { return playingBoth("true"); }); // it is they who silence themselves
  Program& second = game("OtherGame"); // not before: the end of the first would have brought it to the front
  m_desktop->activate(second);
  EXPECT_TRUE(waitUntil([&] { return allTrackers(isSlowed); }));
  second.kill();
  EXPECT_TRUE(waitUntil([&] { return allTrackers(isAtFullSpeed); }));
}

TEST_P(Boost, TellsOfAShortageOfMemory) {
  if (!std::filesystem::exists("/proc/pressure/memory")) GTEST_SKIP() << "this kernel measures no pressure";
  const NotificationDaemon daemon(*m_desktop);
  Program& plain = app();
  Program& played = game();
  startVantle();
  m_desktop->activate(played);
  ASSERT_TRUE(becomesSlowed(plain));
  m_desktop->launch({memoryStaller()});
  EXPECT_TRUE(waitUntil([&] { return !daemon.shown().empty(); }));
  EXPECT_THAT(daemon.shown(),
              testing::MatchesRegex("Vantle\\|Memory (is running low|almost full)\\|Using the most "
                                    "memory: .* [0-9.]+ [KM]B\\. Quitting them will free up "
                                    "memory\\.\n"));
}

TEST_P(Boost, SecondCopyLeavesAtOnce) {
  Program& plain = app();
  Program& played = game();
  startVantle();
  m_desktop->activate(played);
  ASSERT_TRUE(becomesSlowed(plain));
  EXPECT_EQ(m_desktop->launch({VANTLE_PROGRAM}).exitStatus(), 0);
  EXPECT_TRUE(m_vantle->isRunning());
  EXPECT_TRUE(isSlowed(plain.pid()));
}

TEST_P(Boost, EndsCleanlyWithTheXServer) {
  Program& plain = app({"--outlive-display", "--threads", "1"});
  Program& played = game();
  startVantle();
  remember({plain.pid()});
  m_desktop->activate(played);
  ASSERT_TRUE(becomesSlowed(plain));
  m_desktop->xServer().signal(SIGKILL);
  EXPECT_EQ(m_vantle->exitStatus(), 0);
  EXPECT_TRUE(plain.isRunning());
  expectAllBack();
}

// The heart of it: nothing stays slowed, whenever it is killed.
TEST_P(Boost, SurvivesBeingKilledAtAnyMoment) {
  constexpr int rounds = 50; // for each of the two users
  const auto seed = std::random_device()();
  std::mt19937 random(seed);
  SCOPED_TRACE("seed " + std::to_string(seed));
  Program& plain = app({"--threads", "1"});
  Program& family = app({"--children", "2"});
  Program& bystander = m_desktop->launch({"ionice", "-c", "3", "sleep", "1000"});
  Program& played = game();
  std::vector<Pid> all{plain.pid(), bystander.pid(), played.pid()};
  for (const Pid pid : processesOf({family.pid()})) all.push_back(pid);
  require("the bystander", [&] { return isSlowed(bystander.pid()); });
  m_desktop->activate(plain);
  startVantle();
  remember(all);

  int slowedAtDeath = 0;
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    const std::chrono::microseconds delay(std::uniform_int_distribution(0, 30'000)(random));
    if (round % 2 == 0) { // while it slows them down
      m_desktop->windows().activate(m_desktop->waitForWindow(played.pid()).id);
      std::this_thread::sleep_for(delay);
    } else { // while it puts them back
      m_desktop->activate(played);
      ASSERT_TRUE(becomesSlowed(plain));
      m_vantle->signal(SIGTERM);
      std::this_thread::sleep_for(delay / 4);
    }
    m_vantle->kill();
    if (journal() != "[]") ++slowedAtDeath;
    m_desktop->activate(plain); // or the next copy starts with a Boost
    startVantle();
    expectAllBack();
  }
  RecordProperty("slowed_at_death", slowedAtDeath);
  EXPECT_GT(slowedAtDeath, 0) << "nothing was put to the test";
}

TEST_P(Boost, LeavesAReusedNumberAlone) {
  if (!canChooseNextPid()) GTEST_SKIP() << "needs a process-number namespace of its own";
  Program& plain = app();
  Program& victim = app();
  Program& played = game();
  startVantle();
  remember({plain.pid()});
  m_desktop->activate(played);
  ASSERT_TRUE(becomesSlowed(plain));
  ASSERT_TRUE(becomesSlowed(victim));
  m_vantle->kill();
  const Pid number = victim.pid();
  ASSERT_NE(journal().find("\"pid\":" + std::to_string(number)), std::string::npos);
  victim.kill();
  played.kill();

  Program* stranger = nullptr;
  for (int attempt = 0; attempt < 20 && (stranger == nullptr || stranger->pid() != number); ++attempt) {
    chooseNextPid(number);
    stranger = &m_desktop->launch({"ionice", "-c", "3", "nice", "-n", "5", "sleep", "1000"});
  }
  ASSERT_EQ(stranger->pid(), number);
  const int nice = std::min(::getpriority(PRIO_PROCESS, 0) + 5, 19);
  require("the stranger", [&] { return kernelState(number).threads[number].nice == nice; });
  remember({number});
  startVantle();
  expectAllBack();
  EXPECT_EQ(kernelState(number), m_before[number]);
}

INSTANTIATE_TEST_SUITE_P(Desktop, Boost, testing::Values(Who::root, Who::somebodyElse),
                         [](const auto& about) {
                           return about.param == Who::root ? "AsRoot" : "AsOrdinaryUser";
                         });
// Root waits for no turn.
INSTANTIATE_TEST_SUITE_P(Desktop, Giving, testing::Values(Who::somebodyElse),
                         [](const auto&) { return "AsOrdinaryUser"; });

INSTANTIATE_TEST_SUITE_P(Desktop, Flood, testing::Values(Who::root, Who::somebodyElse),
                         [](const auto& about) {
                           return about.param == Who::root ? "AsRoot" : "AsOrdinaryUser";
                         });

} // namespace
} // namespace vantle::desktop
