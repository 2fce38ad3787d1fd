// SPDX-License-Identifier: MIT
#include "tests/support/VirtualDesktop.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

namespace vantle::desktop {

namespace fs = std::filesystem;

namespace {

class Pipe {
 public:
  Pipe() {
    if (::pipe2(m_ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  }
  ~Pipe() {
    ::close(m_ends[0]);
    closeWriter();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  int reader() const { return m_ends[0]; }
  int writer() const { return m_ends[1]; }
  // So that the end of the one other writer is noticed.
  void closeWriter() {
    if (m_ends[1] >= 0) ::close(m_ends[1]);
    m_ends[1] = -1;
  }

 private:
  std::array<int, 2> m_ends{-1, -1};
};

Environment environmentOf(const VirtualDesktop::Options& options) {
  Environment environment = options.environment;
  environment.emplace("XDG_SESSION_TYPE", "x11");
  return environment;
}

} // namespace

VirtualDesktop::VirtualDesktop(const Options& options)
    : PrivateSession(options.user, environmentOf(options)) {
  startXServer(options.screen);
  if (options.sessionBus) startSessionBus();
  m_windows = std::make_unique<XWindows>(m_display);
  if (options.windowManager) startWindowManager();
}

std::string VirtualDesktop::readLine(int descriptor, const char* what) {
  std::string line;
  pollfd waiting{descriptor, POLLIN, 0};
  const int limit = static_cast<int>(std::chrono::milliseconds(guardLimit).count());
  while (::poll(&waiting, 1, limit) == 1) {
    char letter = 0;
    if (::read(descriptor, &letter, 1) != 1) break;
    if (letter == '\n') return line;
    line += letter;
  }
  throw std::runtime_error(std::string(what) + " did not come up");
}

void VirtualDesktop::startXServer(const std::string& screen) {
  Pipe pipe;
  Start start = startOf({"Xvfb", "-displayfd", std::to_string(pipe.writer()), "-screen", "0", screen,
                         "-nolisten", "tcp", "-noreset", "-ac", "+extension", "GLX"},
                        {});
  start.keptDescriptors = {pipe.writer()};
  m_xServer = &started(start);
  pipe.closeWriter();
  m_display = ":" + readLine(pipe.reader(), "the X server");
  setEnvironment("DISPLAY", m_display);
}

Program& VirtualDesktop::startWindowManager() {
  m_windowManager = &launch({"openbox", "--sm-disable"});
  require("the window manager", [this] { return m_windows->hasWindowManager(); });
  return *m_windowManager;
}

XWindows::Window VirtualDesktop::waitForWindow(Pid pid) {
  std::vector<XWindows::Window> found;
  require("a window", [&] { return !(found = m_windows->ofProcess(pid)).empty(); });
  return found.front();
}

XWindows::Window VirtualDesktop::waitForWindowTitled(const std::string& title) {
  XWindows::Window found;
  require(title.c_str(), [&] {
    for (const XWindows::Window& window : m_windows->list()) {
      if (window.title != title) continue;
      found = window;
      return true;
    }
    return false;
  });
  return found;
}

void VirtualDesktop::activate(std::uint32_t window) {
  // Somebody else may ask for the front at the same moment and win it; whoever wants it asks again.
  require("a window in front", [&] {
    m_windows->activate(window);
    return waitUntil([&] { return m_windows->active() == window; }, std::chrono::seconds(1));
  });
}

bool VirtualDesktop::screenshot(const fs::path& png) {
  return takePicture({"import", "-silent", "-window", "root"}, png);
}

} // namespace vantle::desktop
