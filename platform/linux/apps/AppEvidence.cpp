// SPDX-License-Identifier: MIT
#include "platform/linux/apps/AppEvidence.h"

#include "base/Text.h"
#include "engine/ports/ProcessTable.h"
#include "platform/linux/apps/ExecLine.h"
#include "platform/linux/apps/InterpretedProgram.h"
#include "platform/linux/apps/ProgramPath.h"
#include "platform/linux/process/FlatpakInstances.h"
#include "platform/linux/process/KernelFile.h"
#include "platform/linux/process/ProcStat.h"
#include "platform/linux/process/ProcessWords.h"
#include "platform/linux/programs/DesktopPrograms.h"
#include "platform/posix/process/BoundedWait.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

constexpr std::chrono::milliseconds longestAnswer{100};
constexpr int mostStuck = 16;

// Some programs write one text with spaces over their command line, as browsers do.
std::vector<std::string> argumentsOf(const std::string& commandLine) {
  std::vector<std::string> arguments = split(commandLine, '\0');
  const bool isOneText = arguments.size() == 1 && arguments.front().find(" --") != std::string::npos;
  return isOneText ? split(arguments.front(), ' ') : arguments;
}

bool isNumber(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

// Of an app that was updated while it runs as well.
std::string linkTarget(const std::string& path) {
  return withoutDeletedMark(readKernelLink(path).value_or(""));
}

// The unit is the last folder of the process's place among the control groups.
std::string unitName(const std::string& folder) {
  for (const std::string& line : split(readKernelFile(folder + "/cgroup").value_or(""), '\n')) {
    if (line.starts_with("0::") || line.find(":name=systemd:") != std::string::npos) return fileNameOf(line);
  }
  return {};
}

// systemd writes bytes that have a meaning in names as \xHH.
std::string unescaped(const std::string& name) {
  std::string result;
  for (std::size_t at = 0; at < name.size(); ++at) {
    if (name.compare(at, 2, "\\x") == 0 && at + 3 < name.size()) {
      const std::string digits = name.substr(at + 2, 2);
      result += static_cast<char>(std::strtol(digits.c_str(), nullptr, 16));
      at += 3;
    } else {
      result += name[at];
    }
  }
  return result;
}

// Where the process stands is where it was started from, unless it has gone elsewhere since: only a file that
// is there counts.
std::string pathOf(const std::string& file, const std::string& workingFolder) {
  if (file.empty()) return {};
  const bool isAbsolute = file.starts_with('/');
  std::string real = realPath(isAbsolute ? file : workingFolder + "/" + file);
  return real.empty() && isAbsolute ? file : real;
}

// A program that runs with a group's rights (games do, for their high scores) has its file hidden from
// everybody else. Its command line is not, and is believed when the kernel's name for it agrees.
std::string startedProgram(const AppEvidence& evidence) {
  constexpr std::size_t longestCommandName = 15;
  if (evidence.arguments.empty()) return {};
  const std::string& name = evidence.arguments.front();
  if (fileNameOf(name).substr(0, longestCommandName) != evidence.commandName) return {};
  const std::size_t slash = name.find('/');
  if (slash != 0 && slash != std::string::npos) return {}; // from a folder that nobody knows any more
  std::string path = realPath(absolutePath(name));
  return ::access(path.c_str(), X_OK) == 0 ? path : std::string();
}

std::string programOfInterpreter(const std::string& executable, const InterpretedProgram& run,
                                 const std::string& workingFolder) {
  return isInterpreter(fileNameOf(executable)) ? pathOf(run.file, workingFolder) : executable;
}

// What the dynamic loader was called with is what runs, however that was started.
void passLoader(std::string& executable, std::vector<std::string>& arguments,
                const std::string& workingFolder) {
  if (!isLoader(fileNameOf(executable))) return;
  std::vector<std::string> words = withoutPrefixes(arguments);
  std::string program = words.empty() ? std::string() : pathOf(words.front(), workingFolder);
  if (program.empty()) return;
  executable = std::move(program);
  arguments = std::move(words);
}

// What a person types into waits for everything, and was started for nothing of it.
bool isInteractive(const std::string& executable, const std::vector<std::string>& arguments,
                   const InterpretedProgram& run) {
  const bool hasText = std::any_of(arguments.begin(), arguments.end(), isTextOption);
  return isInterpreter(fileNameOf(executable)) && run.file.empty() && run.name.empty() && !hasText;
}

std::vector<Wrapper> readWrappers(Pid pid) {
  constexpr std::size_t most = 8;
  static const auto ticksPerSecond = static_cast<std::uint64_t>(::sysconf(_SC_CLK_TCK));
  const auto statOf = [](Pid process) {
    return parseProcStat(readKernelFile("/proc/" + std::to_string(process) + "/stat").value_or(""));
  };
  std::vector<Wrapper> wrappers;
  const std::optional<ProcStat> own = statOf(pid);
  if (!own || own->session == 0) return wrappers;
  for (Pid at = own->parent; at > 1 && wrappers.size() < most;) {
    const std::optional<ProcStat> stat = statOf(at);
    if (!stat || stat->session != own->session || stat->startTicks > own->startTicks) break;
    if (own->startTicks > stat->startTicks + longestWrapping * ticksPerSecond) break;
    const std::string folder = "/proc/" + std::to_string(at);
    std::string name = readKernelFile(folder + "/comm").value_or("");
    if (name.ends_with('\n')) name.pop_back();
    if (isSystemPart(name)) break;
    Wrapper wrapper{.pid = at,
                    .executable = linkTarget(folder + "/exe"),
                    .program = {},
                    .arguments = argumentsOf(readProcessWords(folder + "/cmdline")),
                    .workingFolder = linkTarget(folder + "/cwd")};
    passLoader(wrapper.executable, wrapper.arguments, wrapper.workingFolder);
    const InterpretedProgram run = interpretedProgram(fileNameOf(wrapper.executable), wrapper.arguments);
    if (wrapper.executable.empty() || isInteractive(wrapper.executable, wrapper.arguments, run)) break;
    wrapper.program = programOfInterpreter(wrapper.executable, run, wrapper.workingFolder);
    wrappers.push_back(std::move(wrapper));
    at = stat->parent;
  }
  return wrappers;
}

// What lies in the process's own memory, or below its own root.
AppEvidence withItsOwnWords(AppEvidence evidence) {
  const std::string folder = "/proc/" + std::to_string(evidence.pid);
  if (std::string id = flatpakApp(readProcessWords(folder + "/root/.flatpak-info")); !id.empty()) {
    evidence.sandboxId = std::move(id);
  }
  evidence.arguments = argumentsOf(readProcessWords(folder + "/cmdline"));
  evidence.workingFolder = linkTarget(folder + "/cwd");
  if (evidence.executable.empty()) evidence.executable = startedProgram(evidence);
  passLoader(evidence.executable, evidence.arguments, evidence.workingFolder);

  const std::vector<std::string> environment = readEnvironment(evidence.pid);
  evidence.wrappers = readWrappers(evidence.pid);
  // The variables are inherited; only the pid tells whose they are.
  const std::string launched = valueOf(environment, "GIO_LAUNCHED_DESKTOP_FILE_PID");
  const auto isLaunched = [&](Pid process) { return launched == std::to_string(process); };
  const auto wrapper = std::find_if(evidence.wrappers.begin(), evidence.wrappers.end(),
                                    [&](const Wrapper& one) { return isLaunched(one.pid); });
  if (isLaunched(evidence.pid) || wrapper != evidence.wrappers.end()) {
    evidence.launchedFile = valueOf(environment, "GIO_LAUNCHED_DESKTOP_FILE");
    evidence.launchedProcess = isLaunched(evidence.pid) ? evidence.pid : wrapper->pid;
  }
  // Everything that the game runs in and starts has it, and nothing of the store's own.
  if (const std::string number = valueOf(environment, "SteamAppId"); isNumber(number)) {
    evidence.storeAddress = "steam://rungameid/" + number;
  }
  evidence.program = evidence.executable;
  if (isInterpreter(fileNameOf(evidence.executable))) {
    const InterpretedProgram run = interpretedProgram(fileNameOf(evidence.executable), evidence.arguments);
    evidence.program = programOfInterpreter(evidence.executable, run, evidence.workingFolder);
    evidence.names = programNames(run, evidence.program);
    evidence.classFrom = pathOf(run.from, evidence.workingFolder);
  }
  // It runs from a file system of its own: the image's file is what a person started. The variables are
  // inherited by what it opens outside.
  const std::string imageFolder = valueOf(environment, "APPDIR");
  const auto isInside = [&](const std::string& path) { return path.starts_with(imageFolder + "/"); };
  if (imageFolder.starts_with('/') && (isInside(evidence.executable) || isInside(evidence.program))) {
    evidence.imageFolder = imageFolder;
    if (std::string image = valueOf(environment, "APPIMAGE"); !image.empty())
      evidence.program = std::move(image);
  }
  return evidence;
}

} // namespace

std::optional<UnitId> unitIdOf(std::string_view unitName) {
  if (!unitName.starts_with("app-")) return {};
  const std::size_t dot = unitName.rfind('.');
  const std::string_view kind = dot == std::string_view::npos ? "" : unitName.substr(dot);
  std::string name(unitName.substr(4, dot - 4));
  std::string random;
  const char before = kind == ".scope" ? '-' : '@';
  if (kind != ".scope" && kind != ".service") return {};
  const std::size_t at = name.rfind(before);
  if (at != std::string::npos) {
    random = name.substr(at + 1);
    name.resize(at);
  } else if (kind == ".scope") {
    return {};
  }
  // What stands before the last '-' is who launched it: ids have theirs escaped.
  return UnitId{unescaped(name.substr(name.rfind('-') + 1)), random};
}

std::string snapIdOf(std::string_view unitName) {
  constexpr std::string_view prefix = "snap.";
  constexpr std::size_t uuidLength = 36;
  constexpr std::string_view suffix = ".scope";
  if (!unitName.starts_with(prefix) || !unitName.ends_with(suffix)) return {};
  unitName.remove_prefix(prefix.size());
  unitName.remove_suffix(suffix.size());
  if (unitName.size() <= uuidLength + 1) return {};
  unitName.remove_suffix(uuidLength + 1);
  std::string id(unitName);
  const std::size_t dot = id.find('.');
  if (dot == std::string::npos) return {};
  id[dot] = '_';
  return id;
}

bool isInterpreter(std::string_view fileName) {
  constexpr std::array<std::string_view, 15> prefixes{"python", "perl",  "ruby",     "bash", "dash",
                                                      "zsh",    "java",  "node",     "mono", "wine",
                                                      "gjs",    "guile", "electron", "lua",  "php"};
  return fileName == "sh" || std::any_of(prefixes.begin(), prefixes.end(), [&](std::string_view prefix) {
           return fileName.starts_with(prefix);
         });
}

void dropWrappersFrom(AppEvidence& evidence, const std::function<bool(Pid)>& isApp) {
  const auto app = std::find_if(evidence.wrappers.begin(), evidence.wrappers.end(),
                                [&](const Wrapper& wrapper) { return isApp(wrapper.pid); });
  const bool isItsLaunch = std::any_of(
      app, evidence.wrappers.end(), [&](const Wrapper& one) { return one.pid == evidence.launchedProcess; });
  if (isItsLaunch) evidence.launchedFile.clear();
  evidence.wrappers.erase(app, evidence.wrappers.end());
}

AppEvidence readEvidence(Pid pid) {
  const std::string folder = "/proc/" + std::to_string(pid);
  AppEvidence evidence;
  evidence.pid = pid;
  evidence.commandName = readKernelFile(folder + "/comm").value_or("");
  if (evidence.commandName.ends_with('\n')) evidence.commandName.pop_back();
  evidence.executable = linkTarget(folder + "/exe");
  const std::string unit = unitName(folder);
  evidence.unit = unitIdOf(unit);
  evidence.sandboxId = snapIdOf(unit);
  if (!isInterpreter(fileNameOf(evidence.executable))) evidence.program = evidence.executable;

  static BoundedWait wait(mostStuck);
  return wait.answer(longestAnswer, [evidence] { return withItsOwnWords(evidence); }).value_or(evidence);
}

} // namespace vantle
