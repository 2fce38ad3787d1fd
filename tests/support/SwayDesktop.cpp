// SPDX-License-Identifier: MIT
#include "tests/support/SwayDesktop.h"

#include "tests/support/NamedSocket.h"
#include "tests/support/Props.h"
#include "tests/support/User.h"
#include "tests/support/WlrootsStart.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace vantle::desktop {

namespace fs = std::filesystem;

namespace {

// Of the protocol that sway shares with i3.
constexpr std::string_view magic = "i3-ipc";
constexpr std::uint32_t runCommand = 0;
constexpr std::uint32_t getTree = 4;
struct Header {
  std::array<char, 6> magic;
  std::uint32_t length;
  std::uint32_t type;
} __attribute__((packed));

std::optional<uid_t> ownerOf(const SwayDesktop::Options& options) {
  if (options.user || !test::runsAsRoot()) return options.user;
  return test::nobody;
}

Environment environmentOf(const SwayDesktop::Options& options) {
  Environment environment = options.environment;
  environment.emplace("XDG_SESSION_TYPE", "wayland");
  environment.emplace("XDG_CURRENT_DESKTOP", "sway");
  return environment;
}

void readAll(int descriptor, void* target, std::size_t size) {
  for (std::size_t at = 0; at < size;) {
    const ssize_t count = ::read(descriptor, static_cast<char*>(target) + at, size - at);
    if (count <= 0) throw std::runtime_error("sway does not answer");
    at += static_cast<std::size_t>(count);
  }
}

std::string text(const nlohmann::json& object, const char* key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

SwayDesktop::Window windowOf(const nlohmann::json& node) {
  SwayDesktop::Window window;
  window.id = node.value("id", std::uint64_t{0});
  window.pid = node.value("pid", Pid{0});
  window.title = text(node, "name");
  window.applicationId = text(node, "app_id");
  window.isFocused = node.value("focused", false);
  window.isX11 = text(node, "shell") == "xwayland";
  if (node.contains("window_properties")) window.windowClass = text(node["window_properties"], "class");
  return window;
}

void collect(const nlohmann::json& node, std::vector<SwayDesktop::Window>& windows) {
  if (node.contains("shell")) windows.push_back(windowOf(node));
  for (const char* children : {"nodes", "floating_nodes"}) {
    if (!node.contains(children)) continue;
    for (const nlohmann::json& child : node[children]) collect(child, windows);
  }
}

} // namespace

SwayDesktop::SwayDesktop(const Options& options)
    : PrivateSession(ownerOf(options), environmentOf(options)), m_screen(options.screen),
      m_screens(options.screens) {
  startSessionBus();
  m_compositor = &startCompositor(options);
}

SwayDesktop::~SwayDesktop() {
  m_compositor->signal(SIGTERM);
  m_compositor->waitForEnd();
}

Program& SwayDesktop::startCompositor(const Options& options) {
  const auto command = [&](const std::string& line) {
    const fs::path configuration =
        folder().write("sway.config", "output * mode --custom " + options.screen + "\nexec " + line + "\n" +
                                          options.configuration + "\n");
    return std::vector<std::string>{"sway", "-c", configuration.string()};
  };
  return startWlroots(*this, command, {"WAYLAND_DISPLAY", "DISPLAY", "SWAYSOCK"}, options.screens);
}

uid_t SwayDesktop::user() const {
  struct stat status {};
  if (::stat(runtimeDir().c_str(), &status) != 0) throw std::runtime_error("no runtime folder");
  return status.st_uid;
}

std::string SwayDesktop::ask(std::uint32_t type, const std::string& payload) const {
  const int descriptor = connectedSocket(socket());
  if (descriptor < 0) throw std::runtime_error("sway cannot be reached");
  const auto closer = [](const int* number) { ::close(*number); };
  const std::unique_ptr<const int, decltype(closer)> owned(&descriptor, closer);
  Header header{{}, static_cast<std::uint32_t>(payload.size()), type};
  magic.copy(header.magic.data(), magic.size());
  std::string question(reinterpret_cast<const char*>(&header), sizeof header);
  question += payload;
  if (::write(descriptor, question.data(), question.size()) != static_cast<ssize_t>(question.size())) {
    throw std::runtime_error("sway takes no question");
  }
  readAll(descriptor, &header, sizeof header);
  std::string answer(header.length, '\0');
  readAll(descriptor, answer.data(), answer.size());
  return answer;
}

bool SwayDesktop::command(const std::string& text) {
  const nlohmann::json results = nlohmann::json::parse(ask(runCommand, text));
  return std::all_of(results.begin(), results.end(),
                     [](const nlohmann::json& result) { return result.value("success", false); });
}

std::vector<SwayDesktop::Window> SwayDesktop::windows() {
  std::vector<Window> found;
  collect(nlohmann::json::parse(ask(getTree, {})), found);
  return found;
}

std::vector<SwayDesktop::Window> SwayDesktop::ofProcess(Pid pid) {
  std::vector<Window> found = windows();
  std::erase_if(found, [pid](const Window& window) { return window.pid != pid; });
  return found;
}

SwayDesktop::Window SwayDesktop::waitForWindow(Pid pid) {
  std::vector<Window> found;
  require("a window", [&] { return !(found = ofProcess(pid)).empty(); });
  return found.front();
}

SwayDesktop::Window SwayDesktop::waitForWindowTitled(const std::string& title) {
  std::vector<Window> found;
  require(title.c_str(), [&] {
    found = windows();
    std::erase_if(found, [&](const Window& window) { return window.title != title; });
    return !found.empty();
  });
  return found.front();
}

void SwayDesktop::focus(std::uint64_t window) {
  // A window that opens meanwhile may take the front; whoever wants it asks again.
  require("a window in front", [&] {
    if (!command("[con_id=" + std::to_string(window) + "] focus")) return false;
    const std::vector<Window> all = windows();
    return std::any_of(all.begin(), all.end(),
                       [&](const Window& each) { return each.id == window && each.isFocused; });
  });
}

Picture SwayDesktop::picture(const std::string& part) {
  const fs::path file = folder().path() / "tmp/picture.ppm";
  std::vector<std::string> tool{"grim", "-t", "ppm"};
  if (!part.empty()) tool.insert(tool.end(), {"-g", part});
  tool.push_back(file.string());
  require("a picture", [&] { return run(tool); });
  return Picture(file);
}

void SwayDesktop::addPointer() {
  const fs::path input = folder().path() / "pointer.input";
  if (::mkfifo(input.c_str(), 0600) != 0 || ::chmod(input.c_str(), 0666) != 0) {
    throw std::runtime_error("no way to the pointer");
  }
  const std::size_t cross = m_screen.find('x');
  const int width = m_screens * std::stoi(m_screen.substr(0, cross));
  launch({"sh", "-c", R"(exec "$0" "$1" "$2" <>"$3" >"$4")", virtualPointer(), std::to_string(width),
          m_screen.substr(cross + 1), input.string(), (folder().path() / "tmp/clicks").string()});
}

long SwayDesktop::clicks() const {
  std::ifstream log(folder().path() / "tmp/clicks");
  return std::count(std::istreambuf_iterator<char>(log), {}, '\n');
}

void SwayDesktop::click(int x, int y) {
  const long before = clicks();
  std::ofstream(folder().path() / "pointer.input") << x << ' ' << y << std::endl;
  require("a click", [&] { return clicks() > before; });
}

bool SwayDesktop::screenshot(const fs::path& png) { return takePicture({"grim"}, png); }

} // namespace vantle::desktop
