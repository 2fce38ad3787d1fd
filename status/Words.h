// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <string_view>

namespace vantle {

// The closed lists of docs/scripting.md. A word, once given out, keeps its meaning.

enum class AppState { boostApp, inBackground, inFront, leftAlone, notSlowed };

// Why an app is in its state.
enum class Reason {
  boostApp,
  slowed,
  inFront,
  noBoost,
  notJudged,
  isProtected,
  systemApp,
  ownProcess,
  notAnApp,
  launcher,
  playsAudio,
  keepsAwake,
  alreadySlow,
  notAllowed,
  sharedPlace,
  noLever,
  noWayBack
};

struct ReasonText {
  Reason reason;
  std::string_view word;
  std::string_view sentence; // for a person, about the app
};

inline constexpr std::array<std::string_view, 5> stateWords{"boost app", "in background", "in front",
                                                            "left alone", "not slowed"};

inline constexpr std::array reasonTexts{
    ReasonText{Reason::boostApp, "boost app", "It is a Boost app."},
    ReasonText{Reason::slowed, "slowed", "It makes room for the Boost app."},
    ReasonText{Reason::inFront, "in front", "It is in front."},
    ReasonText{Reason::noBoost, "no boost", "No Boost is running."},
    ReasonText{Reason::notJudged, "not judged",
               "It came to the front or got its speed back, and has not been looked at since."},
    ReasonText{Reason::isProtected, "protected", "It is on the list of apps that are never slowed."},
    ReasonText{Reason::systemApp, "system app", "It is a part of the system."},
    ReasonText{Reason::ownProcess, "own process", "It is Vantle itself, or what Vantle was started from."},
    ReasonText{Reason::notAnApp, "not an app", "It has no ordinary windows."},
    ReasonText{Reason::launcher, "launcher", "It started the Boost app."},
    ReasonText{Reason::playsAudio, "plays audio", "It was heard when the Boost began."},
    ReasonText{Reason::keepsAwake, "keeps awake", "It keeps the machine awake on purpose."},
    ReasonText{Reason::alreadySlow, "already slow",
               "Nothing of it was left to slow: it has ended, or somebody else has slowed it."},
    ReasonText{Reason::notAllowed, "not allowed", "This user may not change it."},
    ReasonText{Reason::sharedPlace, "shared place",
               "It shares what could be weighed with something that must not be slowed."},
    ReasonText{Reason::noLever, "no lever", "Nothing here weighs it against the Boost app."},
    ReasonText{Reason::noWayBack, "no way back", "Slowing it could not be undone by this user."},
};

// Levers, and how short memory is, as they are told.
inline constexpr std::array<std::string_view, 4> leverWords{"process", "unit", "session", "class"};
inline constexpr std::array<std::string_view, 3> pressureWords{"normal", "warning", "critical"};

std::string_view wordOf(AppState state);
std::string_view wordOf(Reason reason);
// What a word says; the word itself when it is none of these.
std::string_view sentenceOf(std::string_view reasonWord);

} // namespace vantle
