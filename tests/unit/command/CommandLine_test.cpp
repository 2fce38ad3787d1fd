// SPDX-License-Identifier: MIT
#include "command/CommandLine.h"

#include "command/StatusText.h"
#include "status/Changes.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vantle {
namespace {

using Parsed = std::variant<Request, StartProgram, UsageError>;

Parsed parsed(std::vector<std::string> words) {
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  return parseCommandLine(pointers);
}

TEST(CommandLine, StartsTheProgramForEverythingThatIsItsOwn) {
  const std::vector<std::vector<std::string>> all{{},
                                                  {"--test"},
                                                  {"status", "--test"},
                                                  {"nonsense", "--test", "more"},
                                                  {"--put-back"},
                                                  {"-platform", "xcb"},
                                                  {"--platform", "xcb"},
                                                  {"--platform=xcb"},
                                                  {"-session", "1", "status"}};
  for (const auto& words : all) {
    EXPECT_TRUE(std::holds_alternative<StartProgram>(parsed(words))) << (words.empty() ? "" : words.front());
  }
}

TEST(CommandLine, TakesOptionsBeforeAndBehindAnArgument) {
  const Parsed status = parsed({"status", "--follow", "--json"});
  ASSERT_TRUE(std::holds_alternative<Request>(status));
  EXPECT_TRUE(std::get<Request>(status).follows);
  EXPECT_TRUE(std::get<Request>(status).isJson);
  EXPECT_TRUE(std::get<Request>(parsed({"report", "--names"})).withNames);
  EXPECT_EQ(std::get<Request>(parsed({"why", "--", "--names"})).target, "--names");
  EXPECT_EQ(std::get<Request>(parsed({"boost"})).target, "");
  EXPECT_EQ(std::get<Request>(parsed({"boost", "Mail"})).target, "Mail");
}

TEST(CommandLine, RefusesWhatIsNoCommand) {
  const std::vector<std::vector<std::string>> all{{"staus"},
                                                  {"--staus"},
                                                  {""},
                                                  {"status", "-j"},
                                                  {"status", "Mail"},
                                                  {"why"},
                                                  {"why", ""},
                                                  {"why", "a", "b"},
                                                  {"boost", "a", "b"},
                                                  {"off", "now"},
                                                  {"pause"},
                                                  {"pause", "soon"},
                                                  {"report", "all"},
                                                  {"--help", "status"},
                                                  {"--version", "-v"}};
  for (const auto& words : all) {
    EXPECT_TRUE(std::holds_alternative<UsageError>(parsed(words))) << words.front();
  }
}

TEST(CommandLine, KnowsDurations) {
  EXPECT_EQ(parseDuration("90s"), std::chrono::seconds(90));
  EXPECT_EQ(parseDuration("30m"), std::chrono::minutes(30));
  EXPECT_EQ(parseDuration("2h"), std::chrono::hours(2));
  EXPECT_EQ(parseDuration("0s"), std::chrono::seconds(0));
  EXPECT_EQ(parseDuration("24h"), std::chrono::hours(24));
  for (const char* text : {"", "s", "5", "1d", "1.5h", "-5m", "+5m", " 5m", "5m ", "5mm", "25h", "86401s",
                           "4294967295h", "99999999999999999999s"}) {
    EXPECT_EQ(parseDuration(text), std::nullopt) << text;
  }
}

TEST(StatusText, LetsNoNameSpeakToTheTerminal) {
  AppStatus app;
  app.name = "Evil\x1b[2J\nName";
  app.pid = 42;
  app.state = "not slowed";
  app.reason = "no boost";
  EXPECT_EQ(whyText(app), "Evil?[2J?Name (42): not slowed. No Boost is running.\n");
  app.reason = "of a later copy";
  EXPECT_EQ(whyText(app), "Evil?[2J?Name (42): not slowed. of a later copy\n");
}

TEST(Changes, AreOfWhatIsToldAndNotOfMemory) {
  Status before;
  before.apps.emplace_back();
  Status now = before;
  now.apps.front().memory = 5;
  now.version = "another";
  EXPECT_FALSE(changesBetween(before, now).any());
  now.apps.front().state = "in background";
  EXPECT_TRUE(changesBetween(before, now).apps);
  EXPECT_FALSE(changesBetween(before, now).active);
  now.isActive = now.isAutomatic = true;
  now.boostPid = 7;
  now.pausedUntil = 8;
  now.pressure = "warning";
  const Changes all = changesBetween(before, now);
  EXPECT_TRUE(all.active && all.app && all.automatic && all.pausedUntil && all.pressure && all.apps);
}

} // namespace
} // namespace vantle
