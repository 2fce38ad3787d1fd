// SPDX-License-Identifier: MIT
// Whose a process is, and what follows: an app that another one started, one whose window came late, and what
// an app leaves behind when a part of it ends.
#include "engine/AppTrees.h"
#include "tests/unit/engine/EngineFixture.h"

#include <functional>
#include <gmock/gmock.h>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Ownership : public EngineTest {
 protected:
  Ownership() { machine.band.knowsItsOwnTraces = true; }

  SimulatedAppRef openBelow(const std::string& name, Pid parent, Opening opening = Opening::inBackground) {
    AppSpec spec = named(name);
    spec.parent = parent;
    return machine.launch(spec, opening);
  }
  SimulatedAppRef openWithSession(const std::string& name) {
    AppSpec spec = named(name);
    spec.leadsSession = true;
    return open(spec);
  }
  // What the app's short-lived child has left behind.
  Pid orphanOf(const SimulatedAppRef& app) {
    const Pid middle = childOf(app);
    const Pid orphan = childOf(middle);
    machine.processes.exit(middle);
    EXPECT_EQ(machine.processes.find(orphan)->parent, 1);
    return orphan;
  }
  AppTrees look() {
    AppTrees::Known known;
    known.self = machine.host.self;
    for (const SimulatedAppRef& app : machine.workspace.apps()) known.apps.insert(app->processIdentifier());
    return AppTrees(machine.processes, known);
  }
  Verdict verdictOn(const SimulatedAppRef& app) {
    return engine->verdicts().at(app->processIdentifier()).verdict;
  }
};

TEST_F(Ownership, AnOrphanBelongsToTheAppThatLeadsItsSession) {
  const SimulatedAppRef mail = openWithSession("Mail");
  const Pid orphan = orphanOf(mail);
  EXPECT_EQ(look().appOf(orphan), mail->processIdentifier());
  EXPECT_THAT(look().processesOf(mail->processIdentifier()), ElementsAre(mail->processIdentifier(), orphan));
}

TEST_F(Ownership, AnOrphanOfNobodysSessionBelongsToNobody) {
  const SimulatedAppRef mail = open("Mail"); // in the session of process 1, as all the others
  EXPECT_EQ(look().appOf(orphanOf(mail)), 0);
}

TEST_F(Ownership, AnOrphanInThePlaceOfOneAppIsItsOwnAndOfTwoNobodys) {
  AppSpec spec = named("Mail");
  spec.place = "app-mail.scope";
  const SimulatedAppRef mail = open(spec);
  const Pid orphan = orphanOf(mail);
  EXPECT_EQ(look().appOf(orphan), mail->processIdentifier());
  spec.name = "Notes";
  open(spec);
  EXPECT_EQ(look().appOf(orphan), 0);
}

// As Wine does for what starts it: its services are a launcher's children, and the game's window is of
// another.
TEST_F(Ownership, WhatALauncherThatLivesOnHasStartedIsOfTheOneAppInItsPlace) {
  AppSpec spec = named("Mail");
  spec.place = "app-mail.scope";
  const SimulatedAppRef mail = open(spec);
  const Pid launcher = machine.processes.spawn({.place = "app-menu.scope"});
  const Pid helper = machine.processes.spawn({.parent = launcher, .leadsSession = true, .place = spec.place});
  const Pid placeless = machine.processes.spawn({.parent = launcher, .leadsSession = true});
  EXPECT_EQ(look().appOf(helper), mail->processIdentifier());
  EXPECT_EQ(look().appOf(placeless), 0);
  EXPECT_EQ(look().appOf(launcher), 0);
  spec.name = "Notes";
  open(spec);
  EXPECT_EQ(look().appOf(helper), 0);
}

// What waits for a browser's crash has left its tree and its session, as has Wine's server its games'.
TEST_F(Ownership, AnOrphanThatCameWithOneAppIsItsOwnAndWithTwoNobodys) {
  start();
  AppSpec spec = named("Browser");
  spec.origin = "folder:/opt/browser";
  const SimulatedAppRef browser = open(spec);
  const Pid helper = machine.processes.spawn({.leadsSession = true, .origin = spec.origin});
  const Pid stranger = machine.processes.spawn({.leadsSession = true, .origin = "folder:/opt/other"});
  const Pid unknown = machine.processes.spawn({.leadsSession = true});
  EXPECT_EQ(look().appOf(helper), browser->processIdentifier());
  EXPECT_EQ(look().appOf(stranger), 0);
  EXPECT_EQ(look().appOf(unknown), 0);
  const SimulatedAppRef game = playGame();
  EXPECT_TRUE(isSlow(helper));
  EXPECT_FALSE(isSlow(stranger));
  machine.quit(game);
  EXPECT_FALSE(isSlow(helper));
  open(spec);
  EXPECT_EQ(look().appOf(helper), 0);
}

TEST_F(Ownership, AnOrphanThatOneAppHasBroughtAlongIsItsOwnAndOfTwoNobodys) {
  AppSpec spec = named("Acme");
  spec.furtherOrigins = {"folder:/usr/lib/acme", "folder:/usr/libexec/acme"};
  const SimulatedAppRef acme = open(spec);
  const Pid helper = machine.processes.spawn({.leadsSession = true, .origin = "folder:/usr/libexec/acme"});
  const Pid copy = machine.processes.spawn({.leadsSession = true});
  EXPECT_EQ(look().appOf(helper), acme->processIdentifier());
  EXPECT_EQ(look().appOf(copy), 0);
  open(spec);
  EXPECT_EQ(look().appOf(helper), 0);
}

TEST_F(Ownership, AServiceIsNotAnAppsOrphanThoughTheyCameTogether) {
  AppSpec spec = named("Browser");
  spec.origin = "folder:/opt/browser";
  open(spec);
  const Pid service =
      machine.processes.spawn({.leadsSession = true, .place = "browser.service", .origin = spec.origin});
  EXPECT_EQ(look().appOf(service), 0);
}

// An office's window is there before the document that it is called after.
TEST_F(Ownership, AnAppOfWhichMoreIsKnownLaterIsListedAndProtectedByThat) {
  start();
  settings->protectedApps.set({"org.example.Player"});
  const SimulatedAppRef app = open("something.bin");
  playGame();
  app->spec = named("Office");
  machine.workspace.addAgain(app);
  machine.workspace.deliverAll();
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Office"));
  EXPECT_EQ(engine->managed().at(app->processIdentifier()).bundleID, "org.example.Office");
  EXPECT_TRUE(isSlow(app));
  app->spec = named("Player");
  machine.workspace.addAgain(app);
  machine.workspace.deliverAll();
  EXPECT_FALSE(isSlow(app));
  EXPECT_EQ(verdictOn(app), Verdict::protectedByPerson);
}

TEST_F(Ownership, WhatAnOrphanCameWithSaysMoreThanWhereItWasStarted) {
  const SimulatedAppRef terminal = openWithSession("Terminal");
  AppSpec spec = named("Browser");
  spec.parent = terminal->processIdentifier();
  spec.origin = "folder:/opt/browser";
  const SimulatedAppRef browser = open(spec);
  const Pid middle = childOf(browser);
  const Pid helper = machine.processes.spawn({.parent = middle, .origin = spec.origin});
  machine.processes.exit(middle);
  EXPECT_EQ(look().appOf(helper), browser->processIdentifier());
}

// The first process of its session has ended once it had started the app.
class Launched : public Ownership {
 protected:
  Launched() {
    launcher = machine.processes.spawn({.leadsSession = true, .role = ProcessRole::starter});
    earlier = childOf(launcher);
    later();
    mail = openBelow("Mail", launcher);
  }
  Pid launcher = 0;
  Pid earlier = 0;
  SimulatedAppRef mail;
};

TEST_F(Launched, WhatAnAppLeavesBehindIsItsOwnWithoutItsLauncher) {
  const Pid orphan = orphanOf(mail);
  EXPECT_EQ(look().appOf(orphan), 0) << "the launcher may have started it, too";
  machine.processes.exit(launcher);
  EXPECT_EQ(look().appOf(orphan), mail->processIdentifier());
  EXPECT_EQ(look().appOf(earlier), 0) << "it was there before";
  const Pid born = childOf(orphan);
  EXPECT_EQ(look().appOf(born), mail->processIdentifier());
}

TEST_F(Launched, NobodyKnowsWhichOfTwoAppsHasLeftSomethingBehind) {
  openBelow("Notes", launcher);
  const Pid orphan = orphanOf(mail);
  machine.processes.exit(launcher);
  EXPECT_EQ(look().appOf(orphan), 0);
}

TEST_F(Launched, WhatIsLeftInTheDesktopsSessionIsNobodys) {
  machine.processes.spawn({.parent = launcher, .role = ProcessRole::system});
  const Pid orphan = orphanOf(mail);
  machine.processes.exit(launcher);
  EXPECT_EQ(look().appOf(orphan), 0);
}

TEST_F(Ownership, APartOfTheSystemIsNobodysOrphan) {
  const SimulatedAppRef mail = openWithSession("Mail");
  const Pid middle = childOf(mail);
  const Pid bus = machine.processes.spawn({.parent = middle, .role = ProcessRole::system});
  machine.processes.exit(middle);
  EXPECT_EQ(look().appOf(bus), 0);
}

TEST_F(Ownership, AnOrphanThatPlaysSpareItsApp) {
  start();
  const SimulatedAppRef player = openWithSession("Player");
  const Pid orphan = orphanOf(player);
  machine.audio.heard = {orphan};
  playGame();
  EXPECT_FALSE(isSlow(orphan));
  EXPECT_FALSE(isSlow(player));
  EXPECT_EQ(verdictOn(player), Verdict::heard);
}

TEST_F(Ownership, AnOrphanThatKeepsTheMachineAwakeSparesItsApp) {
  start();
  const SimulatedAppRef loader = openWithSession("Loader");
  const Pid orphan = orphanOf(loader);
  machine.power.held = {{orphan, "PreventUserIdleSystemSleep"}};
  playGame();
  EXPECT_FALSE(isSlow(orphan));
  EXPECT_FALSE(isSlow(loader));
  EXPECT_EQ(verdictOn(loader), Verdict::keepsAwake);
}

TEST_F(Ownership, AnOrphanIsInTheJournalAndBackWhenItsAppQuitsDuringTheBoost) {
  start();
  const SimulatedAppRef mail = openWithSession("Mail");
  const Pid orphan = orphanOf(mail);
  playGame();
  EXPECT_TRUE(isSlow(orphan));
  EXPECT_TRUE(journalledPids().contains(orphan));
  machine.quit(mail);
  EXPECT_FALSE(isSlow(orphan));
  EXPECT_THAT(journalledPids(), IsEmpty());
}

TEST_F(Ownership, WhatWasBornSlowedIsFreeWhenItsAppQuitsDuringTheBoost) {
  start();
  const SimulatedAppRef mail = open("Mail");
  open("Notes");
  playGame();
  later();
  const Pid helper = childOf(mail);
  ASSERT_TRUE(isSlow(helper));
  machine.quit(mail);
  EXPECT_FALSE(isSlow(helper));
}

// What a shell starts with a session of its own, or an editor on a terminal of its own.
TEST_F(Ownership, WhatASlowedAppHasStartedInANewSessionIsSlowedAtTheNextEvent) {
  start();
  const SimulatedAppRef terminal = openWithSession("Terminal");
  const SimulatedAppRef mail = openWithSession("Mail");
  const SimulatedAppRef game = playGame();
  const auto isListed = [&](Pid pid) {
    const auto& members = engine->managed().at(terminal->processIdentifier()).members;
    return std::find(members.begin(), members.end(), identityOf(pid)) != members.end();
  };
  const Pid inItsOwn =
      machine.processes.spawn({.parent = terminal->processIdentifier(), .leadsSession = true});
  const Pid below = machine.processes.spawn({.parent = inItsOwn});
  const Pid beside = childOf(terminal);
  machine.activate(mail);
  machine.activate(game);
  EXPECT_TRUE(isListed(inItsOwn) && isListed(below));
  EXPECT_TRUE(journalledPids().contains(inItsOwn));
  EXPECT_FALSE(isListed(beside)) << "which was born with the session's weight";
  const Pid another =
      machine.processes.spawn({.parent = terminal->processIdentifier(), .leadsSession = true});
  open("Notes");
  EXPECT_TRUE(isListed(another));
  machine.quit(game);
  EXPECT_FALSE(isSlow(inItsOwn) || isSlow(below) || isSlow(beside) || isSlow(another));
  EXPECT_EQ(journalText(), "[]");
}

TEST_F(Ownership, WhatOthersHaveStartedMeanwhileIsSlowedWhenThePersonTurnsToASlowedApp) {
  start();
  const SimulatedAppRef terminal = openWithSession("Terminal");
  const SimulatedAppRef mail = openWithSession("Mail");
  const SimulatedAppRef notes = openWithSession("Notes");
  const SimulatedAppRef game = playGame();
  machine.calls.startTrace();
  const auto turnTo = [this](const SimulatedAppRef& app) {
    machine.calls.takeTrace();
    machine.activate(app);
    return machine.calls.takeTrace();
  };
  EXPECT_EQ(count(turnTo(notes), "audio.probe"), 0U) << "there is nothing that it could spare";
  machine.activate(game);
  const Pid build = machine.processes.spawn({.parent = terminal->processIdentifier(), .leadsSession = true});
  const Pid ofMail = machine.processes.spawn({.parent = mail->processIdentifier(), .leadsSession = true});
  const std::vector<std::string> trace = turnTo(mail);
  const auto at = [&](const std::string& call, Pid pid) {
    return std::find(trace.begin(), trace.end(), call + std::to_string(pid)) - trace.begin();
  };
  EXPECT_TRUE(journalledPids().contains(build));
  EXPECT_FALSE(isSlow(mail) || isSlow(ofMail));
  EXPECT_LT(at("band.leave ", mail->processIdentifier()), at("band.enter ", build)) << "first things first";
  EXPECT_EQ(count(trace, "audio.probe"), 1U);
  machine.quit(game);
  EXPECT_FALSE(isSlow(build));
  EXPECT_EQ(journalText(), "[]");
}

TEST_F(Ownership, AnAppWhoseWindowCameLateStandsInOneListOnly) {
  start();
  const SimulatedAppRef terminal = open("Terminal");
  const Pid editorPid = childOf(terminal);
  const SimulatedAppRef game = playGame();
  ASSERT_TRUE(isSlow(editorPid));
  // It opens its window, is worked in, and left again.
  const SimulatedAppRef editor = machine.showWindow(editorPid, named("Editor"), Opening::inFront);
  EXPECT_FALSE(isSlow(editorPid));
  EXPECT_FALSE(journalledPids().contains(editorPid));
  machine.activate(game);
  EXPECT_TRUE(isSlow(editorPid));
  EXPECT_TRUE(isManaged(editor));
  // The one that started it comes to the front: the editor stays slowed, listed and in the journal.
  machine.activate(terminal);
  EXPECT_FALSE(isSlow(terminal));
  EXPECT_TRUE(isSlow(editorPid));
  EXPECT_TRUE(isManaged(editor));
  EXPECT_TRUE(journalledPids().contains(editorPid));
}

TEST_F(Ownership, ALateWindowInTheBackgroundGetsALineOfItsOwn) {
  start();
  const SimulatedAppRef terminal = open("Terminal");
  const Pid editorPid = childOf(terminal);
  const Pid helper = childOf(editorPid);
  playGame();
  const SimulatedAppRef editor = machine.showWindow(editorPid, named("Editor"), Opening::inBackground);
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Editor", "Terminal"));
  EXPECT_THAT(engine->managed().at(editorPid).members,
              ElementsAre(identityOf(editorPid), identityOf(helper)));
  EXPECT_THAT(engine->managed().at(terminal->processIdentifier()).members,
              ElementsAre(identityOf(terminal->processIdentifier())));
  EXPECT_TRUE(isSlow(editorPid) && isSlow(helper));
}

TEST_F(Ownership, AProtectedAppThatASlowedOneStartsIsFreeAtOnce) {
  start();
  settings->protectedApps.set({"org.example.Player"});
  const SimulatedAppRef terminal = open("Terminal");
  playGame();
  const SimulatedAppRef player = openBelow("Player", terminal->processIdentifier());
  EXPECT_FALSE(isSlow(player));
  EXPECT_TRUE(isSlow(terminal));
  EXPECT_EQ(verdictOn(player), Verdict::protectedByPerson);
}

TEST_F(Ownership, AnAppThatASlowedOneStartsDoesNotEscapeWithItsStarter) {
  start();
  const SimulatedAppRef terminal = open("Terminal");
  const SimulatedAppRef game = playGame();
  const SimulatedAppRef editor = openBelow("Editor", terminal->processIdentifier());
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Editor", "Terminal"));
  machine.activate(terminal);
  EXPECT_FALSE(isSlow(terminal));
  EXPECT_TRUE(isSlow(editor));
  machine.activate(game);
  EXPECT_TRUE(isSlow(terminal));
  EXPECT_TRUE(isSlow(editor));
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Editor", "Terminal"));
  machine.quit(game);
  EXPECT_FALSE(isSlow(terminal) || isSlow(editor));
  EXPECT_EQ(journalText(), "[]");
}

TEST_F(Ownership, EachOfTwoIsPutBackByItselfInAnyOrder) {
  start();
  const SimulatedAppRef terminal = open("Terminal");
  const SimulatedAppRef editor = openBelow("Editor", terminal->processIdentifier());
  playGame();
  machine.quit(terminal); // the editor is nobody's child from now on
  EXPECT_TRUE(isSlow(editor));
  EXPECT_TRUE(isManaged(editor));
  machine.quit(editor);
  EXPECT_THAT(engine->managedNames.get(), IsEmpty());
}

// The program runs from a terminal, below its shell.
class StartedFromATerminal : public Ownership {
 protected:
  StartedFromATerminal() : terminal(open("Terminal")) {
    shell = machine.processes.spawn({.parent = terminal->processIdentifier(), .role = ProcessRole::starter});
    machine.restartProgram(shell);
  }

  SimulatedAppRef terminal;
  Pid shell = 0;
};

TEST_F(StartedFromATerminal, NeitherTheProgramNorWhatIsAboveItIsSlowed) {
  const Pid otherTab = childOf(terminal);
  const SimulatedAppRef editor = openBelow("Editor", shell);
  start();
  const SimulatedAppRef game = playGame();
  for (const Pid pid : {machine.host.self, shell, terminal->processIdentifier(), otherTab}) {
    EXPECT_FALSE(isSlow(pid)) << pid;
  }
  EXPECT_EQ(verdictOn(terminal), Verdict::ownProcess);
  EXPECT_TRUE(isSlow(editor)) << "an app of its own";
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Editor"));
  machine.quit(game);
  EXPECT_FALSE(isSlow(editor));
}

TEST_F(StartedFromATerminal, WhatTheProgramHasStartedIsNotTheTerminals) {
  start();
  const Pid helper = childOf(machine.host.self);
  playGame();
  EXPECT_FALSE(isSlow(helper));
}

// A script or a loader that was started for one app and waits for it.
class Wrapped : public Ownership {
 protected:
  // Opens an app below, and says whether the process is its own.
  bool isItsWrapper(Pid wrapper) {
    m_app = openBelow("Office", wrapper);
    return look().appOf(wrapper) == m_app->processIdentifier();
  }
  SimulatedAppRef m_app;
};

TEST_F(Wrapped, AnAppIsSlowedWithItsWrapperAndComesBackWithIt) {
  start();
  const Pid wrapper = machine.processes.spawn({.executable = "/usr/lib/office/splash", .leadsSession = true});
  ASSERT_TRUE(isItsWrapper(wrapper));
  EXPECT_THAT(look().processesOf(m_app->processIdentifier()),
              ElementsAre(m_app->processIdentifier(), wrapper));
  const SimulatedAppRef game = playGame();
  EXPECT_TRUE(isSlow(m_app));
  EXPECT_TRUE(isSlow(wrapper));
  machine.quit(game);
  EXPECT_FALSE(isSlow(m_app));
  EXPECT_FALSE(isSlow(wrapper));
}

TEST_F(Wrapped, SeveralAroundEachOtherAreAllTheApps) {
  const Pid outer = machine.processes.spawn({.leadsSession = true});
  const Pid inner = childOf(outer);
  EXPECT_TRUE(isItsWrapper(inner));
  EXPECT_EQ(look().appOf(outer), m_app->processIdentifier());
}

// An image serves the file system that its app runs from, for as long as that runs.
TEST_F(Wrapped, WhatItHasStartedBesideTheAppIsTheAppsAsWell) {
  start();
  const Pid wrapper = machine.processes.spawn({.leadsSession = true});
  const Pid server = childOf(wrapper);
  ASSERT_TRUE(isItsWrapper(wrapper));
  EXPECT_EQ(look().appOf(server), m_app->processIdentifier());
  const Pid born = childOf(server);
  EXPECT_EQ(look().appOf(born), m_app->processIdentifier());
  const SimulatedAppRef game = playGame();
  for (const Pid pid : {m_app->processIdentifier(), wrapper, server}) EXPECT_TRUE(isSlow(pid)) << pid;
  machine.quit(game);
  for (const Pid pid : {m_app->processIdentifier(), wrapper, server}) EXPECT_FALSE(isSlow(pid)) << pid;
}

TEST_F(Wrapped, ASecondAppBesideTheFirstTakesTheWrapperFromBoth) {
  const Pid wrapper = machine.processes.spawn({.leadsSession = true});
  const Pid second = childOf(wrapper);
  ASSERT_TRUE(isItsWrapper(wrapper));
  machine.showWindow(second, named("Second"), Opening::inBackground);
  EXPECT_EQ(look().appOf(wrapper), 0);
  EXPECT_EQ(look().appOf(second), second);
}

TEST_F(Wrapped, TheLauncherOfTheWrapperMayHaveEnded) {
  const Pid launcher = machine.processes.spawn({.leadsSession = true, .role = ProcessRole::starter});
  const Pid wrapper = childOf(launcher);
  EXPECT_FALSE(isItsWrapper(wrapper)) << "it may start more";
  machine.quit(m_app);
  machine.processes.exit(launcher);
  EXPECT_TRUE(isItsWrapper(wrapper));
}

TEST_F(Wrapped, NobodyElseIsAWrapper) {
  const auto leader = [this](ProcessRole role) {
    return machine.processes.spawn({.leadsSession = true, .role = role});
  };
  EXPECT_FALSE(isItsWrapper(leader(ProcessRole::starter)));
  EXPECT_FALSE(isItsWrapper(leader(ProcessRole::system)));
  EXPECT_FALSE(isItsWrapper(machine.processes.spawn({}))) << "in somebody else's session";
  const Pid starter = leader(ProcessRole::program);
  machine.processes.spawn({.parent = starter, .leadsSession = true});
  EXPECT_FALSE(isItsWrapper(starter)) << "it starts things for others, too";
  const Pid desktop = leader(ProcessRole::program);
  childOf(desktop);
  machine.processes.spawn({.parent = childOf(desktop), .role = ProcessRole::system});
  EXPECT_FALSE(isItsWrapper(desktop)) << "it starts the desktop, too";
  const Pid menu = leader(ProcessRole::program);
  EXPECT_TRUE(isItsWrapper(menu));
  EXPECT_FALSE(isItsWrapper(menu)) << "it has started two";
  const Pid old = leader(ProcessRole::program);
  machine.clock.advance(std::chrono::seconds(11));
  EXPECT_FALSE(isItsWrapper(old)) << "it has been there for long";
}

// A store without windows of its own has started both the game and the process that draws for it.
class LauncherWithoutWindows : public Ownership {
 protected:
  bool isSpared(const ProcessSpec& spec, const std::function<void(Pid client)>& andAlso = {}) {
    start();
    const Pid client = machine.processes.spawn(spec);
    const Pid reaper = childOf(client);
    if (andAlso) andAlso(client);
    AppSpec window = named("Store");
    window.parent = client;
    window.leadsSession = windowLeadsSession;
    const SimulatedAppRef store = open(window);
    AppSpec game = aGame();
    game.parent = reaper;
    const SimulatedAppRef boosted = openInFront(game);
    const bool spared = !isSlow(store) && engine->activeGame.get() == boosted;
    EXPECT_EQ(verdictOn(store) == Verdict::launcher, spared);
    return spared;
  }
  bool windowLeadsSession = false;
};

TEST_F(LauncherWithoutWindows, IsSparedWithItsWindow) {
  EXPECT_TRUE(isSpared({.executable = "/opt/store/client", .leadsSession = true}));
}

TEST_F(LauncherWithoutWindows, IsNoShell) {
  EXPECT_FALSE(isSpared({.leadsSession = true, .role = ProcessRole::starter}));
}

TEST_F(LauncherWithoutWindows, IsNoPartOfTheDesktop) {
  EXPECT_FALSE(isSpared({.leadsSession = true, .role = ProcessRole::system}));
}

TEST_F(LauncherWithoutWindows, IsNotWhatHasStartedTheDesktop) {
  EXPECT_FALSE(isSpared({.leadsSession = true}, [this](Pid client) {
    machine.processes.spawn({.parent = client, .role = ProcessRole::system});
  }));
}

TEST_F(LauncherWithoutWindows, MayHaveAPartOfTheDesktopForTheGameAlone) {
  EXPECT_TRUE(isSpared({.leadsSession = true}, [this](Pid client) {
    const SimulatedAppRef helper = openBelow("Helper", client);
    machine.processes.spawn({.parent = helper->processIdentifier(), .role = ProcessRole::system});
  }));
}

TEST_F(LauncherWithoutWindows, IsNotWhatOnlyStartsAppsAsADesktopDoes) {
  windowLeadsSession = true;
  EXPECT_FALSE(isSpared({.leadsSession = true}));
}

TEST_F(Ownership, AlwaysBoostOfAnAppThatHasEndedStartsNothingButIsRemembered) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef chess = openInFront(named("Chess"));
  machine.quit(chess);
  ASSERT_EQ(engine->lastFrontmost.get(), chess);
  engine->dismissedPID = 4711;
  engine->alwaysBoost();
  EXPECT_EQ(engine->activeGame.get(), nullptr);
  EXPECT_FALSE(isSlow(mail));
  EXPECT_THAT(settings->userGames.get(), ElementsAre("org.example.Chess"));
  EXPECT_EQ(engine->dismissedPID, std::nullopt);
}

TEST_F(Ownership, WhatIsBornWhileTheProbesAreAskedIsSlowedWithItsApp) {
  start();
  const SimulatedAppRef mail = open("Mail");
  // The longest part of a start: two servers are asked, and an app is moved.
  class SlowAudio final : public AudioActivity {
   public:
    explicit SlowAudio(std::function<void()> meanwhile) : m_meanwhile(std::move(meanwhile)) {}
    bool isAvailable() const override { return true; }
    std::set<Pid> runningOutput() override {
      m_meanwhile();
      return {};
    }

   private:
    std::function<void()> m_meanwhile;
  };
  Pid born = 0;
  SlowAudio audio([&] { born = childOf(mail); });
  Machine ports = machine.ports();
  engine.emplace(Machine{ports.host, ports.processes, ports.band, ports.workspace, audio, ports.power,
                         ports.pressure, ports.notifications, ports.defaults, ports.files, ports.clock,
                         ports.launcher, ports.text, ports.loginItem, ports.catalog, ports.hooks,
                         ports.games},
                 *settings);
  playGame();
  ASSERT_NE(born, 0);
  EXPECT_TRUE(isSlow(born));
  EXPECT_TRUE(journalledPids().contains(born));
}

TEST_F(Ownership, AnAppIsChargedForItsOrphansAndNotForTheAppsThatItStarted) {
  start();
  const SimulatedAppRef terminal = openWithSession("Terminal");
  const Pid orphan = orphanOf(terminal);
  machine.processes.find(orphan)->footprint = 7;
  machine.processes.find(terminal->processIdentifier())->footprint = 100;
  AppSpec editor = named("Editor");
  editor.parent = terminal->processIdentifier();
  editor.footprint = 3000;
  open(editor);
  playGame();
  EXPECT_THAT(engine->usageList(),
              testing::Contains(AppUsage{terminal->processIdentifier(), "Terminal", 107}));
}

} // namespace
} // namespace vantle
