// SPDX-License-Identifier: MIT
#include "settings/SettingsWindowController.h"

namespace vantle {

struct SettingsWindowController::Parts {
  Engine& engine;
  AppSettings& settings;
  UpdateChecker& checker;
  LoginItem& loginItem;
  ApplicationCatalog& catalog;
};

SettingsWindowController::SettingsWindowController(Engine& engine, AppSettings& settings,
                                                   UpdateChecker& checker, LoginItem& loginItem,
                                                   ApplicationCatalog& catalog)
    : m_parts(new Parts{engine, settings, checker, loginItem, catalog}) {}

SettingsWindowController::~SettingsWindowController() = default;

void SettingsWindowController::show() {}

} // namespace vantle
