// SPDX-License-Identifier: MIT
#pragma once

#include "settings/model/AboutModel.h"
#include "settings/model/AppPickerModel.h"
#include "settings/model/AppearanceModel.h"
#include "settings/model/BoostModel.h"
#include "settings/model/ExtensionModel.h"
#include "settings/model/LoginChoice.h"
#include "settings/model/Pane.h"
#include "settings/model/Switch.h"
#include "settings/model/UpdatesModel.h"
#include "settings/ports/AppChooser.h"

#include <QObject>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace vantle {

// What the settings window edits. The parts outlive the window.
struct SettingsParts {
  Engine& engine;
  AppSettings& settings;
  UpdateChecker& checker;
  LoginItem& loginItem;
  ApplicationCatalog& catalog;
  ShellExtension& extension;
  AppChooser* chooser = nullptr; // null where the window's own dialog is the one
};

// All that the settings window shows. Views bind to it and call one operation each.
class SettingsModel : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The window makes its own")
  Q_PROPERTY(QStringList paneTitles READ paneTitles CONSTANT)
  Q_PROPERTY(QStringList paneSymbols READ paneSymbols CONSTANT)
  Q_PROPERTY(int pane READ paneIndex WRITE setPaneIndex NOTIFY paneChanged)
  Q_PROPERTY(vantle::Switch* automatic READ automatic CONSTANT)
  Q_PROPERTY(vantle::Switch* openAtLogin READ openAtLogin CONSTANT)
  Q_PROPERTY(vantle::ExtensionModel* extension READ extension CONSTANT)
  Q_PROPERTY(vantle::BoostModel* boost READ boost CONSTANT)
  Q_PROPERTY(vantle::AppearanceModel* appearance READ appearance CONSTANT)
  Q_PROPERTY(vantle::UpdatesModel* updates READ updates CONSTANT)
  Q_PROPERTY(vantle::AboutModel* about READ about CONSTANT)
  Q_PROPERTY(vantle::AppPickerModel* picker READ picker CONSTANT)

 public:
  SettingsModel(const SettingsParts& parts, Pane pane);

  QStringList paneTitles() const;
  QStringList paneSymbols() const;
  Pane pane() const { return m_pane; }
  int paneIndex() const { return static_cast<int>(m_pane); }
  void setPaneIndex(int index);

  Switch* automatic() { return &m_automatic; }
  Switch* openAtLogin() { return &m_openAtLogin; }
  ExtensionModel* extension() { return &m_extension; }
  BoostModel* boost() { return &m_boost; }
  AppearanceModel* appearance() { return &m_appearance; }
  UpdatesModel* updates() { return &m_updates; }
  AboutModel* about() { return &m_about; }
  AppPickerModel* picker() { return &m_picker; }

  // Asks afresh for what can change without telling: when a pane is opened, and when the window is.
  void reload();

 signals:
  void paneChanged();

 private:
  Pane m_pane;
  LoginChoice m_login;
  Switch m_automatic;
  Switch m_openAtLogin;
  ExtensionModel m_extension;
  BoostModel m_boost;
  AppearanceModel m_appearance;
  UpdatesModel m_updates;
  AboutModel m_about;
  AppPickerModel m_picker;
};

} // namespace vantle
