// SPDX-License-Identifier: MIT
#pragma once

#include "engine/Engine.h"
#include "engine/ports/RunningApplication.h"

#include <QDate>
#include <QString>
#include <optional>
#include <string>

namespace vantle {

// A name that comes from outside, fit to be shown: on one line, without control characters or marks that turn
// the direction of the text around it, and of at most 300 characters or as many as are wanted; empty where
// nothing of it can be seen. A right-to-left name is isolated, so that it keeps its own order without
// changing its neighbours'.
QString displayText(const std::string& utf8, qsizetype longest = 300);

// The app's own name, fit to be shown; that of its program where nothing of it can be seen, and “” where
// nothing of that can be seen either. Empty for none, and for an app without one.
QString shownName(const AppRef& app, qsizetype longest = 300);

// A name, fit to be shown; what else the app can be called by where nothing of it can be seen, and “” where
// nothing of that can be seen either.
QString displayText(const std::string& utf8, const std::string& otherwise);

// Until when no Boost starts by itself, in the person's own time of day, with the day unless it is that one;
// empty without a pause.
QString pauseText(const std::optional<Pause>& pause, const QDate& today = QDate::currentDate());

} // namespace vantle
