// SPDX-License-Identifier: MIT
#pragma once

#include "engine/Engine.h"
#include "engine/ports/RunningApplication.h"

#include <QString>
#include <optional>
#include <string>

namespace vantle {

// A name that comes from outside, fit to be shown: on one line, without control characters or marks that turn
// the direction of the text around it, and of at most 300 characters. A right-to-left name is isolated, so
// that it keeps its own order without changing its neighbours'.
QString displayText(const std::string& utf8);

// The app's own name, fit to be shown; empty for none, and for an app without one.
QString shownName(const AppRef& app);

// Until when no Boost starts by itself, in the person's own time of day; empty without a pause.
QString pauseText(const std::optional<Pause>& pause);

} // namespace vantle
