// SPDX-License-Identifier: MIT
#include "platform/linux/apps/InterpretedProgram.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace vantle {

namespace {

template <std::size_t Count>
bool isOneOf(const std::array<std::string_view, Count>& words, std::string_view word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// Of both kinds of paths: a Windows program is called with one of its own.
std::string_view lastPartOfPath(std::string_view path) { return path.substr(path.find_last_of("/\\") + 1); }

std::string lastPartOfClass(std::string_view name) {
  name = name.substr(name.rfind('/') + 1); // "module/package.Class"
  return std::string(name.substr(name.rfind('.') + 1));
}

// The options of its launcher that take the next argument, from Java's own manual page.
constexpr std::array<std::string_view, 12> withValueInJava{
    "-cp", "-classpath",    "--class-path",  "-p",          "--module-path", "--upgrade-module-path",
    "-d",  "--add-modules", "--add-exports", "--add-opens", "--add-reads",   "--limit-modules"};

// "lib/*:game.jar": a folder, or a file.
std::string firstOfClassPath(std::string_view path) {
  path = path.substr(0, path.find(':'));
  if (path.ends_with("/*")) path.remove_suffix(2);
  return std::string(path);
}

InterpretedProgram ofJava(const std::vector<std::string>& arguments) {
  constexpr std::array<std::string_view, 5> classPath{"-cp", "-classpath", "--class-path", "-p",
                                                      "--module-path"};
  std::string from;
  for (std::size_t at = 1; at < arguments.size(); ++at) {
    const std::string& argument = arguments[at];
    const std::string value = at + 1 < arguments.size() ? arguments[at + 1] : std::string();
    if (argument == "-jar") return {.file = value, .name = {}};
    if (argument == "-m" || argument == "--module")
      return {.file = {}, .name = lastPartOfClass(value), .from = from};
    if (isOneOf(withValueInJava, argument)) {
      if (isOneOf(classPath, argument)) from = firstOfClassPath(value);
      ++at;
    } else if (!argument.starts_with('-') && !argument.starts_with('@')) {
      return {.file = {}, .name = lastPartOfClass(argument), .from = from};
    }
  }
  return {};
}

// A module is called after its package: what it runs is named "__main__", if at all.
InterpretedProgram ofPython(const std::vector<std::string>& arguments) {
  constexpr std::array<std::string_view, 3> withValue{"-W", "-X", "--check-hash-based-pycs"};
  for (std::size_t at = 1; at < arguments.size(); ++at) {
    const std::string& argument = arguments[at];
    if (argument == "-c") return {};
    if (argument == "-m") {
      const std::string module = at + 1 < arguments.size() ? arguments[at + 1] : std::string();
      return {.file = {}, .name = module.substr(0, module.find('.'))};
    }
    if (isOneOf(withValue, argument)) {
      ++at;
    } else if (!argument.starts_with('-')) {
      return {.file = argument, .name = {}};
    }
  }
  return {};
}

// Its loader puts the program's name in the place of its own, sometimes.
InterpretedProgram ofWine(const std::vector<std::string>& arguments) {
  const auto found = std::find_if(arguments.begin(), arguments.end(), [](const std::string& argument) {
    return asciiLowered(argument).ends_with(".exe");
  });
  return {.file = found == arguments.end() ? std::string() : *found, .name = {}};
}

InterpretedProgram ofAnyOther(std::string_view interpreter, const std::vector<std::string>& arguments) {
  const bool isShell = interpreter.ends_with("sh");
  for (std::size_t at = 1; at < arguments.size(); ++at) {
    const std::string& argument = arguments[at];
    if (argument == "-c" || argument == "-e" || (isShell && isTextOption(argument))) return {};
    if (!argument.starts_with('-')) return {.file = argument, .name = {}};
  }
  return {};
}

bool isCommonFile(std::string_view stem) {
  constexpr std::array<std::string_view, 10> common{"main", "__main__", "run", "run_game", "start",
                                                    "game", "launcher", "app", "index",    "client"};
  return isOneOf(common, stem);
}

bool isCommonFolder(std::string_view folder) {
  constexpr std::array<std::string_view, 14> common{
      "bin",    "lib",     "libexec", "share", "games", "java",          "src",
      "python", "python3", "scripts", "local", "app",   "dist-packages", "site-packages"};
  return isOneOf(common, folder);
}

// A package's own folder below where packages are installed; anywhere else people call folders what they
// like.
std::string packageFolder(std::string_view path) {
  if (!path.starts_with("/usr/") && !path.starts_with("/opt/")) return {};
  const std::string folder = folderOf(path);
  std::string_view rest = std::string_view(folder).substr(5); // after "/usr/"
  std::string innermost;
  while (!rest.empty()) {
    const std::string_view part = takePart(rest, '/');
    if (!isCommonFolder(part)) innermost = part;
  }
  return innermost;
}

} // namespace

bool isLoader(std::string_view fileName) {
  return fileName.starts_with("ld-") && fileName.find(".so") != std::string_view::npos;
}

bool isTextOption(std::string_view argument) {
  return argument.starts_with('-') && argument.find('c') != std::string_view::npos &&
         argument.find_first_not_of("ceilux", 1) == std::string_view::npos;
}

InterpretedProgram interpretedProgram(std::string_view interpreter,
                                      const std::vector<std::string>& arguments) {
  if (interpreter.starts_with("java")) return ofJava(arguments);
  if (interpreter.starts_with("python")) return ofPython(arguments);
  if (interpreter.starts_with("wine")) return ofWine(arguments);
  return ofAnyOther(interpreter, arguments);
}

std::string_view withoutProgramEnding(std::string_view name) {
  // The last three are those of programs that a script of the plain name starts.
  constexpr std::array<std::string_view, 12> endings{".py", ".pyw", ".pl",  ".rb",   ".sh",  ".lua",
                                                     ".js", ".jar", ".exe", ".real", ".bin", "-bin"};
  const std::string lowered = asciiLowered(name);
  for (const std::string_view ending : endings) {
    if (lowered.size() > ending.size() && lowered.ends_with(ending))
      return name.substr(0, name.size() - ending.size());
  }
  return name;
}

std::vector<std::string> programNames(const InterpretedProgram& program, std::string_view path) {
  std::vector<std::string> names;
  if (!program.name.empty()) names.push_back(program.name);
  const std::string_view stem = withoutProgramEnding(lastPartOfPath(program.file));
  if (!stem.empty() && !isCommonFile(asciiLowered(stem))) names.emplace_back(stem);
  if (std::string folder = packageFolder(path); !folder.empty()) names.push_back(std::move(folder));
  return names;
}

} // namespace vantle
