// SPDX-License-Identifier: MIT
#include "platform/linux/apps/DesktopIdentity.h"

#include "base/Text.h"
#include "base/Utf8.h"
#include "platform/linux/apps/IdentifierMap.h"
#include "platform/linux/apps/InterpretedProgram.h"
#include "platform/linux/apps/OneLineName.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <string_view>

namespace vantle {

namespace {

using Entries = std::span<const DesktopEntry>;
using Test = std::function<bool(const DesktopEntry&)>;

char lowered(char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter; }

bool equalIgnoringCase(std::string_view left, std::string_view right) {
  return !left.empty() && std::equal(left.begin(), left.end(), right.begin(), right.end(),
                                     [](char a, char b) { return lowered(a) == lowered(b); });
}

std::string_view lastPart(std::string_view text, char separator) {
  return text.substr(text.rfind(separator) + 1);
}

const DesktopEntry* first(Entries entries, const Test& test) {
  const auto found = std::find_if(entries.begin(), entries.end(), test);
  return found == entries.end() ? nullptr : &*found;
}

const DesktopEntry* byId(Entries entries, std::string_view id) {
  if (id.empty()) return nullptr;
  return first(entries, [&](const DesktopEntry& entry) { return entry.id == id; });
}

const DesktopEntry* byPath(Entries entries, std::string_view path) {
  if (path.empty()) return nullptr;
  return first(entries, [&](const DesktopEntry& entry) { return entry.path == path; });
}

// A file beside which the program was started, or is to be, is named in short.
bool isGiven(const AppEvidence& evidence, const DesktopEntry& entry, const std::string& argument) {
  const auto pathIn = [](const std::string& folder, const std::string& name) {
    return (std::filesystem::path(folder) / name).lexically_normal();
  };
  const bool isFile = argument.starts_with('/') || (!entry.folder.empty() && !argument.starts_with('-'));
  return std::any_of(evidence.arguments.begin(), evidence.arguments.end(), [&](const std::string& given) {
    if (given == argument) return true;
    if (!isFile || given.empty() || (evidence.workingFolder.empty() && !given.starts_with('/'))) return false;
    return pathIn(evidence.workingFolder, given) == pathIn(entry.folder, argument);
  });
}

bool areGiven(const AppEvidence& evidence, const DesktopEntry& entry,
              const std::vector<std::string>& arguments) {
  return std::all_of(arguments.begin(), arguments.end(),
                     [&](const std::string& argument) { return isGiven(evidence, entry, argument); });
}

bool runsWith(const AppEvidence& evidence, const DesktopEntry& entry) {
  return areGiven(evidence, entry, entry.arguments);
}

// An engine that is started with one game's data is that game; with any other it is not.
bool hasOtherData(const AppEvidence& evidence, const DesktopEntry& entry) {
  if (entry.realPath.empty() || entry.realPath != evidence.program) return false;
  return std::any_of(entry.arguments.begin(), entry.arguments.end(), [&](const std::string& argument) {
    return !argument.starts_with('-') && !isGiven(evidence, entry, argument);
  });
}

// How well an entry's Exec fits what runs; 0 for not at all.
int programRank(const AppEvidence& evidence, const DesktopEntry& entry) {
  if (entry.isHidden || entry.realPath.empty()) return 0;
  // The shell that was told, which may wait for what it has started.
  const bool isShell = !entry.told.empty() && evidence.program.empty() && !evidence.executable.empty();
  if (isShell && areGiven(evidence, entry, entry.told)) return 3;
  const bool isInterpreterItself =
      entry.realPath == evidence.executable && evidence.executable != evidence.program;
  if (isInterpreterItself) return !entry.arguments.empty() && runsWith(evidence, entry) ? 3 : 0;
  if (entry.realPath != evidence.program) return 0;
  if (entry.arguments.empty()) return entry.told.empty() ? 2 : 1; // rather who starts nothing but it
  if (hasOtherData(evidence, entry)) return 0;
  return runsWith(evidence, entry) ? 3 : 1;
}

bool isData(const std::string& argument) { return !argument.starts_with('-'); }

bool becomesWithData(const DesktopEntry& entry) {
  return std::any_of(entry.becomes.arguments.begin(), entry.becomes.arguments.end(), isData);
}

// Whether the entry's script may have become what runs: the same program, called in the script's words.
bool mayHaveBecome(const AppEvidence& evidence, const DesktopEntry& entry) {
  const auto& [program, arguments, takesMore, folder] = entry.becomes;
  if (entry.isHidden || program.empty()) return false;
  const bool isExecutable = program == evidence.executable;
  if (!isExecutable && program != evidence.program) return false;
  const bool isInterpreterItself = isExecutable && evidence.executable != evidence.program;
  if (isInterpreterItself && !becomesWithData(entry)) return false;
  if (arguments.empty()) return true;
  // Data beside which the program was started are others in another folder.
  const auto isRelative = [](const std::string& argument) {
    const std::size_t equals = argument.find('=');
    if (isData(argument) || equals == std::string::npos) return isData(argument) && argument[0] != '/';
    return argument[equals + 1] != '/';
  };
  const bool isOfFolder = std::any_of(arguments.begin(), arguments.end(), isRelative);
  if (isOfFolder && !folder.empty() && folder != evidence.workingFolder) return false;
  // Of a script the interpreter and its own name stand before its arguments.
  const std::vector<std::string>& given = evidence.arguments;
  const std::size_t before = isExecutable ? 1 : 2;
  if (given.size() < before) return false;
  const auto from = given.begin() + static_cast<std::ptrdiff_t>(before);
  const auto found = std::search(from, given.end(), arguments.begin(), arguments.end());
  if (found == given.end() || (isExecutable && found != from)) return false;
  return takesMore || given.end() - found == static_cast<std::ptrdiff_t>(arguments.size());
}

// The one that tells most of how its script calls the program; null where two tell as much.
const DesktopEntry* byScript(Entries entries, const AppEvidence& evidence) {
  const DesktopEntry* best = nullptr;
  bool isOne = true;
  for (const DesktopEntry& entry : entries) {
    if (!mayHaveBecome(evidence, entry)) continue;
    const std::size_t words = entry.becomes.arguments.size();
    if (best == nullptr || words > best->becomes.arguments.size()) {
      best = &entry;
      isOne = true;
    } else if (words == best->becomes.arguments.size() && entry.realPath != best->realPath) {
      isOne = false;
    }
  }
  return isOne ? best : nullptr;
}

const DesktopEntry* byProgram(Entries entries, const AppEvidence& evidence) {
  const auto best = std::max_element(entries.begin(), entries.end(),
                                     [&](const DesktopEntry& left, const DesktopEntry& right) {
                                       return programRank(evidence, left) < programRank(evidence, right);
                                     });
  const int rank = best == entries.end() ? 0 : programRank(evidence, *best);
  const DesktopEntry* const script = byScript(entries, evidence);
  const int scriptsRank = script == nullptr ? 0 : becomesWithData(*script) ? 3 : 1;
  if (scriptsRank > rank) return script;
  return rank == 0 ? nullptr : &*best;
}

const DesktopEntry* ownEntry(Entries entries, const AppEvidence& evidence) {
  if (const DesktopEntry* const started = byProgram(entries, evidence)) return started;
  const std::string name = fileNameOf(evidence.program); // what a script of the same name has started
  return first(entries, [&](const DesktopEntry& entry) {
    return !entry.isHidden && !name.empty() && fileNameOf(entry.executable) == name &&
           runsWith(evidence, entry);
  });
}

// A name is chosen by whoever starts a program ("--class"). Such a one makes no game of another app's
// program, nor of an engine that plays something else.
bool isNoGameOf(Entries entries, const AppEvidence& evidence, const DesktopEntry& entry) {
  if (entry.category != gamesCategory) return false;
  if (hasOtherData(evidence, entry)) return true;
  if (entry.realPath.empty() || entry.realPath == evidence.program) return false;
  const DesktopEntry* const own = ownEntry(entries, evidence);
  return own != nullptr && own->category != gamesCategory && own->realPath != entry.realPath;
}

// Of the entries that a window's class fits: one that starts this very program, then one for the menus.
const DesktopEntry* bestOf(Entries entries, const AppEvidence& evidence, const Test& fits) {
  const DesktopEntry* best = nullptr;
  int bestRank = -1;
  for (const DesktopEntry& entry : entries) {
    if (!fits(entry) || isNoGameOf(entries, evidence, entry)) continue;
    const bool isProgram = !entry.realPath.empty() && entry.realPath == evidence.program;
    const int rank = (isProgram ? 4 : 0) + (entry.isHidden ? 0 : 2) + (entry.arguments.empty() ? 1 : 0);
    if (rank > bestRank) {
      best = &entry;
      bestRank = rank;
    }
  }
  return best;
}

// Programs that start a game with its data, as its own or in words: "-p FOLDER queen". So may a script.
const DesktopEntry* byWholeCommand(Entries entries, const AppEvidence& evidence) {
  const auto isOfOtherWindows = [&](const DesktopEntry& entry) {
    return !entry.windowClass.empty() && entry.windowClass != evidence.windowClass &&
           entry.windowClass != evidence.windowInstance;
  };
  const DesktopEntry* const command = first(entries, [&](const DesktopEntry& entry) {
    return !entry.isHidden && !entry.realPath.empty() && entry.realPath == evidence.program &&
           !entry.arguments.empty() && runsWith(evidence, entry) && !isOfOtherWindows(entry);
  });
  if (command != nullptr) return command;
  const DesktopEntry* const script = byScript(entries, evidence);
  const bool isIt = script != nullptr && becomesWithData(*script) && !isOfOtherWindows(*script);
  return isIt ? script : nullptr;
}

const DesktopEntry* byLastPart(Entries entries, const AppEvidence& evidence) {
  std::vector<std::string> names{evidence.windowClass, evidence.windowInstance,
                                 std::string(lastPart(evidence.program, '/'))};
  for (std::string& name : names) name = withoutProgramEnding(name);
  return bestOf(entries, evidence, [&](const DesktopEntry& each) {
    const std::string_view part = lastPart(each.id, '.');
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string& name) { return equalIgnoringCase(part, name); });
  });
}

const DesktopEntry* byScriptsName(Entries entries, const AppEvidence& evidence) {
  for (const std::string& name : evidence.names) {
    const auto isCalled = [&](const DesktopEntry& each) {
      return equalIgnoringCase(lastPart(each.id, '.'), name) ||
             equalIgnoringCase(fileNameOf(each.executable), name);
    };
    if (const DesktopEntry* const called = bestOf(entries, evidence, isCalled)) return called;
  }
  return nullptr;
}

// The game whose data an engine plays: the engine is a game by its own desktop file, and an argument is
// called as the script is that starts it with that ("-iwad freedoom1.wad"), or its folder as the game itself.
const DesktopEntry* byData(Entries entries, const AppEvidence& evidence, const DesktopEntry& engine) {
  if (engine.category != gamesCategory) return nullptr;
  return first(entries, [&](const DesktopEntry& entry) {
    if (!entry.isScript || entry.isHidden || entry.category != gamesCategory) return false;
    return std::any_of(
        evidence.arguments.begin(), evidence.arguments.end(), [&](const std::string& argument) {
          const std::string file = fileNameOf(argument);
          const std::size_t ending = file.rfind('.');
          const bool isFolder = argument.starts_with('/') && file == lastPart(entry.id, '.');
          return isFolder ||
                 (ending != std::string::npos && file.substr(0, ending) == fileNameOf(entry.executable));
        });
  });
}

const DesktopEntry* byApplicationId(Entries entries, const AppEvidence& evidence) {
  return byId(entries, evidence.applicationId);
}

using Equality = bool (*)(std::string_view declared, std::string_view said);

// By the part of WM_CLASS that is the surer one of the two; the other one counts when nobody declares it.
const DesktopEntry* byClass(Entries entries, const AppEvidence& evidence, Equality equals,
                            std::initializer_list<std::string_view> parts) {
  for (const std::string_view name : parts) {
    const auto declares = [&](const DesktopEntry& entry) {
      return !name.empty() && equals(entry.windowClass, name);
    };
    if (const DesktopEntry* entry = bestOf(entries, evidence, declares)) return entry;
  }
  return nullptr;
}

// To the letter: the instance "xterm" of a window of class "UXTerm" is not XTerm's "XTerm".
const DesktopEntry* byDeclaredClass(Entries entries, const AppEvidence& evidence) {
  const Equality toTheLetter = [](std::string_view declared, std::string_view said) {
    return declared == said;
  };
  return byClass(entries, evidence, toTheLetter, {evidence.windowInstance, evidence.windowClass});
}

const DesktopEntry* byDeclaredClassInAnyCase(Entries entries, const AppEvidence& evidence) {
  return byClass(entries, evidence, equalIgnoringCase, {evidence.windowClass, evidence.windowInstance});
}

const DesktopEntry* byClassAsId(Entries entries, const AppEvidence& evidence) {
  return bestOf(entries, evidence, [&](const DesktopEntry& entry) {
    return equalIgnoringCase(entry.id, evidence.windowClass) ||
           equalIgnoringCase(entry.id, evidence.windowInstance);
  });
}

const DesktopEntry* byLaunchedFile(Entries entries, const AppEvidence& evidence) {
  const bool isWrappers = evidence.launchedProcess != 0 && evidence.launchedProcess != evidence.pid;
  return isWrappers ? nullptr : byPath(entries, evidence.launchedFile);
}

// A store waits for its games, and for windows of its own: its shortcut to one of them says nothing.
bool isOfStore(Entries entries, const DesktopEntry& entry) {
  return first(entries, [&](const DesktopEntry& other) {
           return other.isStore && !other.realPath.empty() && other.realPath == entry.realPath;
         }) != nullptr;
}

// What was started from a desktop file and waits for this program, or would have been by its command line.
const DesktopEntry* byWrapper(Entries entries, const AppEvidence& evidence) {
  if (evidence.launchedProcess != evidence.pid) {
    const DesktopEntry* const launched = byPath(entries, evidence.launchedFile);
    if (launched != nullptr && !isOfStore(entries, *launched)) return launched;
  }
  for (const Wrapper& wrapper : evidence.wrappers) {
    AppEvidence running;
    running.executable = wrapper.executable;
    running.program = wrapper.program;
    running.arguments = wrapper.arguments;
    running.workingFolder = wrapper.workingFolder;
    const DesktopEntry* const entry = byProgram(entries, running);
    const bool isOthers =
        entry == nullptr || isOfStore(entries, *entry) || isNoGameOf(entries, evidence, *entry);
    if (!isOthers) return entry;
  }
  return nullptr;
}

// A store's shortcut to the game.
const DesktopEntry* byStoreAddress(Entries entries, const AppEvidence& evidence) {
  if (evidence.storeAddress.empty()) return nullptr;
  return first(entries, [&](const DesktopEntry& entry) {
    const std::vector<std::string>& arguments = entry.arguments;
    return std::find(arguments.begin(), arguments.end(), evidence.storeAddress) != arguments.end();
  });
}

const DesktopEntry* bySandbox(Entries entries, const AppEvidence& evidence) {
  if (const DesktopEntry* entry = byId(entries, evidence.sandboxId)) return entry;
  // A snap whose only app has its name may have a desktop file of that name.
  return byId(entries, std::string_view(evidence.sandboxId).substr(0, evidence.sandboxId.find('_')));
}

// A unit also holds what its app started: a calculator called from a terminal sits in the terminal's unit.
bool isUnitsOwn(const AppEvidence& evidence, const DesktopEntry& entry) {
  return evidence.unit->random == std::to_string(evidence.pid) || entry.realPath == evidence.program ||
         entry.realPath == evidence.executable;
}

const DesktopEntry* entryOfUnit(Entries entries, const AppEvidence& evidence) {
  return evidence.unit ? byId(entries, evidence.unit->id) : nullptr;
}

const DesktopEntry* byOwnUnit(Entries entries, const AppEvidence& evidence) {
  const DesktopEntry* const unit = entryOfUnit(entries, evidence);
  return unit != nullptr && isUnitsOwn(evidence, *unit) ? unit : nullptr;
}

// A script may well have started a program of another name. What a store has started is one of its games.
const DesktopEntry* byScriptsUnit(Entries entries, const AppEvidence& evidence) {
  const DesktopEntry* const unit = entryOfUnit(entries, evidence);
  return unit != nullptr && unit->isScript && !unit->isStore ? unit : nullptr;
}

// The surest evidence first; what merely fits stands last.
constexpr std::array ranks{
    IdentityRule{"store's number", "the store has given it to the game's processes and to its shortcut",
                 byStoreAddress},
    IdentityRule{"sandbox", "the kernel keeps it there under that name", bySandbox},
    IdentityRule{"own unit", "the desktop has made the unit for this process or program", byOwnUnit},
    IdentityRule{"launched file", "the desktop has started this process from that file", byLaunchedFile},
    IdentityRule{"application id", "the toolkit makes it equal to the desktop file's id", byApplicationId,
                 true},
    IdentityRule{"window class", "the desktop file declares it, to the letter", byDeclaredClass, true},
    IdentityRule{"window class in any case", "desktops compare it so", byDeclaredClassInAnyCase},
    IdentityRule{"whole command",
                 "program and all arguments are the desktop file's, whatever an engine "
                 "calls its window",
                 byWholeCommand},
    IdentityRule{"wrapper", "the desktop file starts what has started this program and waits for it",
                 byWrapper},
    IdentityRule{"window class as id", "many windows are called after the desktop file", byClassAsId},
    IdentityRule{"program", "the desktop file starts this program", byProgram},
    IdentityRule{"last part of the id", "programs and windows are called after it", byLastPart},
    IdentityRule{"script's name", "script, class or package folder are called after it", byScriptsName},
    IdentityRule{"unit of a script", "nothing else speaks, and a script has started it", byScriptsUnit},
};

IdentityMatch firstMatch(const AppEvidence& evidence, Entries entries, bool isWindowsWord) {
  for (const IdentityRule& rule : ranks) {
    if (isWindowsWord && !rule.isWindowsWord) continue;
    if (const DesktopEntry* const entry = rule.find(entries, evidence); entry != nullptr)
      return {entry, &rule};
  }
  return {};
}

// As a title: of "whichwayisup" Whichwayisup. What has capitals is written as it is meant.
std::string asTitle(std::string_view name) {
  std::string title = oneLineName(name);
  const auto isCapital = [](char letter) { return letter >= 'A' && letter <= 'Z'; };
  if (std::none_of(title.begin(), title.end(), isCapital) && !title.empty() && title[0] >= 'a' &&
      title[0] <= 'z')
    title[0] = static_cast<char>(title[0] - 'a' + 'A');
  return title;
}

// A program of a store's library, whoever runs it: "…/steamapps/common/NAME/run.sh".
constexpr std::string_view library = "/steamapps/";

// What of a library an interpreter runs, or a script of a library's has started somewhere else.
std::string libraryProgram(const AppEvidence& evidence) {
  const auto isIn = [](const std::string& path) {
    return asciiLowered(path).find(library) != std::string::npos;
  };
  if (isIn(evidence.executable)) return {};
  if (isIn(evidence.program)) return evidence.program;
  if (isIn(evidence.classFrom)) return evidence.classFrom;
  const auto wrapper = std::find_if(evidence.wrappers.begin(), evidence.wrappers.end(),
                                    [&](const Wrapper& one) { return isIn(one.program); });
  return wrapper == evidence.wrappers.end() ? std::string() : wrapper->program;
}

// A class is anywhere, and called as thousands are: its game is known by the folder.
std::string nameInLibrary(const AppEvidence& evidence, const std::string& path) {
  const std::vector<std::string> names = programNames({.file = path, .name = {}}, {});
  if (!names.empty() && path != evidence.classFrom) return asTitle(names.front());
  constexpr std::string_view games = "common/";
  std::string_view rest = std::string_view(path).substr(asciiLowered(path).find(library) + library.size());
  if (rest.starts_with(games)) rest.remove_prefix(games.size());
  return oneLineName(rest.substr(0, rest.find('/')));
}

// Some toolkits call a window after the file, after themselves, or with Java's whole class name.
bool isCalledByMachine(const AppEvidence& evidence) {
  return evidence.windowClass.empty() || evidence.windowClass == "Tk" ||
         withoutProgramEnding(evidence.windowClass) != evidence.windowClass ||
         fileNameOf(evidence.executable).starts_with("java");
}

std::string givenName(const AppEvidence& evidence, const std::string& inLibrary) {
  if (!inLibrary.empty()) {
    if (std::string name = nameInLibrary(evidence, inLibrary); !name.empty()) return name;
  }
  const std::string_view executable = lastPart(evidence.executable, '/');
  if (!executable.empty() && !isInterpreter(executable)) return oneLineName(executable);
  if (!evidence.names.empty() && isCalledByMachine(evidence)) {
    if (std::string title = asTitle(evidence.names.front()); !title.empty()) return title;
  }
  for (const std::string_view text :
       {std::string_view(evidence.windowClass), std::string_view(evidence.windowInstance),
        lastPart(evidence.program, '/'), executable, std::string_view(evidence.commandName)}) {
    if (std::string name = oneLineName(text); !name.empty()) return name;
  }
  return "pid " + std::to_string(evidence.pid);
}

// The program that runs a Windows program, under the name that it has had for most of its life: some builds
// keep a loader of its own for the first memory ("preloader"), others do without. It is the same program.
std::optional<std::string> wineLoader(const std::string& executable) {
  const std::string name = fileNameOf(executable);
  if (name == "wine64") return folderOf(executable) + "/wine64-preloader";
  if (name == "wine" || name == "wine32") return folderOf(executable) + "/wine-preloader";
  return {};
}

// A store's shortcut starts the store. Of an interpreted program it is what was started: the interpreter's
// own path is known from the process.
std::string startedPath(const AppEvidence& evidence, const DesktopEntry* entry) {
  if (entry != nullptr) return evidence.storeAddress.empty() ? entry->executable : evidence.executable;
  const std::string name = fileNameOf(evidence.executable);
  const bool isRun = isInterpreter(name) && !name.starts_with("wine") && !evidence.program.empty();
  return isRun ? evidence.program : evidence.executable;
}

std::optional<std::string> unlessEmpty(const std::string& text) {
  return text.empty() ? std::nullopt : std::optional(text);
}

} // namespace

std::span<const IdentityRule> identityRules() { return ranks; }

IdentityMatch matchEntry(const AppEvidence& evidence, Entries entries) {
  if (evidence.isSuccessor) { // what started its predecessor counts where nothing is known of itself
    AppEvidence itself = evidence;
    itself.isSuccessor = false;
    itself.launchedFile.clear();
    itself.unit.reset();
    itself.wrappers.clear();
    if (const IdentityMatch match = matchEntry(itself, entries); match.entry != nullptr) return match;
  }
  const IdentityMatch match = firstMatch(evidence, entries, false);
  const DesktopEntry* const game = match.entry == nullptr ? nullptr : byData(entries, evidence, *match.entry);
  return game == nullptr || game == match.entry ? match : IdentityMatch{game, &enginesDataRule};
}

const DesktopEntry* findEntry(const AppEvidence& evidence, Entries entries) {
  return matchEntry(evidence, entries).entry;
}

IdentityMatch matchWindow(const AppEvidence& evidence, const IdentityMatch& known, Entries entries) {
  const IdentityMatch declared = firstMatch(evidence, entries, true);
  // What is in a sandbox is not believed to be somebody outside; a browser there has its web apps under its
  // id.
  const bool isSandboxsOwn =
      declared.entry != nullptr &&
      (evidence.sandboxId.empty() || declared.entry->id.starts_with(evidence.sandboxId));
  if (isSandboxsOwn) return declared;
  if (declared.entry != nullptr) return known;
  if (known.entry == nullptr) {
    AppEvidence process = evidence;
    for (std::string* name : {&process.applicationId, &process.windowInstance, &process.windowClass})
      name->clear();
    const bool isNobodys = evidence.sandboxId.empty() && matchEntry(process, entries).entry == nullptr;
    return isNobodys ? matchEntry(evidence, entries) : known;
  }
  if (known.entry->windowClass.empty()) return known;
  if (equalIgnoringCase(known.entry->windowClass, evidence.windowClass) ||
      equalIgnoringCase(known.entry->windowClass, evidence.windowInstance))
    return known;
  // It may have been started as what it is known as: only what the window shows counts now.
  AppEvidence shown = evidence;
  shown.launchedFile.clear();
  shown.unit.reset();
  shown.arguments.clear();
  shown.wrappers.clear();
  const IdentityMatch match = matchEntry(shown, entries);
  return match.entry == nullptr ? known : match;
}

AppIdentity identityOf(const AppEvidence& evidence, const IdentityMatch& match) {
  const DesktopEntry* const entry = match.entry;
  AppIdentity identity;
  identity.rule = match.rule;
  identity.bundleIdentifier = bundleIdentifierOf(evidence, entry);
  const std::string inLibrary = libraryProgram(evidence);
  identity.localizedName =
      entry == nullptr || entry->name.empty() ? givenName(evidence, inLibrary) : entry->name;
  identity.executablePath = wineLoader(cleanUtf8(evidence.executable));
  if (!identity.executablePath)
    identity.executablePath =
        unlessEmpty(cleanUtf8(inLibrary.empty() ? startedPath(evidence, entry) : inLibrary));
  if (entry == nullptr) return identity;
  identity.bundlePath = cleanUtf8(entry->path);
  identity.bundleCategory = unlessEmpty(entry->category);
  identity.iconName = unlessEmpty(entry->icon);
  return identity;
}

} // namespace vantle
