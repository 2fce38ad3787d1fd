// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ApplicationCatalog.h"
#include "engine/ports/AudioActivity.h"
#include "engine/ports/BackgroundBand.h"
#include "engine/ports/Clock.h"
#include "engine/ports/FileStore.h"
#include "engine/ports/Hooks.h"
#include "engine/ports/Host.h"
#include "engine/ports/LoginItem.h"
#include "engine/ports/MemoryPressureEvents.h"
#include "engine/ports/Notifications.h"
#include "engine/ports/PowerAssertions.h"
#include "engine/ports/ProcessTable.h"
#include "engine/ports/RegisteredGames.h"
#include "engine/ports/Subprocess.h"
#include "engine/ports/UnicodeText.h"
#include "engine/ports/UserDefaults.h"
#include "engine/ports/Workspace.h"

namespace vantle {

// Everything that is asked of a machine, in one place: by the engine, by the settings of the login item and
// the catalog, and by whoever runs the hooks. A platform owns the parts; they outlive whoever uses them.
struct Machine {
  Host& host;
  ProcessTable& processes;
  BackgroundBand& band;
  Workspace& workspace;
  AudioActivity& audio;
  PowerAssertions& power;
  MemoryPressureEvents& pressure;
  Notifications& notifications;
  UserDefaults& defaults;
  FileStore& files;
  Clock& clock;
  SubprocessLauncher& launcher;
  UnicodeText& text;
  LoginItem& loginItem;
  ApplicationCatalog& catalog;
  Hooks& hooks;
  RegisteredGames& games;
};

} // namespace vantle
