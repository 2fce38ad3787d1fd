// SPDX-License-Identifier: MIT
#include "engine/GameDetection.h"

#include "engine/ProcessQueries.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace vantle {

namespace {

constexpr std::string_view crossOver = "com.codeweavers.CrossOver";

constexpr std::array<std::string_view, 4> winePathParts{"crossover.app/contents/sharedsupport", "/bottles/",
                                                        "wine64-preloader", "wine-preloader"};

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

} // namespace

std::optional<std::string> appListKey(const RunningApplication& app) {
  const std::optional<std::string> bundleID = app.bundleIdentifier();
  return bundleID ? bundleID : app.localizedName();
}

bool GameDetection::isGame(const RunningApplication& app) const {
  const std::optional<std::string> key = appListKey(app);
  const std::vector<std::string>& own = m_settings.userGames.get();
  if (key && std::find(own.begin(), own.end(), *key) != own.end()) return true;

  if (app.bundleIdentifier() == crossOver) return false;

  std::vector<std::string> paths;
  for (const std::optional<std::string>& path :
       {app.bundlePath(), app.executablePath(), executablePath(m_processes, app.processIdentifier())}) {
    if (path) paths.push_back(m_text.lowercased(*path));
  }
  const auto anyPathContains = [&paths](std::string_view part) {
    return std::any_of(paths.begin(), paths.end(),
                       [&](const std::string& path) { return contains(path, part); });
  };

  if (m_settings.detectCrossOver.get() &&
      std::any_of(winePathParts.begin(), winePathParts.end(), anyPathContains)) {
    return true;
  }
  if (m_settings.detectSteam.get() && anyPathContains("/steamapps/")) return true;
  if (m_settings.detectMinecraft.get() && isMinecraftProcess(app)) return true;
  if (m_settings.detectGamesCategory.get() && hasGamesCategory(app)) return true;
  return m_declared.has(app);
}

bool GameDetection::isMinecraftProcess(const RunningApplication& app) const {
  const std::set<Pid> chain = ancestorPIDs(m_processes, app.processIdentifier());
  return std::any_of(chain.begin(), chain.end(), [this](Pid pid) {
    const std::optional<std::string> path = executablePath(m_processes, pid);
    return path && contains(m_text.lowercased(*path), "minecraft");
  });
}

bool GameDetection::hasGamesCategory(const RunningApplication& app) {
  if (!app.bundlePath()) return false;
  const std::optional<std::string> category = app.bundleCategory();
  return category && contains(*category, "games");
}

Profile gamingProfile(const AppSettings& settings, const ProcessTable& processes, const UnicodeText& text,
                      const DeclaredGames& declared) {
  return {"Gaming",
          [detection = GameDetection(settings, processes, text, declared)](const RunningApplication& app) {
            return detection.isGame(app);
          },
          defaultProtectedApps()};
}

} // namespace vantle
