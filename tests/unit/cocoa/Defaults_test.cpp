// SPDX-License-Identifier: MIT
// The user defaults of the free Foundation, in a home folder of their own.
#include "platform/darwin/defaults/CocoaDefaults.h"

#include "tests/unit/cocoa/CocoaFixture.h"
#include "tests/unit/cocoa/FoundationDomains.h"

#include <gmock/gmock.h>

namespace vantle {
namespace {

using Value = UserDefaults::Value;
using Texts = std::vector<std::string>;

class CocoaChoices : public CocoaTest {
 protected:
  CocoaChoices() { clear(); }
  ~CocoaChoices() override { clear(); }
  CocoaChoices(const CocoaChoices&) = delete;
  CocoaChoices& operator=(const CocoaChoices&) = delete;

  void clear() {
    clearDomain(ownName);
    clearDomain("com.halvo.murn");
  }
  static Date date(long long seconds) { return Date(std::chrono::seconds(seconds)); }

  // The free Foundation keeps a program's choices under its name.
  std::string ownName = withoutBundle();
  CocoaDefaults defaults;

 private:
  std::string withoutBundle() {
    cocoa.ownBundle.reset();
    return ownDomain();
  }
};

TEST_F(CocoaChoices, ComeBackAsWhatTheyWere) {
  const std::vector<std::pair<std::string, Value>> all{
      {"truth", true},
      {"lie", false},
      {"text", std::string("Café \xE2\x82\xAC \xF0\x9F\x8E\xAE")},
      {"empty", std::string()},
      {"list", Texts{"com.spotify.client", "b", "a", "b"}},
      {"none", Texts{}},
      {"date", date(1'795'000'000)},
      {"past", date(-1)},
  };
  for (const auto& [key, value] : all) {
    EXPECT_FALSE(defaults.contains(key)) << key;
    EXPECT_EQ(defaults.object(key), std::nullopt) << key;
    defaults.set(key, value);
    EXPECT_TRUE(defaults.contains(key)) << key;
    EXPECT_EQ(defaults.object(key), value) << key;
    EXPECT_EQ(CocoaDefaults().object(key), value) << key << ", for another reader";
  }
  for (const auto& [key, value] : all) {
    defaults.remove(key);
    EXPECT_FALSE(defaults.contains(key)) << key;
    EXPECT_EQ(defaults.object(key), std::nullopt) << key;
  }
}

TEST_F(CocoaChoices, NumbersAreTruthWhenTheyAreNoughtOrOne) {
  const std::vector<std::pair<std::string, std::optional<Value>>> all{
      {"1", true}, {"0", false}, {"2", {}}, {"-1", {}}, {"0.5", {}}, {"1.0", true}};
  for (const auto& [number, value] : all) {
    putNumber(ownName, "number", std::stod(number));
    EXPECT_TRUE(defaults.contains("number"));
    EXPECT_EQ(defaults.object("number"), value) << number;
  }
}

TEST_F(CocoaChoices, WhatIsOfNoKnownTypeIsThereAndReadsAsAbsent) {
  for (const char* key : {"dictionary", "data", "mixed", "distant"}) {
    putOdd(ownName, key);
    EXPECT_TRUE(defaults.contains(key)) << key;
    EXPECT_EQ(defaults.object(key), std::nullopt) << key;
  }
}

// Some other program's choice, or the whole system's, under the same key.
TEST_F(CocoaChoices, AreInADomainOfTheirOwn) {
  putNumber("com.halvo.vantle", "accent", 1);
  EXPECT_FALSE(defaults.contains("accent"));
  cocoa.ownBundle = "com.halvo.vantle";
  EXPECT_TRUE(CocoaDefaults().contains("accent")) << "that of the bundle";
  clearDomain("com.halvo.vantle");
  putNumber("NSGlobalDomain", "accent", 1);
  EXPECT_FALSE(defaults.contains("accent"));
  clearDomain("NSGlobalDomain");
}

TEST_F(CocoaChoices, AnotherProductsDomainIsReadAndNeverWritten) {
  EXPECT_EQ(defaults.openSuite("com.halvo.murn"), nullptr);
  putNumber("com.halvo.murn", "otomatik", 0);
  putOdd("com.halvo.murn", "dictionary");
  const auto former = defaults.openSuite("com.halvo.murn");
  ASSERT_NE(former, nullptr);
  EXPECT_EQ(former->object("otomatik"), Value(false));
  EXPECT_TRUE(former->contains("dictionary"));
  EXPECT_EQ(former->object("dictionary"), std::nullopt);
  former->set("otomatik", true);
  EXPECT_FALSE(defaults.contains("otomatik")) << "nor is it this one's now";
  former->remove("otomatik");
  EXPECT_FALSE(former->copyFrom(defaults, "otomatik"));
  EXPECT_EQ(defaults.openSuite("com.halvo.murn")->object("otomatik"), Value(false));
}

TEST_F(CocoaChoices, AreCopiedWhateverTheyAre) {
  putOdd("com.halvo.murn", "dictionary");
  const auto former = defaults.openSuite("com.halvo.murn");
  EXPECT_TRUE(defaults.copyFrom(*former, "dictionary"));
  EXPECT_TRUE(defaults.contains("dictionary"));
  EXPECT_EQ(oddIn(ownName, "dictionary"), oddIn("com.halvo.murn", "dictionary"));
  EXPECT_FALSE(defaults.copyFrom(*former, "nothing"));
  EXPECT_FALSE(defaults.contains("nothing"));
  machine.defaults.set("accent", std::string("teal"));
  EXPECT_TRUE(defaults.copyFrom(machine.defaults, "accent")) << "of another kind of store";
  EXPECT_EQ(defaults.object("accent"), Value(std::string("teal")));
}

TEST_F(CocoaChoices, MalformedTextsAreCleanedAndNotLost) {
  defaults.set("text", std::string("a\xFFz"));
  EXPECT_EQ(defaults.object("text"), Value(std::string("a\xEF\xBF\xBDz")));
  EXPECT_EQ(textOfHalfPair(), "a\xEF\xBF\xBDz");
}

// The former edition's choices, on the first start.
TEST_F(CocoaChoices, SettingsStartFromThem) {
  putNumber("com.halvo.murn", "detectSteam", 0);
  {
    const AppSettings first(defaults);
    EXPECT_FALSE(first.detectSteam.get());
    EXPECT_TRUE(first.detectMinecraft.get());
  }
  putNumber("com.halvo.murn", "detectMinecraft", 0);
  AppSettings second(defaults);
  EXPECT_TRUE(second.detectMinecraft.get()) << "they are taken over once";
  second.userGames.set({"org.example.Asteroids"});
  EXPECT_EQ(AppSettings(defaults).userGames.get(), Texts{"org.example.Asteroids"});
}

} // namespace
} // namespace vantle
