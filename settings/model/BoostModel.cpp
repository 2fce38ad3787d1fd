// SPDX-License-Identifier: MIT
#include "settings/model/BoostModel.h"

namespace vantle {

BoostModel::BoostModel(Engine& engine, AppSettings& settings, const ApplicationCatalog& catalog)
    : m_settings(settings), m_userGames(settings.userGames, catalog, AppListModel::Takes::everyApp,
                                        [&engine] { engine.recheckManaged(); }),
      m_protectedApps(
          settings.protectedApps, catalog, AppListModel::Takes::identifiedApps,
          [&engine] { engine.recheckManaged(); }, defaultProtectedApps()),
      m_quittableApps(settings.quittableApps, catalog, AppListModel::Takes::everyApp),
      m_crossOver(settings.detectCrossOver), m_minecraft(settings.detectMinecraft),
      m_steam(settings.detectSteam), m_gamesCategory(settings.detectGamesCategory),
      m_gameMode(settings.detectGameMode),
      m_ramObserver(settings.ramAction.observe([this] { emit ramActionChanged(); })) {}

void BoostModel::chooseRamAction(int place) {
  const RAMAction action = place == 1 ? RAMAction::quitMarked : RAMAction::notify;
  if (action != m_settings.ramAction.get()) m_settings.ramAction.set(action);
}

QString BoostModel::quittableFooter() const {
  if (m_settings.ramAction.get() == RAMAction::quitMarked)
    return tr("Quit only when memory is critical, never a Boost app or the app in front. Apps with "
              "unsaved work will ask first.");
  return tr("Not used right now. Choose “Quit the apps I mark as quittable” above to turn this on.");
}

} // namespace vantle
