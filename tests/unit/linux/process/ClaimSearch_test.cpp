// SPDX-License-Identifier: MIT
// Whom a program means that says who it is from inside a sandbox.
#include "platform/linux/process/ClaimSearch.h"

#include "platform/linux/kernel/ProcKernel.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Wait.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

constexpr const char* own = "0123456789abcdef0123456789abcdef"; // this machine's id
constexpr const char* other = "0123456789abcdef0123456789abcdee";

struct Claims : testing::Test {
  struct Process {
    std::string program = "/usr/bin/player"; // none: it hides its file
    std::string name = "player";
    std::string numbers = {}; // further in, "\t7"
    std::string unit = {};
  };
  Claims() { link("self/ns/pid", "pid:[1]"); }

  void link(const std::string& path, const std::string& target) const {
    fs::create_directories((proc.path() / path).parent_path());
    fs::create_symlink(target, proc.path() / path);
  }
  void add(Pid pid, const Process& process) const {
    const std::string id = std::to_string(pid);
    proc.write(id + "/stat",
               id + " (" + process.name + ") S 1 1 1 0 -1 0 0 0 0 0 1 2 0 0 20 0 1 0 5 0 0 0\n");
    proc.write(id + "/status", "Name:\t" + process.name + "\nNSpid:\t" + id + process.numbers + "\n");
    proc.write(id + "/cgroup", "0::/user.slice/" + process.unit + "\n");
    if (process.program.empty()) return; // the kernel then keeps all its links
    link(id + "/exe", process.program);
    link(id + "/ns/pid", process.numbers.empty() ? "pid:[1]" : "pid:[2]");
  }
  std::vector<Pid> find(const ProcessClaim& claim) const {
    const ProcKernel kernel(proc.path());
    return ClaimSearch(kernel, {own, "desk"}).find(claim);
  }

  desktop::TemporaryFolder proc;
};

TEST_F(Claims, ANumberFromOutHereIsTheProcessItself) {
  add(74, {});
  add(75, {});
  EXPECT_THAT(find({74, "player", own, ""}), ElementsAre(74));
  EXPECT_THAT(find({74, "player", "", ""}), ElementsAre(74)) << "it did not say which machine";
  EXPECT_THAT(find({76, "player", own, ""}), IsEmpty());
}

TEST_F(Claims, ANumberFromInsideIsTheOneThatHasItThere) {
  add(1, {.program = "/sbin/init", .name = "init"});
  add(74, {.numbers = "\t1"});
  add(75, {.numbers = "\t9\t2"});
  EXPECT_THAT(find({1, "player", own, ""}), ElementsAre(74));
  EXPECT_THAT(find({2, "player", own, ""}), ElementsAre(75));
  EXPECT_THAT(find({9, "player", own, ""}), IsEmpty()) << "it does not know that number itself";
  EXPECT_THAT(find({74, "player", own, ""}), IsEmpty()) << "nor that one";
}

TEST_F(Claims, AnotherProgramOfThatNumberIsAStranger) {
  add(7, {.program = "/usr/bin/editor", .name = "editor"});
  add(74, {.numbers = "\t7"});
  EXPECT_THAT(find({7, "player", own, ""}), ElementsAre(74));
  EXPECT_THAT(find({7, "browser", own, ""}), IsEmpty());
  EXPECT_THAT(find({7, "", own, ""}), IsEmpty()) << "a number alone is nobody's";
  EXPECT_THAT(find({0, "player", own, ""}), IsEmpty());
}

TEST_F(Claims, AnotherMachinesProcessIsNoneOfThisOnes) {
  add(7, {});
  EXPECT_THAT(find({7, "player", other, ""}), IsEmpty());
}

// A sandbox may have no machine id, or an empty one.
TEST_F(Claims, WhatIsNoMachineIdTellsNothing) {
  add(74, {.numbers = "\t7"});
  const std::string noDigits(32, 'z');
  for (const std::string& none : {std::string("desk"), std::string("uninitialized"), std::string(), noDigits,
                                  std::string(own).substr(1), std::string(own) + "0"}) {
    EXPECT_THAT(find({7, "player", none, "", "desk"}), ElementsAre(74)) << none;
    EXPECT_THAT(find({7, "player", none, "", "shed"}), IsEmpty()) << none << ", on another machine";
    EXPECT_THAT(find({7, "editor", none, "", "desk"}), IsEmpty()) << none;
    EXPECT_THAT(find({74, "player", none, "", "desk"}), IsEmpty()) << none;
  }
  EXPECT_THAT(find({7, "player", "desk", ""}), ElementsAre(74)) << "the name in the id's place";
  EXPECT_THAT(find({7, "player", "shed", ""}), IsEmpty());
  EXPECT_THAT(find({7, "player", other, "", "desk"}), IsEmpty()) << "a machine with the same name";
  EXPECT_THAT(find({7, "player", own, "", "shed"}), ElementsAre(74)) << "the id goes before the name";
  add(75, {.numbers = "\t7"});
  EXPECT_THAT(find({7, "player", "desk", "", "desk"}), UnorderedElementsAre(74, 75));
}

TEST_F(Claims, WhereTwoFitBothAreMeant) {
  add(7, {});
  add(74, {.numbers = "\t7"});
  add(75, {.numbers = "\t7"});
  EXPECT_THAT(find({7, "player", own, ""}), UnorderedElementsAre(7, 74, 75));
}

TEST_F(Claims, TheSandboxTellsThemApart) {
  add(74, {.numbers = "\t7", .unit = "app-flatpak-org.example.Music-74.scope"});
  add(75, {.numbers = "\t7", .unit = "app-flatpak-org.example.Video-75.scope"});
  EXPECT_THAT(find({7, "player", own, "org.example.Music"}), ElementsAre(74));
  EXPECT_THAT(find({7, "player", own, "org.example.Video"}), ElementsAre(75));
  EXPECT_THAT(find({7, "player", own, "org.example.Radio"}), IsEmpty());
  // Where no unit says it is another one, it may be that.
  add(76, {.numbers = "\t7", .unit = "app-gnome-org.gnome.Terminal-1.scope"});
  EXPECT_THAT(find({7, "player", own, "org.example.Radio"}), ElementsAre(76));
}

TEST_F(Claims, AProgramThatLostItsFileIsKnownByItsName) {
  add(8, {.program = "/usr/bin/player (deleted)", .name = "updated"});
  EXPECT_THAT(find({8, "player", own, ""}), ElementsAre(8));
  add(9, {.program = "/usr/bin/interpreter", .name = "as-long-as-it-m"});
  EXPECT_THAT(find({9, "as-long-as-it-may-be", own, ""}), ElementsAre(9)) << "the kernel keeps 15 bytes";
}

// Started through a link, it says the name of the file, and the kernel knows the link's.
TEST_F(Claims, OfAProgramThatHidesItsFileTheNumberIsEnough) {
  add(7, {.program = "", .name = "python3"});
  add(74, {.program = "", .name = "python3", .numbers = "\t1"}); // one of many with that number inside
  add(75, {.program = "", .name = "player", .numbers = "\t1"});
  EXPECT_THAT(find({7, "python3.11", own, ""}), ElementsAre(7));
  EXPECT_THAT(find({1, "python3.11", own, ""}), IsEmpty());
  EXPECT_THAT(find({1, "player", own, ""}), ElementsAre(75));
  EXPECT_THAT(find({8, "python3.11", own, ""}), IsEmpty());
}

TEST_F(Claims, WhoSeesNoProcCannotKnowItsProgram) {
  const desktop::TemporaryFolder box;
  add(74, {});
  EXPECT_THAT(find({74, "threaded-ml", own, ""}), IsEmpty()) << "its root is not shown";
  link("74/root", box.path());
  EXPECT_THAT(find({74, "threaded-ml", own, ""}), ElementsAre(74));
  EXPECT_THAT(find({75, "threaded-ml", own, ""}), IsEmpty());
  EXPECT_THAT(find({74, "threaded-ml", other, ""}), IsEmpty());
  fs::create_directories(box.path() / "proc");
  EXPECT_THAT(find({74, "threaded-ml", own, ""}), ElementsAre(74)) << "an empty one";
  fs::create_symlink("74", box.path() / "proc/self");
  EXPECT_THAT(find({74, "threaded-ml", own, ""}), IsEmpty()) << "it can know";
}

// A number from inside is nothing without a name, and says nothing of what the process sees.
TEST_F(Claims, InANamespaceOfItsOwnTheNameMustFit) {
  const desktop::TemporaryFolder box;
  add(74, {.numbers = "\t1"});
  add(75, {.numbers = "\t75"}); // the same number inside by chance
  for (const char* root : {"74/root", "75/root"}) link(root, box.path());
  EXPECT_THAT(find({1, "threaded-ml", own, ""}), IsEmpty());
  EXPECT_THAT(find({74, "threaded-ml", own, ""}), IsEmpty());
  EXPECT_THAT(find({75, "threaded-ml", own, ""}), IsEmpty());
}

TEST_F(Claims, ANameThatIsNoTextIsKnownAsServersTellIt) {
  add(7, {.program = "/usr/bin/spiel\xe4\xff", .name = "other"});
  EXPECT_THAT(find({7, "spiel__", own, ""}), ElementsAre(7));
  EXPECT_THAT(find({7, "spiel_", own, ""}), IsEmpty());
  add(8, {.program = "/usr/bin/m\u00fcsik", .name = "other"});
  EXPECT_THAT(find({8, "m\u00fcsik", own, ""}), ElementsAre(8));
}

TEST_F(Claims, OneSearchLooksOnce) {
  add(7, {});
  const ProcKernel kernel(proc.path());
  ClaimSearch search(kernel, {own, "desk"});
  EXPECT_THAT(search.find({7, "player", own, ""}), ElementsAre(7));
  add(8, {});
  EXPECT_THAT(search.find({8, "player", own, ""}), IsEmpty());
}

// A player of this test's own, so that no other process of the machine fits.
TEST(ClaimsOfRealProcesses, AreFoundInARealNamespace) {
  const desktop::TemporaryFolder folder;
  const fs::path player = folder.path() / "claim-test-player";
  fs::copy_file(fs::canonical("/usr/bin/sleep"), player);
  const test::ForkedProcess sandbox([&] {
    ::execlp("unshare", "unshare", "--user", "--map-root-user", "--pid", "--fork", "--kill-child",
             player.c_str(), "1000", nullptr);
  });
  const ProcKernel kernel;
  const std::string machine = thisMachine().id;
  std::vector<Pid> found;
  ASSERT_TRUE(desktop::waitUntil([&] {
    found = ClaimSearch(kernel, thisMachine()).find({1, player.filename(), machine, ""});
    return !found.empty();
  }));
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(kernel.stat(found.front())->parent, sandbox.pid());
  EXPECT_THAT(ClaimSearch(kernel, thisMachine()).find({found.front(), player.filename(), "", ""}), IsEmpty());
}

TEST(ClaimsOfRealProcesses, AreBelievedWithoutANameWhereThereIsNoProc) {
  const desktop::TemporaryFolder folder;
  const fs::path player = folder.path() / "claim-test-player";
  fs::copy_file(fs::canonical("/usr/bin/sleep"), player);
  const auto start = [&](const char* before) {
    return test::ForkedProcess([&] {
      const std::string script = std::string(before) + " && exec " + player.string() + " 1000";
      ::execlp("unshare", "unshare", "--user", "--map-root-user", "--mount", "sh", "-c", script.c_str(),
               nullptr);
    });
  };
  const ProcKernel kernel;
  const auto find = [&](Pid pid, const std::string& name) {
    return ClaimSearch(kernel, thisMachine()).find({pid, name, "", ""});
  };
  const test::ForkedProcess blind = start("mount -t tmpfs none /proc");
  const test::ForkedProcess seeing = start("true");
  for (const Pid pid : {blind.pid(), seeing.pid()})
    ASSERT_TRUE(desktop::waitUntil([&] { return !find(pid, player.filename()).empty(); }));
  EXPECT_THAT(find(blind.pid(), "threaded-ml"), ElementsAre(blind.pid()));
  EXPECT_THAT(find(seeing.pid(), "threaded-ml"), IsEmpty());
}

} // namespace
} // namespace vantle
