// SPDX-License-Identifier: MIT
#include "command/CommandLine.h"

#include "base/PlainText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>

namespace vantle {
namespace {

constexpr std::chrono::hours longestPause{24};

// They are for the program or its toolkit, which takes its own with one dash or with two.
constexpr std::string_view selfTest = "--test";
constexpr std::string_view putBack = "--put-back";
constexpr std::string_view reversed = "reverse"; // the only one without a value
constexpr std::array<std::string_view, 15> toolkitOptions{
    "platform",      "platformpluginpath", "platformtheme", "plugin",       "display",
    "qmljsdebugger", "qwindowgeometry",    "qwindowicon",   "qwindowtitle", reversed,
    "session",       "geometry",           "icon",          "name",         "title"};

constexpr std::string_view seeHelp = "; see 'vantle --help'.";

// What was typed goes to a terminal or a log again: cleaned, and enough of it to recognise.
std::string quoted(std::string_view text) { return "'" + plainText(text, 100) + "'"; }

UsageError unknown(std::string_view kind, std::string_view text) {
  return {"there is no " + std::string(kind) + " " + quoted(text) + std::string(seeHelp)};
}

std::variant<Request, StartProgram, UsageError> parseProgramOptions(std::span<char* const> arguments) {
  for (std::size_t at = 0; at < arguments.size(); ++at) {
    const std::string_view text = arguments[at];
    if (!text.starts_with('-')) {
      return UsageError{quoted(text) + " cannot stand behind an option of the program's" +
                        std::string(seeHelp)};
    }
    const std::string_view name = text.substr(text.starts_with("--") ? 2 : 1);
    const std::string_view bare = name.substr(0, name.find('='));
    if (std::find(toolkitOptions.begin(), toolkitOptions.end(), bare) == toolkitOptions.end()) {
      return unknown("option", text);
    }
    if (bare != reversed && bare == name) ++at; // its value
  }
  return StartProgram{};
}

bool isHelp(std::string_view text) { return text == "--help" || text == "-h"; }

bool takeOption(const CommandText& command, std::string_view text, Request& request) {
  const auto known = std::any_of(command.options.begin(), command.options.end(),
                                 [text](const OptionText& option) { return option.name == text; });
  if (!known) return false;
  if (text == "--json") request.isJson = true;
  if (text == "--follow") request.follows = true;
  if (text == "--names") request.withNames = true;
  return true;
}

std::variant<Request, StartProgram, UsageError> parseCommand(const CommandText& command,
                                                             std::span<char* const> rest) {
  Request request;
  request.kind = command.kind;
  std::optional<std::string_view> argument;
  bool areOptionsOver = false;
  const auto optionsEnd = std::find(rest.begin(), rest.end(), std::string_view("--"));
  if (std::any_of(rest.begin(), optionsEnd, isHelp)) {
    request.kind = CommandKind::help;
    return request;
  }
  for (const std::string_view text : rest) {
    if (!areOptionsOver && text == "--") {
      areOptionsOver = true;
    } else if (!areOptionsOver && text.starts_with('-')) {
      if (!takeOption(command, text, request))
        return unknown("option of '" + std::string(command.name) + "' called", text);
    } else if (command.argument == Argument::none || argument || text.empty()) {
      return UsageError{"'" + std::string(command.name) + "' cannot take " + quoted(text) +
                        std::string(seeHelp)};
    } else {
      argument = text;
    }
  }
  if (command.argument == Argument::required && !argument) {
    return UsageError{"'" + std::string(command.name) + "' needs " + std::string(command.argumentName) +
                      std::string(seeHelp)};
  }
  if (command.kind == CommandKind::pause) {
    const std::optional<std::chrono::seconds> duration = parseDuration(*argument);
    if (!duration) {
      return UsageError{quoted(*argument) + " is no duration of up to a day, as 90s, 30m or 2h" +
                        std::string(seeHelp)};
    }
    request.duration = *duration;
  } else if (argument) {
    request.target = *argument;
  }
  return request;
}

} // namespace

std::variant<Request, StartProgram, UsageError> parseCommandLine(std::span<char* const> arguments) {
  const auto isSelfTest = [](const char* argument) { return argument == selfTest; };
  if (arguments.empty() || std::any_of(arguments.begin(), arguments.end(), isSelfTest)) return StartProgram{};
  std::string_view first = arguments.front();
  if (first == putBack) return StartProgram{};
  if (first == "-h") first = "--help";
  if (first == "-v") first = "--version";
  const auto* const command = std::find_if(commandTexts.begin(), commandTexts.end(),
                                           [first](const CommandText& one) { return one.name == first; });
  if (command != commandTexts.end()) return parseCommand(*command, arguments.subspan(1));
  if (first.starts_with('-')) return parseProgramOptions(arguments);
  return unknown("command", first);
}

std::optional<std::chrono::seconds> parseDuration(std::string_view text) {
  std::uint32_t count = 0;
  const char* const end = text.data() + text.size();
  const auto [unit, error] = std::from_chars(text.data(), end, count);
  if (error != std::errc() || end - unit != 1) return std::nullopt;
  std::chrono::seconds one{0};
  if (*unit == 's') one = std::chrono::seconds(1);
  if (*unit == 'm') one = std::chrono::minutes(1);
  if (*unit == 'h') one = std::chrono::hours(1);
  if (one.count() == 0) return std::nullopt;
  const std::chrono::seconds all = one * static_cast<std::int64_t>(count);
  return all <= longestPause ? std::optional(all) : std::nullopt;
}

std::string helpText() {
  static constexpr std::size_t column = 24;
  const auto line = [](std::size_t indent, std::string left, std::string_view right) {
    left.insert(0, indent, ' ');
    left.resize(std::max(left.size() + 1, column), ' ');
    return left + std::string(right) + "\n";
  };
  std::string text = "Usage: vantle [COMMAND]\n\n"
                     "Without a command Vantle itself is started, or shows nothing when it runs already.\n"
                     "The commands ask the copy that runs.\n\n";
  for (const CommandText& command : commandTexts) {
    std::string left(command.name);
    if (command.argument == Argument::required) left += " " + std::string(command.argumentName);
    if (command.argument == Argument::optional) left += " [" + std::string(command.argumentName) + "]";
    text += line(2, left, command.help);
    for (const OptionText& option : command.options) text += line(4, std::string(option.name), option.help);
  }
  text += line(2, std::string(selfTest), "measure for 8 seconds whether slowing works here");
  return text + "\nExit status: 0 done, 1 refused or no answer, 2 no such command, 3 Vantle does not run.\n";
}

} // namespace vantle
