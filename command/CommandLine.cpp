// SPDX-License-Identifier: MIT
#include "command/CommandLine.h"

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
constexpr std::array<std::string_view, 16> programOptions{
    "--put-back", "--platform",      "--platformpluginpath", "--platformtheme", "--plugin",
    "--display",  "--qmljsdebugger", "--qwindowgeometry",    "--qwindowicon",   "--qwindowtitle",
    "--reverse",  "--session",       "--geometry",           "--icon",          "--name",
    "--title"};

constexpr std::string_view seeHelp = "; see 'vantle --help'.";

std::string quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

UsageError unknown(std::string_view kind, std::string_view text) {
  return {"there is no " + std::string(kind) + " " + quoted(text) + std::string(seeHelp)};
}

bool isForProgram(std::string_view first) {
  if (!first.starts_with('-')) return false;
  const std::string_view name = first.substr(0, first.find('='));
  return !first.starts_with("--") ||
         std::find(programOptions.begin(), programOptions.end(), name) != programOptions.end();
}

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
  const std::string_view first = arguments.front();
  const auto* const command = std::find_if(commandTexts.begin(), commandTexts.end(),
                                           [first](const CommandText& one) { return one.name == first; });
  if (command != commandTexts.end()) return parseCommand(*command, arguments.subspan(1));
  if (isForProgram(first)) return StartProgram{};
  return unknown(first.starts_with('-') ? "option" : "command", first);
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
