// SPDX-License-Identifier: MIT
#pragma once

#include "command/Commands.h"

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace vantle {

// What is asked for on the command line.
struct Request {
  CommandKind kind = CommandKind::help;
  bool isJson = false;
  bool follows = false;
  bool withNames = false;
  std::string target; // an app's name, identifier or process number; empty for the app in front
  std::chrono::seconds duration{0};
};

// The command line is not one of a command: Vantle itself is to be started with it.
struct StartProgram {};

struct UsageError {
  std::string text; // for a person, in one line
};

// `arguments` without the program's own name.
std::variant<Request, StartProgram, UsageError> parseCommandLine(std::span<char* const> arguments);

// Of a number and one of s, m and h; absent when it is not that, or longer than a day.
std::optional<std::chrono::seconds> parseDuration(std::string_view text);

// What `--help` prints.
std::string helpText();

} // namespace vantle
