// SPDX-License-Identifier: MIT
// All of it together, as app/ gets it.
#include "platform/darwin/DarwinPlatform.h"

#include "base/Names.h"
#include "platform/darwin/files/DarwinFolders.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/unit/cocoa/CocoaFixture.h"
#include "tests/unit/cocoa/FoundationDomains.h"

#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <pwd.h>
#include <stdexcept>
#include <unistd.h>

namespace vantle {
namespace {

class CocoaPlatform : public CocoaTest {
 protected:
  CocoaPlatform() { cocoa.ownBundle.reset(); } // the free Foundation keeps choices by the program's name
  ~CocoaPlatform() override {
    engine.reset();
    clearDomain(ownDomain());
    std::filesystem::remove_all(support);
  }
  CocoaPlatform(const CocoaPlatform&) = delete;
  CocoaPlatform& operator=(const CocoaPlatform&) = delete;

  static std::string newFolder() {
    std::string path = testing::TempDir() + "cocoa-support-XXXXXX";
    return ::mkdtemp(path.data()) == nullptr ? throw std::runtime_error("no folder") : path;
  }

  // The audio server is reached ahead, on a thread of its own.
  std::unique_ptr<OwnedMachine> desktopMachine() {
    const int before = kernel->audioAnswers;
    auto made = platform->desktopMachine(loop, "", [] {});
    audioHasAnswered(before + 1);
    return made;
  }

  const std::string support = newFolder();
  const std::filesystem::path folder = support + "/" + names::display;
  PollEventLoop loop;
  std::unique_ptr<Platform> platform = darwinPlatformIn(support);
};

TEST_F(CocoaPlatform, FilesAreInThePersonsFolderForThem) {
  const passwd* const person = ::getpwuid(::getuid());
  ASSERT_NE(person, nullptr);
  EXPECT_TRUE(applicationSupportFolder().starts_with(std::string(person->pw_dir) + "/"))
      << applicationSupportFolder();
  EXPECT_FALSE(applicationSupportFolder().ends_with('/'));
  const auto real = Platform::ofThisSystem()->recoveryMachine();
  EXPECT_EQ(real->machine().files.applicationSupport(), applicationSupportFolder());
  const auto owned = platform->recoveryMachine();
  EXPECT_EQ(owned->machine().files.applicationSupport(), support);
  EXPECT_EQ(platform->foreignFolder(), std::nullopt);
}

TEST_F(CocoaPlatform, ThereIsOneCopy) {
  EXPECT_TRUE(platform->becomeOnlyCopy());
  EXPECT_FALSE(darwinPlatformIn(support)->becomeOnlyCopy());
  platform.reset();
  EXPECT_TRUE(darwinPlatformIn(support)->becomeOnlyCopy());
}

TEST_F(CocoaPlatform, WithoutAWindowServerThereIsNoDesktop) {
  EXPECT_EQ(platform->whyNoDesktop(), std::nullopt);
  cocoa.hasWindowServer = false;
  EXPECT_NE(platform->whyNoDesktop(), std::nullopt);
}

TEST_F(CocoaPlatform, TheProgramTakesNoNapAndTheMachineMaySleep) {
  constexpr std::uint64_t byThePersonButForTheMachinesSleep = 0xEFFFFF;
  auto owned = desktopMachine();
  ASSERT_EQ(cocoa.activities.size(), 1U);
  EXPECT_EQ(cocoa.activities.begin()->second, byThePersonButForTheMachinesSleep);
  owned.reset();
  EXPECT_TRUE(cocoa.activities.empty());
  EXPECT_EQ(kernel->fault, std::nullopt);
}

// Of the desktop only processes and their band are played, and what runs on it.
TEST_F(CocoaPlatform, ABoostGoesThroughTheWholeMachineAndWhatItLeftIsPutBackByTheNext) {
  cocoaParts.reset();
  openAt(100, "Mail");
  openAt(101, "Music");
  openAt(102, "Video");
  machine.audio.heard = {101};
  machine.power.held = {{102, "PreventUserIdleDisplaySleep"}};
  AppSpec spec = aGame();
  spec.pid = 200;
  const SimulatedAppRef game = open(spec);
  {
    const auto owned = desktopMachine();
    AppSettings choices(owned->machine().defaults);
    choices.userGames.set({"org.example.Asteroids"});
    Engine first(owned->machine(), choices);
    machine.activate(game);
    EXPECT_TRUE(isSlow(100));
    EXPECT_FALSE(isSlow(101)) << "it is heard";
    EXPECT_FALSE(isSlow(102)) << "it keeps the screen awake";
    kernel->raisePressure(4); // critical
    EXPECT_TRUE(std::filesystem::exists(folder / "journal.json"));
    machine.audio.heard = {};
  } // and the program ends without a word
  EXPECT_TRUE(isSlow(100));
  {
    const auto owned = platform->recoveryMachine();
    AppSettings choices(owned->machine().defaults);
    const Engine next(owned->machine(), choices);
    EXPECT_FALSE(isSlow(100));
  }
  const auto owned = desktopMachine();
  AppSettings choices(owned->machine().defaults);
  EXPECT_EQ(choices.userGames.get(), std::vector<std::string>{"org.example.Asteroids"});
  machine.quit(game);
}

} // namespace
} // namespace vantle
