// SPDX-License-Identifier: MIT
#include "platform/linux/apps/ExecLine.h"

#include "base/Text.h"
#include "platform/linux/apps/InterpretedProgram.h"
#include "platform/linux/apps/ShellText.h"

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
  std::string_view folder{};  // of withValue those that say where the program is started
};
constexpr std::string_view loader = "ld.so";
constexpr std::array prefixes{
    Prefix{"env", " -u --unset -C --chdir -S ", 0, " -C --chdir "},
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
    Prefix{"setpriv",
           " --ambient-caps --inh-caps --bounding-set --ruid --euid --rgid --egid --reuid --regid --groups "
           "--securebits --pdeathsig --selinux-label --apparmor-profile --landlock-access --landlock-rule "},
    Prefix{"choom", " -n --adjust -p --pid "},
    Prefix{"unshare",
           " -S --setuid -G --setgid -R --root -w --wd --map-user --map-group --map-users --map-groups "
           "--propagation --setgroups --monotonic --boottime ",
           0, " -w --wd "},
    Prefix{loader, " --library-path --preload --audit --argv0 --inhibit-rpath --glibc-hwcaps-prepend "
                   "--glibc-hwcaps-mask "},
    Prefix{"exec", " -a "},
};

const Prefix* prefixNamed(const std::string& word) {
  const std::string file = fileNameOf(word);
  const std::string_view name = isLoader(file) ? loader : file;
  const auto* const found = std::find_if(prefixes.begin(), prefixes.end(),
                                         [&](const Prefix& prefix) { return prefix.name == name; });
  return found == prefixes.end() ? nullptr : found;
}

bool isArchitecture(std::string_view word) {
  constexpr std::array<std::string_view, 8> known{"i386",    "i486",    "i586",   "i686",
                                                  "linux32", "linux64", "x86_64", "uname26"};
  return std::find(known.begin(), known.end(), word) != known.end();
}

bool isAmong(std::string_view options, std::string_view option) {
  return options.find(" " + std::string(option) + " ") != std::string_view::npos;
}

// Where the program stands that this prefix runs; the end when it runs none. Says where it is started, if the
// prefix does.
Words::const_iterator afterPrefix(const Words& words, const Prefix& prefix, std::string& folder) {
  auto at = words.begin() + 1;
  if (prefix.name == "setarch" && at != words.end() && isArchitecture(*at)) ++at;
  for (; at != words.end() && at->size() > 1 && at->starts_with('-'); ++at) {
    if (*at == "--") {
      ++at;
      break;
    }
    const std::string option = at->substr(0, at->find('='));
    const bool isFolder = isAmong(prefix.folder, option);
    if (isFolder) folder = at->substr(std::min(option.size() + 1, at->size()));
    if (!isAmong(prefix.withValue, *at) || at + 1 == words.end()) continue;
    ++at;
    if (isFolder) folder = *at;
  }
  for (std::size_t count = 0; count < prefix.positional && at != words.end(); ++count) ++at;
  if (prefix.name == "env") at = std::find_if_not(at, words.end(), isAssignment);
  return at;
}

// `folder` is the one that all of it is started in, if that is known.
void dropPrefixes(Words& words, std::string folder) {
  while (!words.empty()) {
    const Prefix* const prefix = prefixNamed(words.front());
    if (prefix == nullptr) break;
    words.erase(words.begin(), afterPrefix(words, *prefix, folder));
  }
  const bool isBeside =
      !words.empty() && !words.front().starts_with('/') && words.front().find('/') != std::string::npos;
  if (!isBeside || folder.empty()) return;
  if (folder.starts_with('/')) {
    words.front() = (std::filesystem::path(folder) / words.front()).lexically_normal();
  } else {
    words.clear();
  }
}

// What a shell does to itself on its way to the program, or waits for.
bool isPreparation(std::string_view name) {
  constexpr std::array<std::string_view, 9> known{"cd",    "exec",   "export", "readonly", "umask",
                                                  "unset", "ulimit", "sleep",  ":"};
  return std::find(known.begin(), known.end(), name) != known.end();
}

// Words of loops and the like: what they stand before runs once, often or never.
bool isKeyword(std::string_view name) {
  constexpr std::array<std::string_view, 17> known{"if",   "then", "elif",     "else",   "fi",    "for",
                                                   "do",   "done", "while",    "until",  "case",  "esac",
                                                   "time", "in",   "function", "select", "coproc"};
  return std::find(known.begin(), known.end(), name) != known.end();
}

// Words of the shell's own, which are no program even where there is one of that name.
bool isBuiltin(std::string_view name) {
  constexpr std::array<std::string_view, 40> known{
      ".",      "[",    "alias", "bg",     "break",  "builtin", "command", "continue", "declare", "dirs",
      "echo",   "eval", "exit",  "false",  "fc",     "fg",      "getopts", "hash",     "help",    "history",
      "jobs",   "kill", "let",   "local",  "logout", "popd",    "printf",  "pushd",    "pwd",     "read",
      "return", "set",  "shift", "source", "test",   "trap",    "true",    "type",     "unalias", "wait"};
  return isPreparation(name) || isKeyword(name) || std::find(known.begin(), known.end(), name) != known.end();
}

// Whether "NAME=" stands anywhere in it.
bool sets(std::string_view text, const std::string& name) {
  const std::string assignment = name + "=";
  for (std::size_t at = text.find(assignment); at != std::string_view::npos;
       at = text.find(assignment, at + 1)) {
    if (at == 0 || !isNamePart(text[at - 1])) return true;
  }
  return false;
}

void dropAssignments(Words& words) {
  words.erase(words.begin(), std::find_if_not(words.begin(), words.end(), [](const std::string& word) {
                return assignedName(word) != 0 && g_ascii_isdigit(word[0]) == 0;
              }));
}

// The program that a shell starts last of all, or becomes: "cd FOLDER && ./run A B", "a || exec b". Empty
// where it may as well be another one.
Words lastProgram(std::vector<ShellCommand> commands) {
  if (!commands.empty() && commands.back().words == Words{"wait"}) commands.pop_back();
  if (commands.empty()) return {};
  Words program = std::move(commands.back().words);
  const std::string sequel = std::move(commands.back().sequel);
  commands.pop_back();
  if (sequel == "&&" || sequel == "||") return {};
  dropAssignments(program);
  if (program.empty()) return {};

  std::string folder;
  bool isOnly = true; // nothing else has been started so far, nor is anything left to chance
  for (ShellCommand& command : commands) {
    Words& words = command.words;
    dropAssignments(words);
    const std::string name = words.empty() ? ":" : words.front();
    if (isKeyword(name) || (name == "exec" && words.size() > 1)) return {};
    const bool isCertain = command.sequel == ";" || command.sequel == "&&";
    if (name == "cd") {
      if (!isOnly || !isCertain || words.size() != 2 || !words.back().starts_with('/')) return {};
      folder = words.back();
    }
    isOnly = isOnly && isCertain && isPreparation(name);
  }
  if (!isOnly && program.front() != "exec") return {};
  dropPrefixes(program, folder);
  return program.empty() || isBuiltin(program.front()) ? Words() : program;
}

// The text that a shell is given ("-c", "-lc"); the end for any other program.
Words::const_iterator shellsText(const Words& words) {
  constexpr std::array<std::string_view, 3> shells{"sh", "bash", "dash"};
  if (words.empty() || std::find(shells.begin(), shells.end(), fileNameOf(words.front())) == shells.end())
    return words.end();
  bool isTold = false;
  auto at = words.begin() + 1;
  for (; at != words.end() && at->starts_with('-'); ++at) {
    if (at->find_first_not_of("eilux", 1) == std::string::npos || *at == "--login") continue;
    if (!isTextOption(*at)) return words.end();
    isTold = true;
  }
  return isTold ? at : words.end();
}

} // namespace

Words shellWords(const std::string& line) {
  int count = 0;
  char** parsed = nullptr;
  if (g_shell_parse_argv(line.c_str(), &count, &parsed, nullptr) == 0) return {};
  const std::unique_ptr<char*, decltype(&g_strfreev)> owned(parsed, &g_strfreev);
  return {parsed, parsed + count};
}

std::string singlePercents(std::string_view argument) {
  std::string value;
  for (std::size_t at = 0; at < argument.size(); ++at) {
    value += argument[at];
    if (argument.substr(at, 2) == "%%") ++at;
  }
  return value;
}

Words withoutPrefixes(Words words) {
  dropPrefixes(words, std::string());
  return words;
}

Words programOf(const std::string& exec) {
  Words words = withoutPrefixes(shellWords(exec));
  std::erase_if(words, standsForFiles);
  return words;
}

InnerProgram innerProgramOf(const std::string& exec) {
  Words words = programOf(exec);
  for (std::string& word : words) word = singlePercents(word);
  const auto text = shellsText(words);
  if (text == words.end()) return {.words = words, .told = {}};
  const Words given(words.cend() - text > 2 ? text + 2 : words.cend(), words.cend()); // after its own name
  const std::string home = sets(exec, "HOME") ? "" : g_get_home_dir();
  Words inner = lastProgram(shellCommands(*text, given, home).value_or(std::vector<ShellCommand>()));
  std::erase_if(inner, standsForFiles);
  const bool isElsewhere =
      !inner.empty() && inner.front().find('/') == std::string::npos && sets(exec, "PATH");
  if (inner.empty() || isElsewhere) return {.words = words, .told = {}};
  return {.words = std::move(inner), .told = std::move(words)};
}

} // namespace vantle
