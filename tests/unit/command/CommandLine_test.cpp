// SPDX-License-Identifier: MIT
#include "command/CommandLine.h"

#include "command/StatusText.h"
#include "status/Changes.h"
#include "status/StatusJson.h"

#include <ctime>
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
                                                  {"-reverse"},
                                                  {"-reverse", "-title=A", "-session", "status"}};
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
                                                  {"--version", "-v"},
                                                  {"-x"},
                                                  {"-help"},
                                                  {"-"},
                                                  {"--"},
                                                  {"-platform", "xcb", "status"},
                                                  {"-session", "1", "-x"},
                                                  {"--platform=xcb", "--json"}};
  for (const auto& words : all) {
    EXPECT_TRUE(std::holds_alternative<UsageError>(parsed(words))) << words.front();
  }
}

TEST(CommandLine, HelpsWhoeverAsks) {
  const std::vector<std::vector<std::string>> all{{"--help"},           {"-h"},
                                                  {"status", "--help"}, {"status", "--json", "-h"},
                                                  {"why", "--help"},    {"pause", "-h"}};
  for (const auto& words : all) {
    const Parsed found = parsed(words);
    ASSERT_TRUE(std::holds_alternative<Request>(found)) << words.front();
    EXPECT_EQ(std::get<Request>(found).kind, CommandKind::help) << words.front();
  }
  EXPECT_EQ(std::get<Request>(parsed({"-v"})).kind, CommandKind::version);
  EXPECT_EQ(std::get<Request>(parsed({"why", "--", "--help"})).target, "--help");
}

TEST(CommandLine, SaysWhatWasTypedInOneLineOfBoundedLength) {
  const std::vector<std::vector<std::string>> all{{"a\nb\x1b[31m"},
                                                  {"-a\nb"},
                                                  {"status", "a\u009b\nb"},
                                                  {"status", "--a\nb"},
                                                  {"pause", "\u202e5\n"},
                                                  {std::string(100'000, 'x')},
                                                  {"off", std::string(100'000, 'x')}};
  for (const auto& words : all) {
    const Parsed found = parsed(words);
    ASSERT_TRUE(std::holds_alternative<UsageError>(found)) << words.front();
    const std::string& text = std::get<UsageError>(found).text;
    EXPECT_EQ(text.find_first_of("\n\x1b"), std::string::npos) << text;
    EXPECT_EQ(text.find("\u202e"), std::string::npos) << text;
    EXPECT_EQ(text.find("\u009b"), std::string::npos) << text;
    EXPECT_LT(text.size(), 250U) << text;
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

TEST(StatusText, SaysByWhatAnAppIsKnown) {
  AppStatus app;
  app.name = "Editor";
  app.id = "org.example.Editor\n";
  app.pid = 42;
  app.state = "not slowed";
  app.reason = "no boost";
  app.knownBy = "window class";
  app.knownBecause = "the desktop file declares it, to the letter";
  const std::string first = "Editor (42): not slowed. No Boost is running.\n";
  EXPECT_EQ(whyText(app), first + "  Known as org.example.Editor? by window class: the desktop file declares "
                                  "it, to the letter.\n");
  app.id.reset();
  app.knownBecause.reset(); // of a later copy
  EXPECT_EQ(whyText(app), first + "  Known by window class.\n");
  Status status;
  status.apps = {app};
  EXPECT_EQ(statusJson(status).arrayAt("apps").front().textAt("knownBy"), "window class");
  status.apps.front().knownBy.reset();
  EXPECT_EQ(whyText(status.apps.front()), first);
  EXPECT_EQ(*statusJson(status).arrayAt("apps").front().find("knownBy"), Json());
}

TEST(StatusText, ShowsNamesAsThePanelDoes) {
  Status status;
  status.isActive = true;
  status.boostName = "rev\u202egnp\u2028c1\u009b31m";
  AppStatus app;
  app.name = "\u200b\u2060";
  app.pid = 42;
  app.state = app.reason = "in front";
  status.apps.push_back(app);
  const std::string text = statusText(status);
  EXPECT_EQ(text.substr(0, text.find('\n')), "Boost on for revgnp?c1?31m");
  EXPECT_NE(text.find("  ? (42): in front\n"), std::string::npos) << text;
}

TEST(StatusText, TellsTheDayOfWhatIsNotToday) {
  const auto now = static_cast<std::uint64_t>(std::time(nullptr));
  EXPECT_EQ(clockText(now + 24UL * 3600).size(), std::string("2026-11-24 01:16").size());
  EXPECT_EQ(clockText(now).size(), std::string("01:16").size());
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
