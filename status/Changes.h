// SPDX-License-Identifier: MIT
#pragma once

#include "status/Status.h"

namespace vantle {

// Which properties differ between two looks. How much memory apps use comes along with other changes and is
// none itself.
struct Changes {
  bool active = false;
  bool app = false;
  bool automatic = false;
  bool pausedUntil = false;
  bool pressure = false;
  bool apps = false;

  bool any() const { return active || app || automatic || pausedUntil || pressure || apps; }
};

Changes changesBetween(const Status& before, const Status& now);

} // namespace vantle
