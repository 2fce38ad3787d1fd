// SPDX-License-Identifier: MIT
#include "platform/linux/apps/ScriptText.h"

#include "base/Text.h"
#include "platform/linux/apps/ExecLine.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace vantle {

namespace {

bool isNamePart(char letter) {
  return letter == '_' || (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
         (letter >= 'a' && letter <= 'z');
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  return first == std::string_view::npos ? "" : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

// The commands of a line such as "cd FOLDER && exec ./run", without their quotes. What cannot be read as a
// line of its own is left out.
std::vector<std::string> commandsOf(const std::string& line) {
  std::string text;
  for (const std::string& word : shellWords(line)) text.append(word).append(" ");
  std::vector<std::string> commands(1);
  int depth = 0;
  for (const char letter : text) {
    if (letter == '(') ++depth;
    if (letter == ')') --depth;
    const bool isEnd = depth == 0 && std::string_view(";&|").find(letter) != std::string_view::npos;
    if (isEnd) {
      commands.emplace_back();
    } else {
      commands.back() += letter;
    }
  }
  for (std::string& command : commands) command = trimmed(command);
  return commands;
}

// How a script finds the folder that it stands in, without spaces and with one name for itself.
bool isOwnFolder(std::string text) {
  std::erase(text, ' ');
  for (const std::string_view own : {"${BASH_SOURCE[0]}", "${BASH_SOURCE}", "$BASH_SOURCE", "${0}"}) {
    for (std::size_t at = text.find(own); at != std::string::npos; at = text.find(own))
      text.replace(at, own.size(), "$0");
  }
  constexpr std::array<std::string_view, 9> known{
      "${0%/*}",           "$(dirname$0)",           "$(dirname--$0)",
      "`dirname$0`",       "$(cd$(dirname$0)&&pwd)", "$(dirname$(readlink-f$0))",
      "$(cd${0%/*}&&pwd)", "$(cd$(dirname$0);pwd)",  "$(dirname$(realpath$0))"};
  return std::find(known.begin(), known.end(), text) != known.end();
}

// What a script knows of itself and has put down for later.
class Values {
 public:
  explicit Values(std::string folder) : m_folder(std::move(folder)) {}

  // The text with all that it stands for; absent for what only a shell understands.
  std::optional<std::string> in(std::string_view text) const {
    std::string result;
    while (!text.empty()) {
      const std::size_t plain = std::min(text.find_first_of("$`"), text.size());
      result += text.substr(0, plain);
      text.remove_prefix(plain);
      if (text.empty()) break;
      const std::string_view reference = text.substr(0, endOfReference(text));
      text.remove_prefix(reference.size());
      const std::optional<std::string> value = valueOf(reference);
      if (!value) return {};
      result += *value;
    }
    return result;
  }
  void assign(std::string_view name, std::optional<std::string> value) {
    m_values[std::string(name)] = std::move(value);
  }

 private:
  // "$NAME", "${NAME}", "$(COMMAND)" or "`COMMAND`", where it begins.
  static std::size_t endOfReference(std::string_view text) {
    if (text.starts_with("${")) return std::min(text.find('}'), text.size() - 1) + 1;
    if (text.front() == '`') return std::min(text.find('`', 1), text.size() - 1) + 1;
    std::size_t at = 1;
    if (!text.starts_with("$(")) {
      while (at < text.size() && isNamePart(text[at])) ++at;
      return at;
    }
    for (int depth = 1; depth > 0 && ++at < text.size();) {
      if (text[at] == '(') ++depth;
      if (text[at] == ')') --depth;
    }
    return std::min(at + 1, text.size());
  }
  std::optional<std::string> valueOf(std::string_view reference) const {
    if (isOwnFolder(std::string(reference))) return m_folder;
    reference.remove_prefix(1);
    if (reference.starts_with('{') && reference.ends_with('}'))
      reference = reference.substr(1, reference.size() - 2);
    const auto known = m_values.find(reference);
    return known == m_values.end() ? std::nullopt : known->second;
  }

  std::string m_folder;
  std::map<std::string, std::optional<std::string>, std::less<>> m_values;
};

// Of "NAME=value" the length of the name; 0 for anything else.
std::size_t assignedName(std::string_view command) {
  const std::size_t equals = std::min(command.find('='), command.size());
  const bool isName =
      std::all_of(command.begin(), command.begin() + static_cast<std::ptrdiff_t>(equals), isNamePart);
  return isName && equals < command.size() ? equals : 0;
}

// The rest of a command of this name.
std::optional<std::string_view> restOf(std::string_view command, std::string_view name) {
  const bool isIt = command.starts_with(name) && command.substr(name.size()).starts_with(' ');
  return isIt ? std::optional(trimmed(command.substr(name.size()))) : std::nullopt;
}

} // namespace

std::string programOfScript(const std::string& script, const std::string& folder) {
  Values values(folder);
  std::string place; // that the script has gone to
  std::string only;
  for (const std::string& line : split(script, '\n')) {
    for (const std::string& whole : commandsOf(line)) {
      const std::string_view command = restOf(whole, "export").value_or(whole);
      if (const std::size_t length = assignedName(command); length != 0) {
        values.assign(command.substr(0, length), values.in(command.substr(length + 1)));
      } else if (const auto target = restOf(command, "cd")) {
        place = values.in(*target).value_or("");
      } else if (auto run = restOf(command, "exec")) {
        if (run->find_first_of("<>0123456789") == 0) continue; // where it writes to
        // With what the script was given, or nothing.
        if (run->ends_with(" $@")) run = trimmed(run->substr(0, run->size() - 3));
        std::string program = values.in(*run).value_or("");
        const bool isBeside = program.find('/') != std::string::npos && !program.starts_with('/');
        if (isBeside && place.starts_with('/'))
          program = (std::filesystem::path(place) / program).lexically_normal();
        if (!program.starts_with('/') || (!only.empty() && only != program)) return {};
        only = program;
      }
    }
  }
  return only;
}

} // namespace vantle
