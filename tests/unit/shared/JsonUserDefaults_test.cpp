// SPDX-License-Identifier: MIT
#include "platform/shared/JsonUserDefaults.h"

#include "engine/AppSettings.h"
#include "platform/simulated/SimulatedFiles.h"

#include <chrono>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace vantle {
namespace {

using namespace std::chrono_literals;
using Document = nlohmann::ordered_json;
using Strings = std::vector<std::string>;

const std::string folder = "/home/player/.config";
const std::string path = folder + "/com.halvo.vantle/defaults.json";
const std::string formerPath = folder + "/com.halvo.murn/defaults.json";
const std::string aside = path + ".corrupt";

class JsonUserDefaultsTest : public testing::Test {
 protected:
  std::string& file(const std::string& name = path) { return files.contents[name]; }
  Document document() { return Document::parse(file()); }

  SimulatedCalls calls;
  SimulatedFiles files{calls};
  JsonUserDefaults defaults{files, folder, "com.halvo.vantle"};
};

Date dateOf(int year, unsigned month, unsigned day, std::chrono::seconds time) {
  using namespace std::chrono;
  return sys_days(year_month_day(std::chrono::year(year), std::chrono::month(month), std::chrono::day(day))) +
         time;
}

TEST_F(JsonUserDefaultsTest, ReadsBackWhatWasSet) {
  const std::map<std::string, UserDefaults::Value> values{
      {"yes", true},
      {"no", false},
      {"text", std::string("a \"b\"\n\\ \xC3\xA9")},
      {"empty text", std::string()},
      {"list", Strings{"b", "a", "b"}},
      {"empty list", Strings{}},
      {"date", dateOf(2026, 11, 20, 12h)},
      {"epoch", Date(0s)},
      {"leap day", dateOf(2028, 2, 29, 23h + 59min + 59s)},
      {"before the epoch", dateOf(1969, 12, 31, 23h + 59min + 59s)},
  };
  for (const auto& [key, value] : values) {
    defaults.set(key, value);
    EXPECT_EQ(defaults.object(key), value) << key;
  }
  const JsonUserDefaults again(files, folder, "com.halvo.vantle");
  for (const auto& [key, value] : values) EXPECT_EQ(again.object(key), value) << key;
}

TEST_F(JsonUserDefaultsTest, WritesEachTypeInItsForm) {
  defaults.set("flag", true);
  defaults.set("name", std::string("teal"));
  defaults.set("apps", Strings{"b", "a"});
  defaults.set("when", dateOf(2026, 11, 20, 12h));
  EXPECT_EQ(document(), Document::parse(R"({"flag": true, "name": "teal", "apps": ["b", "a"],
                                        "when": {"date": "2026-11-20T12:00:00Z"}})"));
}

TEST_F(JsonUserDefaultsTest, WritesEveryChangeBeforeTheCallReturns) {
  defaults.set("a", true);
  EXPECT_EQ(document(), Document::parse(R"({"a": true})"));
  defaults.set("a", false);
  EXPECT_EQ(document(), Document::parse(R"({"a": false})"));
  defaults.remove("a");
  EXPECT_EQ(document(), Document::object());
}

TEST_F(JsonUserDefaultsTest, HasNothingWithoutAFileAndWritesNoneByReading) {
  EXPECT_FALSE(defaults.object("a"));
  EXPECT_FALSE(defaults.contains("a"));
  EXPECT_TRUE(files.contents.empty());
}

TEST_F(JsonUserDefaultsTest, ReadsOtherTypesAsAbsentAndKeepsThem) {
  file() = R"({"number": 1, "real": 0.1, "null": null, "object": {"a": [1]}, "mixed": ["a", 1],
               "big": 18446744073709551615, "small": -9223372036854775808, "two": {"date": "2026-11-20T12:00:00Z", "x": 1}})";
  const Document before = document();
  for (const auto& [key, value] : before.items()) {
    EXPECT_FALSE(defaults.object(key)) << key;
    EXPECT_TRUE(defaults.contains(key)) << key;
  }
  defaults.set("mine", true);
  Document after = document();
  EXPECT_EQ(after["mine"], true);
  after.erase("mine");
  EXPECT_EQ(after, before);
}

TEST_F(JsonUserDefaultsTest, ReadsOnlyRealDates) {
  const auto read = [&](const std::string& text) {
    file() = R"({"when": {"date": ")" + text + "\"}}";
    return defaults.object("when");
  };
  EXPECT_EQ(read("2026-11-20T12:00:00Z"), UserDefaults::Value(dateOf(2026, 11, 20, 12h)));
  for (const char* text :
       {"", "2026-11-20", "2026-11-20T12:00:00", "2026-11-20T12:00:00+01:00", "2026-11-20t12:00:00z",
        "2026-13-20T12:00:00Z", "2026-02-29T12:00:00Z", "2026-00-20T12:00:00Z", "2026-11-00T12:00:00Z",
        "2026-11-20T24:00:00Z", "2026-11-20T12:60:00Z", "2026-11-20T12:00:60Z", "2026-11-20T12:00:00.5Z",
        " 2026-11-20T12:00:00Z", "+026-11-20T12:00:00Z", "2026-1a-20T12:00:00Z"}) {
    EXPECT_FALSE(read(text)) << text;
  }
}

TEST_F(JsonUserDefaultsTest, SeesAndKeepsWhatOthersWriteMeanwhile) {
  defaults.set("mine", true);
  file() = R"({"mine": false, "theirs": "x"})";
  EXPECT_EQ(defaults.object("mine"), UserDefaults::Value(false));
  defaults.set("other", true);
  EXPECT_EQ(document(), Document::parse(R"({"mine": false, "theirs": "x", "other": true})"));
}

// What no file of this program can hold.
const std::string foreignContents[] = {"",
                                       " ",
                                       "{",
                                       R"({"accent": "teal")",
                                       "[]",
                                       "null",
                                       "7",
                                       R"("text")",
                                       "{} {}",
                                       "bplist00\x01",
                                       std::string("{\"a\": \"\xff\"}"),
                                       std::string("\0\0\0\0", 4),
                                       R"({"a": 1e999})",
                                       std::string(500'000, '['),
                                       R"({"a": )" + std::string(65, '[') + std::string(65, ']') + "}",
                                       std::string(2'000'000, ' ') + "{}"};

TEST_F(JsonUserDefaultsTest, ReadsAForeignFileAsEmptyAndLeavesItAlone) {
  for (const std::string& bytes : foreignContents) {
    file() = bytes;
    EXPECT_FALSE(defaults.object("accent")) << bytes.substr(0, 30);
    EXPECT_FALSE(defaults.contains("accent")) << bytes.substr(0, 30);
    EXPECT_EQ(file(), bytes);
    EXPECT_EQ(files.contents.size(), 1U);
  }
}

TEST_F(JsonUserDefaultsTest, SetsAForeignFileAsideBeforeTheFirstChange) {
  for (const std::string& bytes : foreignContents) {
    file() = bytes;
    testing::internal::CaptureStderr();
    defaults.set("a", true);
    EXPECT_EQ(document(), Document::parse(R"({"a": true})"));
    EXPECT_EQ(file(aside), bytes);
    defaults.set("a", false);
    EXPECT_EQ(file(aside), bytes) << "once only";
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vantle: " + path + " cannot be read, and is kept as defaults.json.corrupt.\n");
  }
}

TEST_F(JsonUserDefaultsTest, LeavesAForeignFileThatCannotBeSetAside) {
  file() = "{ hand-written";
  calls.refuse(Operation::renameFile);
  defaults.set("a", true);
  EXPECT_EQ(file(), "{ hand-written");
  EXPECT_EQ(defaults.object("a"), UserDefaults::Value(true)) << "in force all the same";
  calls.grantAll();
  defaults.set("b", true);
  EXPECT_EQ(document(), Document::parse(R"({"a": true, "b": true})"));
  EXPECT_EQ(file(aside), "{ hand-written");
}

TEST_F(JsonUserDefaultsTest, AcceptsNestingThatCanBeWalked) {
  file() = R"({"a": )" + std::string(60, '[') + std::string(60, ']') + "}";
  const Document before = document();
  defaults.set("b", true);
  EXPECT_EQ(document()["a"], before["a"]);
}

TEST_F(JsonUserDefaultsTest, WritesAFailedChangeWithTheNext) {
  file() = R"({"gone": true, "kept": true})";
  calls.refuse(Operation::writeFile);
  defaults.set("a", std::string("x"));
  defaults.remove("gone");
  EXPECT_EQ(document(), Document::parse(R"({"gone": true, "kept": true})"));
  EXPECT_EQ(defaults.object("a"), UserDefaults::Value(std::string("x")));
  EXPECT_FALSE(defaults.contains("gone"));
  calls.grantAll();
  defaults.set("b", true);
  EXPECT_EQ(document(), Document::parse(R"({"kept": true, "a": "x", "b": true})"));
}

TEST_F(JsonUserDefaultsTest, SaysOnceThatChangesCannotBeWritten) {
  const auto said = [this](const char* key) {
    testing::internal::CaptureStderr();
    defaults.set(key, true);
    return testing::internal::GetCapturedStderr();
  };
  EXPECT_EQ(said("a"), "");
  calls.refuse(Operation::writeFile);
  EXPECT_EQ(said("b"),
            "vantle: " + defaults.path() + " cannot be written: changed settings last until Vantle ends.\n");
  EXPECT_EQ(said("c"), "");
  calls.grantAll();
  EXPECT_EQ(said("d"), "");
  calls.refuse(Operation::writeFile);
  EXPECT_NE(said("e"), "") << "it could be written in between";
}

TEST_F(JsonUserDefaultsTest, CleansATextThatIsNoUtf8) {
  defaults.set("a", std::string("x\xff"));
  defaults.set("b", true);
  EXPECT_EQ(document(), Document::parse("{\"a\": \"x\xEF\xBF\xBD\", \"b\": true}"));
}

TEST_F(JsonUserDefaultsTest, OpensAnotherDomainOnlyWhenItIsThere) {
  EXPECT_EQ(defaults.openSuite("com.halvo.murn"), nullptr);
  file(formerPath) = R"({"accent": "teal"})";
  const auto former = defaults.openSuite("com.halvo.murn");
  ASSERT_TRUE(former);
  EXPECT_EQ(former->object("accent"), UserDefaults::Value(std::string("teal")));
  file(formerPath) = "not JSON";
  EXPECT_FALSE(defaults.openSuite("com.halvo.murn")->contains("accent"));
}

TEST_F(JsonUserDefaultsTest, CopiesWhateverStandsUnderTheKey) {
  file(formerPath) =
      R"({"number": 7, "object": {"a": [null, 1.5]}, "date": {"date": "2026-11-20T12:00:00Z"}})";
  const auto former = defaults.openSuite("com.halvo.murn");
  for (const char* key : {"number", "object", "date"}) EXPECT_TRUE(defaults.copyFrom(*former, key)) << key;
  EXPECT_FALSE(defaults.copyFrom(*former, "none"));
  EXPECT_EQ(document(), Document::parse(file(formerPath)));
}

TEST_F(JsonUserDefaultsTest, CarriesTheFirstStart) {
  const AppSettings settings(defaults);
  EXPECT_EQ(document(), Document::parse(R"({"migratedFromMurn": true})"));
  EXPECT_TRUE(settings.detectSteam.get());
  EXPECT_EQ(settings.protectedApps.get(), defaultProtectedApps());
}

TEST_F(JsonUserDefaultsTest, CarriesTheMigrationOnce) {
  file(formerPath) = R"({"accent": "teal", "userGames": ["a", "b"], "otomatik": 0, "lastUpdateCheck":
                         {"date": "2026-01-02T03:04:05Z"}, "migratedFromMurn": false, "unknown": 1})";
  file() = R"({"accent": "red"})";
  {
    const AppSettings settings(defaults);
    EXPECT_EQ(settings.accent.get(), AccentTheme::red);
    EXPECT_EQ(settings.userGames.get(), (Strings{"a", "b"}));
    EXPECT_EQ(settings.lastUpdateCheck(), dateOf(2026, 1, 2, 3h + 4min + 5s));
  }
  EXPECT_EQ(document(), Document::parse(R"({"accent": "red", "migratedFromMurn": true, "otomatik": 0,
      "userGames": ["a", "b"], "lastUpdateCheck": {"date": "2026-01-02T03:04:05Z"}})"));
  file(formerPath) = R"({"quittableApps": ["c"]})";
  EXPECT_TRUE(AppSettings(defaults).quittableApps.get().empty());
}

} // namespace
} // namespace vantle
