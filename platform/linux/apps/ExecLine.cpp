// SPDX-License-Identifier: MIT
#include "platform/linux/apps/ExecLine.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <glib.h>
#include <memory>
#include <string_view>
#include <utility>

namespace vantle {

namespace {

using Words = std::vector<std::string>;

// %f, %U and the like stand for files; "@@u" and "@@" are what sandboxed apps have around them.
bool standsForFiles(std::string_view argument) {
  return (argument.size() == 2 && argument[0] == '%' && argument[1] != '%') || argument.starts_with("@@");
}

bool isAssignment(std::string_view argument) { return argument.find('=') != std::string_view::npos; }

// A program that runs another one, as its manual page has it.
struct Prefix {
  std::string_view name;
  std::string_view withValue; // its options that take the next argument, between spaces
  std::size_t positional = 0; // what stands between its options and the program
};
constexpr std::array prefixes{
    Prefix{"env", " -u --unset -C --chdir -S "},
    Prefix{"gamemoderun", {}},
    Prefix{"mangohud", {}},
    Prefix{"nice", " -n --adjustment "},
    Prefix{"ionice", " -c --class -n --classdata "},
    Prefix{"taskset", {}, 1},
    Prefix{"chrt", " -T -P -D ", 1},
    Prefix{"setarch", {}},
    Prefix{"linux32", {}},
    Prefix{"linux64", {}},
    Prefix{"prime-run", {}},
    Prefix{"optirun", " -b -c "},
    Prefix{"primusrun", {}},
    Prefix{"pasuspender", {}},
    Prefix{"padsp", " -s -n -m "},
    Prefix{"aoss", {}},
    Prefix{"strangle", {}, 1},
    Prefix{"obs-gamecapture", {}},
    Prefix{"game-performance", {}},
    Prefix{"nohup", {}},
    Prefix{"setsid", {}},
    Prefix{"stdbuf", " -i -o -e "},
    Prefix{"dbus-run-session", " --config-file --dbus-daemon "},
    Prefix{"dbus-launch", {}},
    Prefix{"systemd-inhibit", {}},
    Prefix{"exec", {}},
};

const Prefix* prefixNamed(const std::string& word) {
  const std::string name = fileNameOf(word);
  const auto* const found = std::find_if(prefixes.begin(), prefixes.end(),
                                         [&](const Prefix& prefix) { return prefix.name == name; });
  return found == prefixes.end() ? nullptr : found;
}

bool isArchitecture(std::string_view word) {
  constexpr std::array<std::string_view, 8> known{"i386",    "i486",    "i586",   "i686",
                                                  "linux32", "linux64", "x86_64", "uname26"};
  return std::find(known.begin(), known.end(), word) != known.end();
}

// Where the program stands that this prefix runs; the end when it runs none.
Words::const_iterator afterPrefix(const Words& words, const Prefix& prefix) {
  auto at = words.begin() + 1;
  if (prefix.name == "setarch" && at != words.end() && isArchitecture(*at)) ++at;
  for (; at != words.end() && at->size() > 1 && at->starts_with('-'); ++at) {
    if (*at == "--") {
      ++at;
      break;
    }
    const bool hasValue = prefix.withValue.find(" " + *at + " ") != std::string_view::npos;
    if (hasValue && at + 1 != words.end()) ++at;
  }
  for (std::size_t count = 0; count < prefix.positional && at != words.end(); ++count) ++at;
  if (prefix.name == "env") at = std::find_if_not(at, words.end(), isAssignment);
  return at;
}

void dropPrefixes(Words& words) {
  while (!words.empty()) {
    const Prefix* const prefix = prefixNamed(words.front());
    if (prefix == nullptr) return;
    words.erase(words.begin(), afterPrefix(words, *prefix));
  }
}

// The program of "cd FOLDER && ./run A B"; empty for anything that only a shell understands.
Words programOfText(std::string_view text) {
  constexpr std::string_view onlyForShells = "$`|<>(){}*?!#~\n\\";
  if (text.find_first_of(onlyForShells) != std::string_view::npos) return {};
  std::string folder;
  while (true) {
    const std::size_t sequel = text.find_first_of("&;");
    const Words words = shellWords(std::string(text.substr(0, sequel)));
    if (words.empty()) return {};
    if (sequel == std::string_view::npos) {
      Words program = words;
      dropPrefixes(program);
      if (program.empty() || folder.empty()) return program;
      const bool isBeside = program.front().find('/') != std::string::npos;
      if (isBeside) program.front() = (std::filesystem::path(folder) / program.front()).lexically_normal();
      return program;
    }
    const bool isAnd = text.substr(sequel).starts_with("&&");
    if (words.size() != 2 || words.front() != "cd" || !words.back().starts_with('/')) return {};
    if (text[sequel] == '&' && !isAnd) return {};
    folder = words.back();
    text.remove_prefix(sequel + (isAnd ? 2 : 1));
  }
}

} // namespace

Words shellWords(const std::string& line) {
  int count = 0;
  char** parsed = nullptr;
  if (g_shell_parse_argv(line.c_str(), &count, &parsed, nullptr) == 0) return {};
  const std::unique_ptr<char*, decltype(&g_strfreev)> owned(parsed, &g_strfreev);
  return {parsed, parsed + count};
}

Words programOf(const std::string& exec) {
  Words words = shellWords(exec);
  dropPrefixes(words);
  std::erase_if(words, standsForFiles);
  return words;
}

Words innerProgramOf(const std::string& exec) {
  Words words = programOf(exec);
  constexpr std::array<std::string_view, 3> shells{"sh", "bash", "dash"};
  const bool isText = words.size() == 3 && words[1] == "-c" &&
                      std::find(shells.begin(), shells.end(), fileNameOf(words.front())) != shells.end();
  if (!isText) return words;
  const Words told = programOfText(words.back());
  // A word of the shell's own is no program.
  return told.empty() || told.front().find('/') == std::string::npos ? words : told;
}

} // namespace vantle
