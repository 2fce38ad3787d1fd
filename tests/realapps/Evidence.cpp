// SPDX-License-Identifier: MIT
#include "tests/realapps/Evidence.h"

#include "platform/linux/apps/DesktopEntries.h"
#include "tests/support/Kernel.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vantle::realapps {

namespace {

namespace fs = std::filesystem;

std::string target(Pid pid, const char* link) {
  std::error_code error;
  return fs::read_symlink("/proc/" + std::to_string(pid) + "/" + link, error).string();
}

std::vector<std::string> texts(Pid pid, const char* file) {
  std::vector<std::string> found;
  const std::string bytes = test::procText(pid, file);
  for (std::size_t from = 0; from < bytes.size();) {
    const std::size_t to = std::min(bytes.find('\0', from), bytes.size());
    found.push_back(bytes.substr(from, to - from));
    from = to + 1;
  }
  return found;
}

std::string valueOf(const std::vector<std::string>& environment, const std::string& name) {
  for (const std::string& variable : environment)
    if (variable.starts_with(name + "=")) return variable.substr(name.size() + 1);
  return {};
}

// The text in quotes after a property's name, of several the one at that place.
std::string quotedIn(const std::string& properties, const std::string& name, int place) {
  const std::size_t line = properties.find(name + "(");
  if (line == std::string::npos) return {};
  std::size_t at = line;
  const std::size_t end = properties.find('\n', line);
  for (int quote = 0; quote <= 2 * place; ++quote) {
    at = properties.find('"', at + 1);
    if (at == std::string::npos || at > end) return {};
  }
  return properties.substr(at + 1, properties.find('"', at + 1) - at - 1);
}

class Anonymous {
 public:
  explicit Anonymous(Stage& stage)
      : m_home(stage.desktop().home()), m_folder(stage.desktop().folder().path()), m_homeInNames(m_home) {
    std::replace(m_homeInNames.begin(), m_homeInNames.end(), '/', '_');
    m_homeInNames.erase(0, 1);
  }
  std::string operator()(std::string text) const {
    replace(text, m_home, "/home/person");
    replace(text, m_folder, "/run/session");
    replace(text, m_homeInNames, "home_person"); // as a browser calls the windows of a page
    return text;
  }

 private:
  static void replace(std::string& text, const std::string& what, const std::string& with) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
      text.replace(at, what.size(), with);
  }
  std::string m_home;
  std::string m_folder;
  std::string m_homeInNames;
};

// Of those arguments that are files, seen from where the process stands, where they really are.
Json::Object filesAmong(const std::vector<std::string>& arguments, const std::string& folder,
                        const Anonymous& anonymous) {
  Json::Object files;
  for (std::size_t at = 1; at < arguments.size(); ++at) {
    std::error_code error;
    const fs::path file = fs::path(folder) / arguments[at];
    if (arguments[at].empty() || !fs::is_regular_file(file, error)) continue;
    files.emplace_back(anonymous(arguments[at]), anonymous(fs::canonical(file, error).string()));
  }
  return files;
}

// Where the command that was typed is, if that is what runs: of a program that hides its file.
std::string programOf(const std::vector<std::string>& arguments, const std::string& name) {
  constexpr std::size_t longestName = 15;
  if (arguments.empty()) return {};
  const fs::path command = arguments.front();
  if (command.filename().string().substr(0, longestName) != name) return {};
  for (const char* folder : {"", "/usr/local/bin", "/usr/bin", "/bin", "/usr/games"}) {
    std::error_code error;
    const fs::path file = fs::canonical(folder / command, error);
    if (!error && (command.is_absolute() || *folder != '\0')) return file.string();
  }
  return {};
}

// As the program itself reads them, which has tests of its own.
Json entriesIn(const std::string& folder, const std::function<std::string(std::string)>& anonymous) {
  Json::Array all;
  DesktopEntries read({folder});
  desktop::waitUntil([&] { return !read.all().empty(); });
  for (const DesktopEntry& entry : read.all()) {
    Json::Array arguments;
    for (const std::string& argument : entry.arguments) arguments.emplace_back(anonymous(argument));
    all.emplace_back(Json::Object{{"id", entry.id},
                                  {"path", anonymous(entry.path)},
                                  {"name", entry.name},
                                  {"icon", anonymous(entry.icon)},
                                  {"class", anonymous(entry.windowClass)},
                                  {"category", entry.category},
                                  {"executable", anonymous(entry.executable)},
                                  {"realPath", anonymous(entry.realPath)},
                                  {"arguments", std::move(arguments)},
                                  {"isScript", entry.isScript},
                                  {"isHidden", entry.isHidden}});
  }
  return all;
}

} // namespace

Json evidenceOf(Stage& stage, std::uint32_t window, Pid owner, const std::set<Pid>& processes) {
  const Anonymous anonymous(stage);
  std::map<Pid, std::int64_t> numbers;
  const auto numberOf = [&](Pid pid) {
    const auto found = numbers.find(pid);
    return found == numbers.end() ? std::int64_t(0) : found->second;
  };
  for (const Pid pid : processes) numbers.emplace(pid, static_cast<std::int64_t>(numbers.size()) + 1);

  // 0 for what was there before it, -1 for nobody any more: an orphan is this process's.
  const auto relative = [&](Pid pid) {
    const std::int64_t number = numberOf(pid);
    return number == 0 && (pid == ::getpid() || !desktop::isAlive(pid)) ? std::int64_t(-1) : number;
  };
  unsigned long long first = ~0ULL; // ticks
  for (const Pid pid : processes)
    if (const auto state = test::processState(pid)) first = std::min(first, state->start);

  const std::string properties = stage.outputOf(
      {"xprop", "-id", std::to_string(window), "WM_CLASS", "_GTK_APPLICATION_ID", "_NET_WM_WINDOW_TYPE"});
  Json::Object claims{{"instance", anonymous(quotedIn(properties, "WM_CLASS", 0))},
                      {"class", quotedIn(properties, "WM_CLASS", 1)},
                      {"applicationId", quotedIn(properties, "_GTK_APPLICATION_ID", 0)},
                      {"process", numberOf(owner)}};

  Json::Array all;
  for (const Pid pid : processes) {
    const auto state = test::processState(pid);
    if (!state || !state->isAlive()) continue;
    const std::vector<std::string> arguments = texts(pid, "cmdline");
    const std::string folder = target(pid, "cwd");
    Json::Object process{{"number", numberOf(pid)},
                         {"parent", relative(state->parent)},
                         {"session", relative(state->session)},
                         {"age", static_cast<std::int64_t>(state->start - first)},
                         {"name", state->name},
                         {"executable", anonymous(target(pid, "exe"))}};
    if (pid == owner) {
      Json::Array words;
      for (const std::string& argument : arguments) words.emplace_back(anonymous(argument));
      process.emplace_back("arguments", std::move(words));
      process.emplace_back("started", anonymous(programOf(arguments, state->name)));
      const std::vector<std::string> environment = texts(pid, "environ");
      process.emplace_back("folder", anonymous(folder));
      process.emplace_back("files", filesAmong(arguments, folder, anonymous));
      const bool isLaunched = valueOf(environment, "GIO_LAUNCHED_DESKTOP_FILE_PID") == std::to_string(pid);
      process.emplace_back("launchedFile",
                           isLaunched ? anonymous(valueOf(environment, "GIO_LAUNCHED_DESKTOP_FILE")) : "");
      process.emplace_back("image", anonymous(valueOf(environment, "APPIMAGE")));
    }
    all.emplace_back(std::move(process));
  }
  return Json::Object{{"window", std::move(claims)},
                      {"processes", std::move(all)},
                      {"entries", entriesIn(stage.desktop().dataHome(), anonymous)}};
}

Json installedEntries() {
  return entriesIn("/usr/share", [](const std::string& text) { return text; });
}

std::string keyOf(const std::string& desktopFile, const std::string& key) {
  std::ifstream file(desktopFile);
  bool isMain = false;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('[')) isMain = line == "[Desktop Entry]";
    if (isMain && line.starts_with(key + "=")) return line.substr(key.size() + 1);
  }
  return {};
}

bool hasPicture(const std::string& icon) {
  if (icon.empty()) return false;
  if (icon.starts_with('/')) return fs::exists(icon);
  const auto isIt = [&](const fs::path& file) {
    const std::string ending = file.extension().string();
    return file.filename() == icon ||
           (file.stem() == icon && (ending == ".png" || ending == ".svg" || ending == ".xpm"));
  };
  for (const char* folder : {"/usr/share/pixmaps", "/usr/share/icons"}) {
    std::error_code error;
    for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
      if (isIt(entry->path())) return true;
  }
  return false;
}

} // namespace vantle::realapps
