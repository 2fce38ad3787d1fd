// SPDX-License-Identifier: MIT
#include "engine/AppSettings.h"

#include "base/Names.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

namespace vantle {

namespace {

struct AccentEntry {
  std::string_view raw;
  AccentColor color;
};

constexpr std::array<AccentEntry, allAccentThemes.size()> accentPalette{{
    {"blue", {0.0, 0.4, 0.84}},
    {"purple", {0.48, 0.25, 0.76}},
    {"pink", {0.91, 0.27, 0.56}},
    {"red", {0.84, 0.19, 0.19}},
    {"orange", {0.89, 0.42, 0.05}},
    {"yellow", {0.85, 0.62, 0.0}},
    {"green", {0.16, 0.56, 0.26}},
    {"teal", {0.05, 0.55, 0.62}},
    {"graphite", {0.4, 0.4, 0.44}},
}};

constexpr std::array<std::string_view, allAppearanceModes.size()> appearanceRaw{"system", "light", "dark"};

template <class T> std::optional<T> stored(const UserDefaults& defaults, const std::string& key) {
  const std::optional<UserDefaults::Value> value = defaults.object(key);
  if (!value || !std::holds_alternative<T>(*value)) return std::nullopt;
  return std::get<T>(*value);
}

// The case of an enum whose raw value stands under the key, compared exactly.
template <class Enum, std::size_t count> Enum storedCase(const UserDefaults& defaults, const std::string& key,
                                                         const std::array<Enum, count>& cases,
                                                         Enum fallback) {
  const auto raw = stored<std::string>(defaults, key);
  if (!raw) return fallback;
  const auto found =
      std::find_if(cases.begin(), cases.end(), [&](Enum item) { return rawValue(item) == *raw; });
  return found == cases.end() ? fallback : *found;
}

std::vector<std::string> storedList(const UserDefaults& defaults, const std::string& key,
                                    const std::vector<std::string>& fallback) {
  return stored<std::vector<std::string>>(defaults, key).value_or(fallback);
}

Setting<bool>::Write boolWriter(UserDefaults& defaults, const char* key) {
  return [&defaults, key](bool value) { defaults.set(key, value); };
}

Setting<std::vector<std::string>>::Write listWriter(UserDefaults& defaults, const char* key) {
  return [&defaults, key](const std::vector<std::string>& value) { defaults.set(key, value); };
}

template <class Enum> typename Setting<Enum>::Write rawWriter(UserDefaults& defaults, const char* key) {
  return [&defaults, key](Enum value) { defaults.set(key, std::string(rawValue(value))); };
}

std::string capitalised(std::string_view raw) {
  std::string name(raw);
  name.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(name.front())));
  return name;
}

void migrateFromFormerDomain(UserDefaults& defaults) {
  if (storedBool(defaults, defaultsKey::migratedFromMurn, false)) return;
  // Marked first, so that whatever happens next it is never tried again.
  defaults.set(defaultsKey::migratedFromMurn, true);
  const std::unique_ptr<UserDefaults> former = defaults.openSuite(names::formerIdentifier);
  if (!former) return;
  for (const char* key :
       {defaultsKey::automatic, defaultsKey::detectCrossOver, defaultsKey::detectMinecraft,
        defaultsKey::detectSteam, defaultsKey::detectGamesCategory, defaultsKey::userGames,
        defaultsKey::protectedApps, defaultsKey::ramAction, defaultsKey::quittableApps, defaultsKey::accent,
        defaultsKey::appearance, defaultsKey::checkUpdatesAutomatically, defaultsKey::lastUpdateCheck}) {
    if (!defaults.contains(key)) defaults.copyFrom(*former, key);
  }
}

// The migration has to run before the first value is read.
UserDefaults& migrated(UserDefaults& defaults) {
  migrateFromFormerDomain(defaults);
  return defaults;
}

} // namespace

std::string_view rawValue(RAMAction action) {
  return action == RAMAction::quitMarked ? "quitMarked" : "notify";
}
std::string_view rawValue(AccentTheme theme) { return accentPalette.at(static_cast<std::size_t>(theme)).raw; }
std::string_view rawValue(AppearanceMode mode) { return appearanceRaw.at(static_cast<std::size_t>(mode)); }
std::string displayName(AccentTheme theme) { return capitalised(rawValue(theme)); }
std::string displayName(AppearanceMode mode) { return capitalised(rawValue(mode)); }
AccentColor colorOf(AccentTheme theme) { return accentPalette.at(static_cast<std::size_t>(theme)).color; }

const std::vector<std::string>& defaultProtectedApps() {
  static const std::vector<std::string> apps{"com.spotify.client",        "com.apple.Music",
                                             "com.hnc.Discord",           "com.obsproject.obs-studio",
                                             "com.codeweavers.CrossOver", "com.mojang.minecraftlauncher"};
  return apps;
}

bool storedBool(const UserDefaults& defaults, const std::string& key, bool fallback) {
  return stored<bool>(defaults, key).value_or(fallback);
}

AppSettings::AppSettings(UserDefaults& userDefaults)
    : defaults(migrated(userDefaults)),
      detectCrossOver(storedBool(defaults, defaultsKey::detectCrossOver, true),
                      boolWriter(defaults, defaultsKey::detectCrossOver)),
      detectMinecraft(storedBool(defaults, defaultsKey::detectMinecraft, true),
                      boolWriter(defaults, defaultsKey::detectMinecraft)),
      detectSteam(storedBool(defaults, defaultsKey::detectSteam, true),
                  boolWriter(defaults, defaultsKey::detectSteam)),
      detectGamesCategory(storedBool(defaults, defaultsKey::detectGamesCategory, true),
                          boolWriter(defaults, defaultsKey::detectGamesCategory)),
      detectGameMode(storedBool(defaults, defaultsKey::detectGameMode, false),
                     boolWriter(defaults, defaultsKey::detectGameMode)),
      userGames(storedList(defaults, defaultsKey::userGames, {}),
                listWriter(defaults, defaultsKey::userGames)),
      protectedApps(storedList(defaults, defaultsKey::protectedApps, defaultProtectedApps()),
                    listWriter(defaults, defaultsKey::protectedApps)),
      ramAction(storedCase(defaults, defaultsKey::ramAction,
                           std::array{RAMAction::notify, RAMAction::quitMarked}, RAMAction::notify),
                rawWriter<RAMAction>(defaults, defaultsKey::ramAction)),
      quittableApps(storedList(defaults, defaultsKey::quittableApps, {}),
                    listWriter(defaults, defaultsKey::quittableApps)),
      accent(storedCase(defaults, defaultsKey::accent, allAccentThemes, AccentTheme::blue),
             rawWriter<AccentTheme>(defaults, defaultsKey::accent)),
      appearance(storedCase(defaults, defaultsKey::appearance, allAppearanceModes, AppearanceMode::system),
                 [this, write = rawWriter<AppearanceMode>(defaults, defaultsKey::appearance)](
                     const AppearanceMode& mode) {
                   write(mode);
                   applyAppearance(mode);
                 }),
      checkUpdatesAutomatically(storedBool(defaults, defaultsKey::checkUpdatesAutomatically, true),
                                boolWriter(defaults, defaultsKey::checkUpdatesAutomatically)) {}

std::optional<Date> AppSettings::lastUpdateCheck() const {
  return stored<Date>(defaults, defaultsKey::lastUpdateCheck);
}

void AppSettings::setLastUpdateCheck(std::optional<Date> date) {
  if (date) {
    defaults.set(defaultsKey::lastUpdateCheck, *date);
  } else {
    defaults.remove(defaultsKey::lastUpdateCheck);
  }
}

} // namespace vantle
