// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <span>
#include <string_view>

namespace vantle {

// Everything that can stand behind `vantle` on a command line: the one place that the help, the manual page
// and the completions are checked against.

enum class CommandKind { help, version, status, why, boost, off, pause, report };

struct OptionText {
  std::string_view name;
  std::string_view help;
};

enum class Argument { none, optional, required };

struct CommandText {
  CommandKind kind;
  std::string_view name;
  Argument argument;
  std::string_view argumentName; // empty for none
  std::string_view help;
  std::span<const OptionText> options;
};

inline constexpr std::array statusOptions{
    OptionText{"--json", "as one JSON object in a line"},
    OptionText{"--follow", "and again each time that something changes, until Vantle ends"},
};
inline constexpr std::array reportOptions{
    OptionText{"--names", "with the names and identifiers of apps"},
};

inline constexpr std::array commandTexts{
    CommandText{CommandKind::status, "status", Argument::none, "", "what is slowed, and what is left alone",
                statusOptions},
    CommandText{CommandKind::why,
                "why",
                Argument::required,
                "NAME|PID",
                "why an app is slowed, or why it is not",
                {}},
    CommandText{CommandKind::boost,
                "boost",
                Argument::optional,
                "NAME|PID",
                "start a Boost of the app in front, or of this one",
                {}},
    CommandText{CommandKind::off, "off", Argument::none, "", "turn the Boost off", {}},
    CommandText{CommandKind::pause,
                "pause",
                Argument::required,
                "DURATION",
                "no automatic Boost for so long, e.g. 90s, 30m or 2h; 0s ends that",
                {}},
    CommandText{CommandKind::report, "report", Argument::none, "", "what is needed to report a problem",
                reportOptions},
    CommandText{CommandKind::help, "--help", Argument::none, "", "this text", {}},
    CommandText{CommandKind::version, "--version", Argument::none, "", "the version", {}},
};

// The exit statuses of all commands.
namespace exitStatus {
inline constexpr int done = 0;
inline constexpr int failed = 1;     // the running copy refused or did not answer
inline constexpr int usage = 2;      // the arguments were no command
inline constexpr int notRunning = 3; // no copy of this user's runs
} // namespace exitStatus

} // namespace vantle
