// SPDX-License-Identifier: MIT
#pragma once

#include "base/Published.h"
#include "engine/ports/UserDefaults.h"

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantle {

// What to do when memory runs low during a Boost.
enum class RAMAction { notify, quitMarked };

enum class AccentTheme { blue, purple, pink, red, orange, yellow, green, teal, graphite };

enum class AppearanceMode { system, light, dark };

inline constexpr std::array allAccentThemes{AccentTheme::blue,  AccentTheme::purple, AccentTheme::pink,
                                            AccentTheme::red,   AccentTheme::orange, AccentTheme::yellow,
                                            AccentTheme::green, AccentTheme::teal,   AccentTheme::graphite};
inline constexpr std::array allAppearanceModes{AppearanceMode::system, AppearanceMode::light,
                                               AppearanceMode::dark};

// An sRGB colour; each component from 0 to 1, opacity 1.
struct AccentColor {
  double red = 0;
  double green = 0;
  double blue = 0;
  bool operator==(const AccentColor&) const = default;
};

std::string_view rawValue(RAMAction action);
std::string_view rawValue(AccentTheme theme);
std::string_view rawValue(AppearanceMode mode);
// The raw value with its first letter capitalised.
std::string displayName(AccentTheme theme);
std::string displayName(AppearanceMode mode);
AccentColor colorOf(AccentTheme theme);

// The apps that are never slowed down unless the person changes the protected list.
const std::vector<std::string>& defaultProtectedApps();

// The keys under which the settings are stored; the complete set.
namespace defaultsKey {
inline constexpr const char* detectCrossOver = "detectCrossOver";
inline constexpr const char* detectMinecraft = "detectMinecraft";
inline constexpr const char* detectSteam = "detectSteam";
inline constexpr const char* detectGamesCategory = "detectGamesCategory";
inline constexpr const char* detectGameMode = "detectGameMode";
inline constexpr const char* userGames = "userGames";
inline constexpr const char* protectedApps = "protectedApps";
inline constexpr const char* ramAction = "ramAction";
inline constexpr const char* quittableApps = "quittableApps";
inline constexpr const char* accent = "accent";
inline constexpr const char* appearance = "appearance";
inline constexpr const char* checkUpdatesAutomatically = "checkUpdatesAutomatically";
inline constexpr const char* lastUpdateCheck = "lastUpdateCheck";
inline constexpr const char* automatic = "otomatik";
inline constexpr const char* migratedFromMurn = "migratedFromMurn";
} // namespace defaultsKey

// One stored choice. Setting it tells the observers and then writes it, before the call returns.
template <class T> class Setting {
 public:
  using Write = std::function<void(const T&)>;

  Setting(T value, Write write) : m_value(std::move(value)), m_write(std::move(write)) {}

  const T& get() const { return m_value; }
  void set(T value) {
    m_value = std::move(value);
    m_observers.notify();
    m_write(m_value);
  }
  [[nodiscard]] std::unique_ptr<Registration> observe(Observers<>::Callback callback) {
    return m_observers.add(std::move(callback));
  }

 private:
  T m_value;
  Write m_write;
  Observers<> m_observers;
};

// Every persistent choice of the person. Values are read once, at creation; what is missing or unreadable
// falls back to its default, silently. An app is named in the lists by its bundle identifier, or by its file
// name when it has none.
class AppSettings {
 public:
  // Takes over the settings of the former edition first, one time only.
  explicit AppSettings(UserDefaults& userDefaults);
  AppSettings(const AppSettings&) = delete;
  AppSettings& operator=(const AppSettings&) = delete;

  UserDefaults& defaults;
  Setting<bool> detectCrossOver;
  Setting<bool> detectMinecraft;
  Setting<bool> detectSteam;
  Setting<bool> detectGamesCategory;
  Setting<bool> detectGameMode; // off by default, unlike the others
  Setting<std::vector<std::string>> userGames;
  Setting<std::vector<std::string>> protectedApps;
  Setting<RAMAction> ramAction;
  Setting<std::vector<std::string>> quittableApps;
  Setting<AccentTheme> accent;
  Setting<AppearanceMode> appearance;
  Setting<bool> checkUpdatesAutomatically;

  // Not cached: each call goes to the store.
  std::optional<Date> lastUpdateCheck() const;
  void setLastUpdateCheck(std::optional<Date> date);

  // Gives the whole application its look. The shell says how; until then nothing happens.
  std::function<void(AppearanceMode)> applyAppearance = [](AppearanceMode) {};
};

// A Boolean of the store, or the fallback when there is none.
bool storedBool(const UserDefaults& defaults, const std::string& key, bool fallback);

} // namespace vantle
