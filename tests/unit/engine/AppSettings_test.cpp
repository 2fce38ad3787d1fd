// SPDX-License-Identifier: MIT
#include "engine/AppSettings.h"

#include "platform/simulated/SimulatedMachine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using List = std::vector<std::string>;
using Value = UserDefaults::Value;

class AppSettingsTest : public testing::Test {
 protected:
  SimulatedMachine machine;
  SimulatedDefaults& store = machine.defaults;
  SimulatedDefaults::Domain& former() { return store.suite("com.halvo.murn"); }
  List keys() {
    List all;
    for (const auto& [key, value] : store.domain()) all.push_back(key);
    return all;
  }
};

TEST_F(AppSettingsTest, AFirstStartHasEveryDefaultAndWritesOnlyTheMarker) {
  const AppSettings settings(store);
  EXPECT_TRUE(settings.detectCrossOver.get());
  EXPECT_TRUE(settings.detectMinecraft.get());
  EXPECT_TRUE(settings.detectSteam.get());
  EXPECT_TRUE(settings.detectGamesCategory.get());
  EXPECT_FALSE(settings.detectGameMode.get());
  EXPECT_TRUE(settings.checkUpdatesAutomatically.get());
  EXPECT_THAT(settings.userGames.get(), IsEmpty());
  EXPECT_THAT(settings.protectedApps.get(),
              ElementsAre("com.spotify.client", "com.apple.Music", "com.hnc.Discord",
                          "com.obsproject.obs-studio", "com.codeweavers.CrossOver",
                          "com.mojang.minecraftlauncher"));
  EXPECT_EQ(settings.ramAction.get(), RAMAction::notify);
  EXPECT_THAT(settings.quittableApps.get(), IsEmpty());
  EXPECT_EQ(settings.accent.get(), AccentTheme::blue);
  EXPECT_EQ(settings.appearance.get(), AppearanceMode::system);
  EXPECT_EQ(settings.lastUpdateCheck(), std::nullopt);
  EXPECT_THAT(keys(), ElementsAre("migratedFromMurn"));
  EXPECT_EQ(store.object("migratedFromMurn"), Value(true));
}

TEST_F(AppSettingsTest, EveryChoiceIsWrittenAtOnceAndReadAtTheNextStart) {
  {
    AppSettings settings(store);
    settings.detectCrossOver.set(false);
    settings.detectMinecraft.set(false);
    settings.detectSteam.set(false);
    settings.detectGamesCategory.set(false);
    settings.detectGameMode.set(true);
    settings.userGames.set({"z", "a", "z"});
    settings.protectedApps.set({"p"});
    settings.ramAction.set(RAMAction::quitMarked);
    settings.quittableApps.set({"q"});
    settings.accent.set(AccentTheme::graphite);
    settings.appearance.set(AppearanceMode::dark);
    settings.checkUpdatesAutomatically.set(false);
    settings.setLastUpdateCheck(Date(std::chrono::seconds(1'800'000'000)));
  }
  const SimulatedDefaults::Domain expected{
      {"detectCrossOver", Value(false)},
      {"detectMinecraft", Value(false)},
      {"detectSteam", Value(false)},
      {"detectGamesCategory", Value(false)},
      {"detectGameMode", Value(true)},
      {"userGames", Value(List{"z", "a", "z"})},
      {"protectedApps", Value(List{"p"})},
      {"ramAction", Value(std::string("quitMarked"))},
      {"quittableApps", Value(List{"q"})},
      {"accent", Value(std::string("graphite"))},
      {"appearance", Value(std::string("dark"))},
      {"checkUpdatesAutomatically", Value(false)},
      {"lastUpdateCheck", Value(Date(std::chrono::seconds(1'800'000'000)))},
      {"migratedFromMurn", Value(true)},
  };
  EXPECT_EQ(store.domain(), expected);

  const AppSettings next(store);
  EXPECT_FALSE(next.detectCrossOver.get());
  EXPECT_FALSE(next.detectMinecraft.get());
  EXPECT_FALSE(next.detectSteam.get());
  EXPECT_FALSE(next.detectGamesCategory.get());
  EXPECT_TRUE(next.detectGameMode.get());
  EXPECT_EQ(next.userGames.get(), (List{"z", "a", "z"}));
  EXPECT_EQ(next.protectedApps.get(), List{"p"});
  EXPECT_EQ(next.ramAction.get(), RAMAction::quitMarked);
  EXPECT_EQ(next.quittableApps.get(), List{"q"});
  EXPECT_EQ(next.accent.get(), AccentTheme::graphite);
  EXPECT_EQ(next.appearance.get(), AppearanceMode::dark);
  EXPECT_FALSE(next.checkUpdatesAutomatically.get());
  EXPECT_EQ(next.lastUpdateCheck(), Date(std::chrono::seconds(1'800'000'000)));
}

TEST_F(AppSettingsTest, AnEmptiedProtectedListStaysEmpty) {
  AppSettings(store).protectedApps.set({});
  EXPECT_EQ(store.object("protectedApps"), Value(List{}));
  EXPECT_THAT(AppSettings(store).protectedApps.get(), IsEmpty());
}

TEST_F(AppSettingsTest, AProtectedListStoredAsOneTextYieldsTheDefault) {
  store.set("protectedApps", std::string("com.spotify.client"));
  EXPECT_EQ(AppSettings(store).protectedApps.get(), defaultProtectedApps());
}

TEST_F(AppSettingsTest, ValuesOfOtherTypesAndUnknownWordsFallBackAndAreLeftInTheStore) {
  const SimulatedDefaults::Foreign number{"7"};
  for (const char* key : {"detectSteam", "userGames", "accent"}) store.domain()[key] = number;
  store.set("detectCrossOver", std::string("no"));
  store.set("ramAction", std::string("QuitMarked"));
  store.set("appearance", std::string("Dark"));
  const SimulatedDefaults::Domain before = store.domain();
  const AppSettings settings(store);
  EXPECT_TRUE(settings.detectSteam.get());
  EXPECT_TRUE(settings.detectCrossOver.get());
  EXPECT_THAT(settings.userGames.get(), IsEmpty());
  EXPECT_EQ(settings.accent.get(), AccentTheme::blue);
  EXPECT_EQ(settings.ramAction.get(), RAMAction::notify);
  EXPECT_EQ(settings.appearance.get(), AppearanceMode::system);
  for (const auto& [key, value] : before) EXPECT_EQ(store.domain()[key], value) << key;
}

TEST_F(AppSettingsTest, RawValuesAreComparedExactly) {
  for (const char* word : {"", "Teal", "teal ", "cyan"}) {
    store.set("accent", std::string(word));
    EXPECT_EQ(AppSettings(store).accent.get(), AccentTheme::blue) << word;
  }
  for (const char* word : {"", "quitmarked", "quit"}) {
    store.set("ramAction", std::string(word));
    EXPECT_EQ(AppSettings(store).ramAction.get(), RAMAction::notify) << word;
  }
  for (const char* word : {"", "Light", "auto"}) {
    store.set("appearance", std::string(word));
    EXPECT_EQ(AppSettings(store).appearance.get(), AppearanceMode::system) << word;
  }
}

TEST_F(AppSettingsTest, EveryRawValueIsReadBackAsItsCase) {
  for (const AccentTheme theme : allAccentThemes) {
    store.set("accent", std::string(rawValue(theme)));
    EXPECT_EQ(AppSettings(store).accent.get(), theme);
  }
  for (const AppearanceMode mode : allAppearanceModes) {
    store.set("appearance", std::string(rawValue(mode)));
    EXPECT_EQ(AppSettings(store).appearance.get(), mode);
  }
}

TEST_F(AppSettingsTest, TheLastUpdateCheckIsNeverCachedAndSettingNothingRemovesIt) {
  AppSettings settings(store);
  const Date day(std::chrono::seconds(86'400));
  settings.setLastUpdateCheck(day);
  EXPECT_EQ(settings.lastUpdateCheck(), day);
  store.set("lastUpdateCheck", Date(std::chrono::seconds(5)));
  EXPECT_EQ(settings.lastUpdateCheck(), Date(std::chrono::seconds(5)));
  store.set("lastUpdateCheck", std::string("yesterday"));
  EXPECT_EQ(settings.lastUpdateCheck(), std::nullopt);
  settings.setLastUpdateCheck(std::nullopt);
  EXPECT_FALSE(store.contains("lastUpdateCheck"));
  EXPECT_EQ(settings.lastUpdateCheck(), std::nullopt);
}

TEST_F(AppSettingsTest, ChangesFromOutsideAreNotPickedUp) {
  const AppSettings settings(store);
  store.set("detectSteam", false);
  EXPECT_TRUE(settings.detectSteam.get());
}

TEST_F(AppSettingsTest, ObserversHearOfAChangeBeforeItIsWritten) {
  AppSettings settings(store);
  List heard;
  const auto watching = settings.accent.observe([&] {
    heard.push_back(std::string(rawValue(settings.accent.get())) +
                    (store.contains("accent") ? " written" : " not written"));
  });
  settings.accent.set(AccentTheme::pink);
  EXPECT_THAT(heard, ElementsAre("pink not written"));
}

TEST_F(AppSettingsTest, TheAppearanceIsAppliedAfterItWasWritten) {
  AppSettings settings(store);
  List applied;
  settings.applyAppearance = [&](AppearanceMode mode) {
    applied.push_back(std::string(rawValue(mode)) + " " +
                      std::get<std::string>(store.object("appearance").value()));
  };
  settings.appearance.set(AppearanceMode::dark);
  settings.appearance.set(AppearanceMode::system);
  EXPECT_THAT(applied, ElementsAre("dark dark", "system system"));
}

class Migration : public AppSettingsTest {};

TEST_F(Migration, AValueOfTheNewDomainWinsAndTheRestIsTakenOver) {
  former()["accent"] = Value(std::string("teal"));
  former()["userGames"] = Value(List{"org.example.chess"});
  store.set("accent", std::string("red"));
  const AppSettings settings(store);
  EXPECT_EQ(settings.accent.get(), AccentTheme::red);
  EXPECT_THAT(settings.userGames.get(), ElementsAre("org.example.chess"));
}

TEST_F(Migration, CopiesExactlyTheThirteenKeysOfWhateverType) {
  const List thirteen{"accent",          "appearance",          "checkUpdatesAutomatically",
                      "detectCrossOver", "detectGamesCategory", "detectMinecraft",
                      "detectSteam",     "lastUpdateCheck",     "otomatik",
                      "protectedApps",   "quittableApps",       "ramAction",
                      "userGames"};
  for (const std::string& key : thirteen) former()[key] = SimulatedDefaults::Foreign{"number"};
  former()["migratedFromMurn"] = SimulatedDefaults::Foreign{"number"};
  former()["windowFrame"] = Value(std::string("0 0 10 10"));
  const AppSettings settings(store);
  for (const std::string& key : thirteen) {
    EXPECT_EQ(store.domain()[key], SimulatedDefaults::Stored(SimulatedDefaults::Foreign{"number"})) << key;
  }
  EXPECT_EQ(store.object("migratedFromMurn"), Value(true));
  EXPECT_FALSE(store.contains("windowFrame"));
}

TEST_F(Migration, CopiesInTheDocumentedOrderAfterTheMarker) {
  for (const char* key : {"accent", "otomatik", "userGames"}) former()[key] = Value(true);
  machine.calls.startTrace();
  const AppSettings settings(store);
  List changes;
  for (const std::string& line : machine.calls.takeTrace()) {
    if (!line.starts_with("defaults.read")) changes.push_back(line);
  }
  EXPECT_THAT(changes,
              ElementsAre("defaults.write migratedFromMurn", "defaults.open com.halvo.murn",
                          "defaults.copy otomatik", "defaults.copy userGames", "defaults.copy accent"));
}

TEST_F(Migration, AValueOfAnyTypeInTheNewDomainKeepsTheFormerOneOut) {
  store.domain()["accent"] = SimulatedDefaults::Foreign{"7"};
  former()["accent"] = Value(std::string("teal"));
  EXPECT_EQ(AppSettings(store).accent.get(), AccentTheme::blue);
}

TEST_F(Migration, HappensOnceEvenWhenThereWasNothingToTakeOver) {
  { const AppSettings settings(store); }
  former()["accent"] = Value(std::string("teal"));
  EXPECT_EQ(AppSettings(store).accent.get(), AccentTheme::blue);
}

TEST_F(Migration, AMarkerThatIsNotTrueDoesNotCount) {
  former()["accent"] = Value(std::string("teal"));
  store.set("migratedFromMurn", std::string("true"));
  EXPECT_EQ(AppSettings(store).accent.get(), AccentTheme::teal);
}

TEST_F(Migration, AFormerDomainThatCannotBeOpenedIsNotTriedAgain) {
  former()["accent"] = Value(std::string("teal"));
  machine.calls.refuseNext(Operation::openSuite);
  EXPECT_EQ(AppSettings(store).accent.get(), AccentTheme::blue);
  EXPECT_EQ(AppSettings(store).accent.get(), AccentTheme::blue);
}

TEST(SettingsEnums, HaveTheirStoredAndShownNamesAndColours) {
  struct Row {
    AccentTheme theme;
    const char* raw;
    const char* shown;
    AccentColor color;
  };
  const std::vector<Row> rows{
      {AccentTheme::blue, "blue", "Blue", {0.0, 0.4, 0.84}},
      {AccentTheme::purple, "purple", "Purple", {0.48, 0.25, 0.76}},
      {AccentTheme::pink, "pink", "Pink", {0.91, 0.27, 0.56}},
      {AccentTheme::red, "red", "Red", {0.84, 0.19, 0.19}},
      {AccentTheme::orange, "orange", "Orange", {0.89, 0.42, 0.05}},
      {AccentTheme::yellow, "yellow", "Yellow", {0.85, 0.62, 0.0}},
      {AccentTheme::green, "green", "Green", {0.16, 0.56, 0.26}},
      {AccentTheme::teal, "teal", "Teal", {0.05, 0.55, 0.62}},
      {AccentTheme::graphite, "graphite", "Graphite", {0.4, 0.4, 0.44}},
  };
  ASSERT_EQ(rows.size(), allAccentThemes.size());
  for (std::size_t at = 0; at < rows.size(); ++at) {
    EXPECT_EQ(allAccentThemes.at(at), rows[at].theme);
    EXPECT_EQ(rawValue(rows[at].theme), rows[at].raw);
    EXPECT_EQ(displayName(rows[at].theme), rows[at].shown);
    EXPECT_EQ(colorOf(rows[at].theme), rows[at].color) << rows[at].raw;
  }
  EXPECT_EQ(rawValue(RAMAction::notify), "notify");
  EXPECT_EQ(rawValue(RAMAction::quitMarked), "quitMarked");
  EXPECT_EQ(displayName(AppearanceMode::system), "System");
  EXPECT_EQ(displayName(AppearanceMode::light), "Light");
  EXPECT_EQ(displayName(AppearanceMode::dark), "Dark");
}

} // namespace
} // namespace vantle
