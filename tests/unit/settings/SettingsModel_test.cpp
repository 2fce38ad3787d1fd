// SPDX-License-Identifier: MIT
#include "settings/model/SettingsModel.h"

#include "base/Observers.h"
#include "platform/simulated/SampleDesktop.h"
#include "platform/simulated/SimulatedMachine.h"
#include "settings/model/AppKeys.h"
#include "tests/unit/settings/ScriptedExtension.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace vantle {

namespace {

class SettingsModelTest : public testing::Test {
 protected:
  using Keys = std::vector<std::string>;

  template <class T> T stored(const std::string& key) {
    return std::get<T>(std::get<UserDefaults::Value>(machine.defaults.domain().at(key)));
  }
  static QStringList names(const QAbstractItemModel& model, const char* role = "name") {
    QStringList names;
    const int number = model.roleNames().key(role);
    for (int row = 0; row < model.rowCount(); ++row)
      names.append(model.data(model.index(row, 0), number).toString());
    return names;
  }

  void boostWithMailInTheBackground() {
    machine.launch({.name = "Mail", .bundleID = "org.example.mail"}, Opening::inBackground);
    machine.launch({.name = "Game", .bundleID = "org.example.game", .bundlePath = "/games/steamapps/game"},
                   Opening::inFront);
    ASSERT_EQ(engine.managedNames.get(), std::vector<std::string>{"Mail"});
  }

  SimulatedMachine machine;
  AppSettings settings{machine.defaults};
  Engine engine{machine.ports(), settings};
  UpdateChecker checker{
      {.version = "1.2", .feed = {}, .vendorHost = {}, .authorities = {}}, settings, machine.clock, {}};
  SimulatedLoginItem login;
  SimulatedCatalog catalog;
  ScriptedExtension extension;
  SettingsModel model{{engine, settings, checker, login, catalog, extension}, Pane::boost};
  BoostModel& boost = *model.boost();
  AppPickerModel& picker = *model.picker();
};

TEST_F(SettingsModelTest, ListsThePanesInOrder) {
  EXPECT_EQ(model.paneTitles(), (QStringList{"General", "Boost", "Appearance", "Updates", "About"}));
  EXPECT_EQ(model.paneSymbols(),
            (QStringList{"gearshape", "bolt", "paintpalette", "arrow.triangle.2.circlepath", "info.circle"}));
  EXPECT_EQ(model.pane(), Pane::boost);
  model.setPaneIndex(4);
  EXPECT_EQ(model.pane(), Pane::about);
  model.setPaneIndex(5);
  model.setPaneIndex(-1);
  EXPECT_EQ(model.pane(), Pane::about);
}

TEST_F(SettingsModelTest, SwitchesStoreAtOnceAndFollowOthers) {
  const std::vector<std::pair<Switch*, const char*>> switches{
      {model.automatic(), "otomatik"},
      {boost.crossOver(), "detectCrossOver"},
      {boost.minecraft(), "detectMinecraft"},
      {boost.steam(), "detectSteam"},
      {boost.gamesCategory(), "detectGamesCategory"},
      {model.updates()->automatically(), "checkUpdatesAutomatically"}};
  for (const auto& [choice, key] : switches) {
    int told = 0;
    const QObject listener;
    QObject::connect(choice, &Switch::changed, &listener, [&told] { ++told; });
    EXPECT_TRUE(choice->isOn()) << key;
    choice->toggle();
    EXPECT_FALSE(choice->isOn()) << key;
    EXPECT_FALSE(stored<bool>(key)) << key;
    EXPECT_EQ(told, 1) << key;
  }
  boost.gameMode()->toggle();
  EXPECT_TRUE(boost.gameMode()->isOn()) << "off by default";
  EXPECT_TRUE(stored<bool>("detectGameMode"));
  engine.setAutomatic(true);
  EXPECT_TRUE(model.automatic()->isOn());
}

TEST_F(SettingsModelTest, LoginSwitchAsksAgainWhenAPaneOpens) {
  model.openAtLogin()->toggle();
  EXPECT_TRUE(login.enabled);
  login.enabled = false;
  model.setPaneIndex(0);
  EXPECT_FALSE(model.openAtLogin()->isOn());
}

TEST_F(SettingsModelTest, ListKeepsTheOrderAndHoldsNoAppTwice) {
  AppListModel& games = *boost.userGames();
  games.add("org.mozilla.firefox");
  games.add("no.such.app");
  games.add("org.mozilla.firefox");
  EXPECT_EQ(stored<Keys>("userGames"), (Keys{"org.mozilla.firefox", "no.such.app"}));
  EXPECT_EQ(names(games), (QStringList{"Firefox", "no.such.app"}));
  EXPECT_EQ(names(games, "icon"), (QStringList{"firefox", ""}));
  games.remove("org.mozilla.firefox");
  EXPECT_EQ(stored<Keys>("userGames"), Keys{"no.such.app"});
  games.remove("never there");
  games.remove("no.such.app");
  EXPECT_EQ(stored<Keys>("userGames"), Keys{});
  EXPECT_EQ(games.count(), 0);
}

TEST_F(SettingsModelTest, ListFollowsEveryChangeMadeElsewhere) {
  AppListModel& games = *boost.userGames();
  for (const Keys& keys : {Keys{"a"}, Keys{"a", "b", "c"}, Keys{"a", "c"}, Keys{"c"}, Keys{"x", "c"},
                           Keys{"c", "x"}, Keys{"q", "q"}, Keys{"q"}, Keys{}, Keys{"a", "b"}}) {
    settings.userGames.set(keys);
    QStringList shown;
    for (const std::string& key : keys) shown.append(QString::fromStdString(key));
    EXPECT_EQ(names(games, "key"), shown);
    EXPECT_EQ(games.count(), static_cast<int>(keys.size()));
  }
}

TEST_F(SettingsModelTest, RemovingTakesAwayEveryCopyOfAKey) {
  settings.protectedApps.set({"a", "b", "a"});
  boost.protectedApps()->remove("a");
  EXPECT_EQ(settings.protectedApps.get(), Keys{"b"});
}

TEST_F(SettingsModelTest, AlwaysBoostShowsInTheList) {
  machine.launch({.name = "Editor", .bundleID = "org.example.editor"}, Opening::inFront);
  engine.alwaysBoost();
  EXPECT_EQ(names(*boost.userGames(), "key"), QStringList{"org.example.editor"});
}

TEST_F(SettingsModelTest, ProtectingAnAppPutsItBackAtOnce) {
  boostWithMailInTheBackground();
  boost.quittableApps()->add("org.example.mail");
  ASSERT_EQ(engine.managedNames.get(), std::vector<std::string>{"Mail"});
  boost.protectedApps()->add("org.example.mail");
  EXPECT_TRUE(engine.managedNames.get().empty());
}

TEST_F(SettingsModelTest, BoostingAnAppPutsItBackAtOnce) {
  boostWithMailInTheBackground();
  boost.userGames()->add("org.example.mail");
  EXPECT_TRUE(engine.managedNames.get().empty());
}

TEST_F(SettingsModelTest, RamActionChangesTheFooter) {
  EXPECT_EQ(boost.ramAction(), 0);
  EXPECT_EQ(boost.quittableFooter(),
            "Not used right now. Choose “Quit the apps I mark as quittable” above to turn this on.");
  boost.chooseRamAction(1);
  EXPECT_EQ(stored<std::string>("ramAction"), "quitMarked");
  EXPECT_EQ(boost.quittableFooter(), "Quit only when memory is critical, never a Boost app or the app in "
                                     "front. Apps with unsaved work will ask first.");
  boost.chooseRamAction(0);
  EXPECT_EQ(stored<std::string>("ramAction"), "notify");
}

TEST_F(SettingsModelTest, AppearanceIsStoredAndApplied) {
  std::vector<AppearanceMode> applied;
  settings.applyAppearance = [&](AppearanceMode mode) { applied.push_back(mode); };
  AppearanceModel& appearance = *model.appearance();
  EXPECT_EQ(appearance.accents(),
            (QStringList{"blue", "purple", "pink", "red", "orange", "yellow", "green", "teal", "graphite"}));
  EXPECT_EQ(appearance.accentNames().back(), "Graphite");
  EXPECT_EQ(appearance.modeNames(), (QStringList{"System", "Light", "Dark"}));
  appearance.chooseAccent(8);
  appearance.chooseMode(2);
  appearance.chooseMode(2);
  appearance.chooseMode(3);
  appearance.chooseAccent(-1);
  EXPECT_EQ(stored<std::string>("accent"), "graphite");
  EXPECT_EQ(stored<std::string>("appearance"), "dark");
  EXPECT_EQ(applied, std::vector{AppearanceMode::dark});
}

TEST_F(SettingsModelTest, UpdatesSayWhatIsKnown) {
  UpdatesModel& updates = *model.updates();
  EXPECT_EQ(updates.currentVersion(), "1.2");
  EXPECT_EQ(updates.status(), "Not checked yet");
  EXPECT_EQ(updates.action(), "Check Now");
  settings.setLastUpdateCheck(Date(std::chrono::hours(24 * 365)));
  EXPECT_TRUE(updates.status().startsWith("Last checked ")) << updates.status().toStdString();
  updates.act();
  EXPECT_EQ(updates.status(), "Update checks aren't set up in this build.");
  EXPECT_EQ(updates.symbol(), "");
  EXPECT_EQ(updates.action(), "Check Now");
}

TEST_F(SettingsModelTest, AboutTellsVersionAndMemory) {
  EXPECT_EQ(model.about()->version(), "1.2");
  UpdateChecker nameless({}, settings, machine.clock, {});
  const SettingsModel other({engine, settings, nameless, login, catalog, extension}, Pane::about);
  EXPECT_EQ(const_cast<SettingsModel&>(other).about()->version(), "?");
  EXPECT_EQ(const_cast<SettingsModel&>(other).updates()->currentVersion(), "0");
  EXPECT_EQ(model.about()->memory().toStdString(), byteText(engine.ownFootprint()));
}

TEST_F(SettingsModelTest, PickerListsInstalledAppsByNameAndAddsTheChosenOne) {
  picker.openFor(boost.userGames());
  EXPECT_EQ(names(picker), (QStringList{"Firefox", "Galculator", "GNU Image Manipulation Program", "Mousepad",
                                        "OBS Studio", "Spotify"}));
  EXPECT_FALSE(picker.canAdd());
  picker.add();
  EXPECT_TRUE(picker.isOpen());
  picker.step(1);
  picker.step(1);
  EXPECT_TRUE(picker.canAdd());
  picker.add();
  EXPECT_FALSE(picker.isOpen());
  EXPECT_EQ(settings.userGames.get(), Keys{"galculator"});
}

// A dialog that the person answers when the test says so.
class ScriptedChooser final : public AppChooser {
 public:
  std::unique_ptr<Registration> choose(std::function<void(const std::string&)> picked) override {
    return m_answers.add(std::move(picked));
  }
  void pick(const std::string& path) const { m_answers.notify(path); }

 private:
  Observers<std::string> m_answers;
};

TEST_F(SettingsModelTest, PickerIsTheDesktopsOwnWhereThereIsOne) {
  ScriptedChooser chooser;
  SettingsModel other({engine, settings, checker, login, catalog, extension, &chooser}, Pane::boost);
  catalog.elsewhere["/Applications/Paint.app"] = {"org.example.paint", "Paint", "",
                                                  "/Applications/Paint.app"};
  other.picker()->openFor(other.boost()->userGames());
  EXPECT_FALSE(other.picker()->isOpen()) << "the window shows none of its own";
  chooser.pick("/etc/hosts");
  EXPECT_EQ(settings.userGames.get(), Keys{}) << "which is no app";
  chooser.pick("/Applications/Paint.app");
  EXPECT_EQ(settings.userGames.get(), Keys{"org.example.paint"});
  other.picker()->openFor(other.boost()->protectedApps());
  chooser.pick("/Applications/Paint.app");
  EXPECT_EQ(settings.userGames.get(), Keys{"org.example.paint"}) << "one dialog at a time";
  EXPECT_EQ(settings.protectedApps.get().back(), "org.example.paint");
  settings.userGames.set({});
  other.picker()->openFor(other.boost()->userGames());
  other.picker()->cancel();
  chooser.pick("/Applications/Paint.app");
  EXPECT_EQ(settings.userGames.get(), Keys{}) << "the window has gone";
}

TEST_F(SettingsModelTest, PickerSearchesNamesAndKeysByWords) {
  picker.openFor(boost.userGames());
  const std::vector<std::pair<const char*, QStringList>> cases{
      {"FIRE", {"Firefox"}},
      {"image gnu", {"GNU Image Manipulation Program"}},
      {"gimp", {"GNU Image Manipulation Program"}},
      {"zzz", {}},
      {"org", {}},
      {"  ", names(picker)},
      {"MÖUSEPAD", {"Mousepad"}}};
  for (const auto& [text, found] : cases) {
    picker.setSearch(text);
    EXPECT_EQ(names(picker), found) << text;
  }
  picker.setSearch("obs");
  EXPECT_EQ(picker.current(), 0);
  picker.activate(0);
  EXPECT_EQ(settings.userGames.get(), Keys{"com.obsproject.obs-studio"});
}

TEST_F(SettingsModelTest, PickerSearchesByWhatElseAnAppIsCalled) {
  catalog.applications = {{"org.example.Krita", "Krita", "", "", "Digital Painting sketch"},
                          {"org.example.Sketch", "Sketch", "", "", "Drawing"}};
  picker.openFor(boost.userGames());
  picker.setSearch("paint");
  EXPECT_EQ(names(picker), QStringList{"Krita"});
  picker.setSearch("sketch");
  EXPECT_EQ(names(picker), QStringList({"Sketch", "Krita"})) << "its name comes first";
}

TEST_F(SettingsModelTest, PickerFollowsATypedPath) {
  const QTemporaryDir folder;
  ASSERT_TRUE(QDir(folder.path()).mkpath(".hidden/deep"));
  picker.openFor(boost.userGames());
  picker.setSearch(folder.path() + "/");
  EXPECT_TRUE(picker.isBrowsing());
  EXPECT_EQ(names(picker), QStringList({"..", ".hidden"}));
  picker.setSearch(folder.path() + "/.hidden/de");
  EXPECT_EQ(names(picker), QStringList{"deep"});
  EXPECT_EQ(picker.folder(), folder.path() + "/.hidden");
  picker.setSearch(folder.path() + "/nowhere/x");
  EXPECT_EQ(picker.folder(), folder.path() + "/.hidden") << "there is none of that name";
}

TEST_F(SettingsModelTest, RestoresWhatWasProtectedFromTheStart) {
  AppListModel& list = *boost.protectedApps();
  EXPECT_FALSE(list.isRestorable());
  list.add("org.example.Editor");
  EXPECT_FALSE(list.isRestorable());
  list.remove("com.hnc.Discord");
  EXPECT_TRUE(list.isRestorable());
  list.restoreDefaults();
  std::vector<std::string> all = defaultProtectedApps();
  all.push_back("org.example.Editor");
  EXPECT_EQ(settings.protectedApps.get(), all);
  EXPECT_FALSE(list.isRestorable());
  EXPECT_FALSE(boost.userGames()->isRestorable());
}

TEST_F(SettingsModelTest, CancelledPickerOrAListedAppChangesNothing) {
  settings.userGames.set({"galculator", "org.mozilla.firefox"});
  picker.openFor(boost.userGames());
  picker.setCurrent(0);
  picker.cancel();
  EXPECT_EQ(settings.userGames.get(), (Keys{"galculator", "org.mozilla.firefox"}));
  picker.openFor(boost.userGames());
  EXPECT_EQ(picker.current(), -1);
  picker.activate(0);
  EXPECT_EQ(settings.userGames.get(), (Keys{"galculator", "org.mozilla.firefox"}));
}

TEST_F(SettingsModelTest, PickerBrowsesFoldersForDesktopFiles) {
  const QTemporaryDir folder;
  const QString inner = folder.filePath("inner");
  QDir().mkdir(inner);
  const QString file = inner + "/My Game.desktop";
  QFile(file).open(QIODevice::WriteOnly);
  QFile(inner + "/note.txt").open(QIODevice::WriteOnly);
  QFile(inner + "/broken.desktop").open(QIODevice::WriteOnly);
  catalog.elsewhere[file.toStdString()] = {"My Game", "A Game", "", file.toStdString()};

  picker.openFor(boost.userGames());
  picker.browse(folder.path());
  EXPECT_EQ(names(picker), (QStringList{"..", "inner"}));
  picker.activate(1);
  EXPECT_EQ(picker.folder(), inner);
  EXPECT_EQ(names(picker), (QStringList{"..", "A Game"}));
  picker.setCurrent(0);
  EXPECT_FALSE(picker.canAdd());
  picker.activate(1);
  EXPECT_EQ(settings.userGames.get(), Keys{"My Game"});
  EXPECT_FALSE(picker.isBrowsing());
}

TEST_F(SettingsModelTest, PickerOffersProgramsWhereTheListCanHoldThem) {
  const QTemporaryDir folder;
  const auto put = [&](const QString& name, InstalledApplication application) {
    const QString file = folder.filePath(name);
    QFile(file).open(QIODevice::WriteOnly);
    catalog.elsewhere[file.toStdString()] = std::move(application);
  };
  put("Setup.exe", {.key = "Setup", .name = "Setup", .icon = {}, .path = {}, .isByName = true});
  put("Krita-5.2.AppImage", {.key = "Krita-5.2", .name = "Krita-5.2", .icon = {}, .path = {}});
  const QStringList all{"..", "Krita-5.2", "Setup"};
  for (AppListModel* list : {boost.userGames(), boost.quittableApps()}) {
    picker.openFor(list);
    picker.browse(folder.path());
    EXPECT_EQ(names(picker), all);
  }
  // Protection goes by identifiers, which a plain program has not.
  picker.openFor(boost.protectedApps());
  picker.browse(folder.path());
  EXPECT_EQ(names(picker), (QStringList{"..", "Krita-5.2"}));

  picker.openFor(boost.userGames());
  picker.setSearch(folder.filePath("setup.EXE"));
  EXPECT_EQ(names(picker), QStringList{"Setup"}) << "found by the file's name";
  picker.activate(picker.current());
  EXPECT_EQ(settings.userGames.get(), Keys{"Setup"});
}

TEST_F(SettingsModelTest, NamesFromOutsideCannotTurnTheTextAroundThem) {
  const std::string turned = "photo\u202Egnp.exe";
  const QString clean = QStringLiteral("photognp.exe");
  catalog.applications = {{"org.example.evil", turned, "", "/apps/evil.desktop"}};
  boost.userGames()->add("org.example.evil");
  boost.userGames()->add(turned); // a key that no app has
  EXPECT_EQ(names(*boost.userGames()), (QStringList{clean, clean}));
  EXPECT_EQ(settings.userGames.get(), (Keys{"org.example.evil", turned})) << "keys stay keys";
  picker.openFor(boost.userGames());
  EXPECT_EQ(names(picker), QStringList{clean});

  const QTemporaryDir folder;
  QDir(folder.path()).mkpath(QString::fromStdString(turned) + "/inner");
  picker.browse(folder.path());
  EXPECT_EQ(names(picker), (QStringList{"..", clean}));
  picker.activate(1);
  EXPECT_EQ(picker.folder(), folder.filePath(clean));
  EXPECT_EQ(names(picker), (QStringList{"..", "inner"})) << "it is entered under its own name";
}

TEST_F(SettingsModelTest, NoLineIsEmpty) {
  catalog.applications = {{"org.example.hidden", "\u200B\u2060", "", "/apps/hidden.desktop"}};
  for (const char* key : {"org.example.hidden", "", "  "}) boost.userGames()->add(key);
  EXPECT_EQ(names(*boost.userGames()), (QStringList{"org.example.hidden", "\u201C\u201D", "\u201C\u201D"}));
  picker.openFor(boost.protectedApps());
  EXPECT_EQ(names(picker), QStringList{"org.example.hidden"});
}

TEST_F(SettingsModelTest, FolderThatCannotBeReadIsEmpty) {
  picker.openFor(boost.userGames());
  picker.browse("/nowhere/at/all");
  EXPECT_EQ(names(picker), QStringList{".."});
  picker.showInstalled();
  EXPECT_EQ(picker.count(), 6);
}

TEST(KeyOfAnApp, IsShownAsNameAndIconOrAsItself) {
  SimulatedCatalog catalog;
  ScriptedExtension extension;
  catalog.applications.push_back({"org.example.bundle", "Bundle.app", "", "/apps/Bundle.app"});
  EXPECT_EQ(displayNameForKey(catalog, "org.mozilla.firefox"), "Firefox");
  EXPECT_EQ(iconForKey(catalog, "org.mozilla.firefox"), "firefox");
  EXPECT_EQ(displayNameForKey(catalog, "org.example.bundle"), "Bundle");
  EXPECT_EQ(iconForKey(catalog, "org.example.bundle"), "");
  EXPECT_EQ(displayNameForKey(catalog, "Not installed.app"), "Not installed.app");
  EXPECT_EQ(iconForKey(catalog, "Not installed.app"), "");
}

TEST(KeyOfAnApp, GoesByTheNameThatThePlatformKnowsWhenItIsNotInstalled) {
  SimulatedCatalog catalog;
  catalog.names = {{"com.apple.Music", "Music"}, {"com.spotify.client", "Another"}};
  EXPECT_EQ(displayNameForKey(catalog, "com.apple.Music"), "Music");
  EXPECT_EQ(displayNameForKey(catalog, "com.spotify.client"), "Spotify");
}

TEST(ShownName, LosesExactlyTheBundleEnding) {
  const auto shown = [](const char* name) { return shownName({"key", name, "", ""}); };
  EXPECT_EQ(shown("Mail.app"), "Mail");
  EXPECT_EQ(shown("Mail.APP"), "Mail.APP");
  EXPECT_EQ(shown("Mail.app.app"), "Mail.app");
  EXPECT_EQ(shown("app"), "app");
}

} // namespace

} // namespace vantle
