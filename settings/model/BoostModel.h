// SPDX-License-Identifier: MIT
#pragma once

#include "engine/Engine.h"
#include "engine/ports/ApplicationCatalog.h"
#include "settings/model/AppListModel.h"
#include "settings/model/Switch.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>
#include <memory>

namespace vantle {

// The rules of the program: which apps start a Boost, which are never slowed down, and what happens when
// memory runs low.
class BoostModel : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The window makes its own")
  Q_PROPERTY(vantle::AppListModel* userGames READ userGames CONSTANT)
  Q_PROPERTY(vantle::AppListModel* protectedApps READ protectedApps CONSTANT)
  Q_PROPERTY(vantle::AppListModel* quittableApps READ quittableApps CONSTANT)
  Q_PROPERTY(vantle::Switch* crossOver READ crossOver CONSTANT)
  Q_PROPERTY(vantle::Switch* minecraft READ minecraft CONSTANT)
  Q_PROPERTY(vantle::Switch* steam READ steam CONSTANT)
  Q_PROPERTY(vantle::Switch* gamesCategory READ gamesCategory CONSTANT)
  Q_PROPERTY(vantle::Switch* gameMode READ gameMode CONSTANT)
  Q_PROPERTY(int ramAction READ ramAction NOTIFY ramActionChanged)
  Q_PROPERTY(QString quittableFooter READ quittableFooter NOTIFY ramActionChanged)

 public:
  BoostModel(Engine& engine, AppSettings& settings, const ApplicationCatalog& catalog);

  AppListModel* userGames() { return &m_userGames; }
  AppListModel* protectedApps() { return &m_protectedApps; }
  AppListModel* quittableApps() { return &m_quittableApps; }
  Switch* crossOver() { return &m_crossOver; }
  Switch* minecraft() { return &m_minecraft; }
  Switch* steam() { return &m_steam; }
  Switch* gamesCategory() { return &m_gamesCategory; }
  Switch* gameMode() { return &m_gameMode; }

  // The place of the choice in its group: 0 for the notification only, 1 for quitting what is marked.
  int ramAction() const { return static_cast<int>(m_settings.ramAction.get()); }
  Q_INVOKABLE void chooseRamAction(int place);
  QString quittableFooter() const;

 signals:
  void ramActionChanged();

 private:
  AppSettings& m_settings;
  AppListModel m_userGames;
  AppListModel m_protectedApps;
  AppListModel m_quittableApps;
  Switch m_crossOver;
  Switch m_minecraft;
  Switch m_steam;
  Switch m_gamesCategory;
  Switch m_gameMode;
  std::unique_ptr<Registration> m_ramObserver;
};

} // namespace vantle
