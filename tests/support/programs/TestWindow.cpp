// SPDX-License-Identifier: MIT
// A tiny X11 client for tests: a window that behaves as the arguments say.
//
//   --title TEXT        WM_NAME and _NET_WM_NAME, byte for byte
//   --class NAME        WM_CLASS (instance and class)
//   --next-class NAME   WM_CLASS of the windows that SIGUSR2 opens, and of all after SIGURG
//   --raw-class BYTES   WM_CLASS as it stands, without its zero bytes
//   --claim-pid N       _NET_WM_PID, true or not
//   --app-id ID         _GTK_APPLICATION_ID
//   --type NAME         _NET_WM_WINDOW_TYPE_NAME, e.g. DOCK
//   --override          an override-redirect window, as menus are
//   --background        asks not to come to the front when it opens
//   --windows N         so many windows (0: only a connection to the display)
//   --ignore-close      stays when it is asked to close
//   --outlive-display   stays when the X server goes away
//   --burn              keeps one processor busy
//   --children N        N child processes, busy with --burn
//   --threads N         N more threads, busy with --burn
//
// SIGUSR1 forks one more child, SIGUSR2 opens one more window, SIGWINCH destroys the newest; SIGURG renames
// them all, and SIGIO gives the newest a hundred titles. Without --title, --class and --claim-pid the window
// carries no property at all but the protocol of closing. Ends when a window is closed politely.
#include "tests/support/X11Messages.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <thread>
#include <unistd.h>
#include <vector>
#include <xcb/xcb.h>

namespace {

struct Options {
  std::optional<std::string> title;
  std::optional<std::string> windowClass;
  std::optional<std::string> nextClass;
  std::optional<std::uint32_t> claimedPid;
  std::optional<std::string> appId;
  std::optional<std::string> type;
  bool overrideRedirect = false;
  bool ignoreClose = false;
  bool background = false;
  bool outliveDisplay = false;
  bool burn = false;
  int windows = 1;
  int children = 0;
  int threads = 0;
};

// Instance and class, each with a zero behind it.
std::string bothParts(std::string name) {
  name += '\0';
  return name + name;
}

std::optional<Options> parse(const std::vector<std::string>& arguments) {
  Options options;
  for (std::size_t at = 0; at < arguments.size(); ++at) {
    const std::string& name = arguments[at];
    const auto value = [&] { return ++at < arguments.size() ? arguments[at] : std::string(); };
    if (name == "--title") {
      options.title = value();
    } else if (name == "--class") {
      options.windowClass = bothParts(value());
    } else if (name == "--next-class") {
      options.nextClass = bothParts(value());
    } else if (name == "--raw-class") {
      options.windowClass = value();
    } else if (name == "--claim-pid") {
      options.claimedPid = static_cast<std::uint32_t>(std::stoul(value()));
    } else if (name == "--app-id") {
      options.appId = value();
    } else if (name == "--type") {
      options.type = value();
    } else if (name == "--override") {
      options.overrideRedirect = true;
    } else if (name == "--ignore-close") {
      options.ignoreClose = true;
    } else if (name == "--background") {
      options.background = true;
    } else if (name == "--outlive-display") {
      options.outliveDisplay = true;
    } else if (name == "--burn") {
      options.burn = true;
    } else if (name == "--windows") {
      options.windows = std::stoi(value());
    } else if (name == "--children") {
      options.children = std::stoi(value());
    } else if (name == "--threads") {
      options.threads = std::stoi(value());
    } else {
      std::cerr << "unknown argument: " << name << '\n';
      return {};
    }
  }
  return options;
}

[[noreturn]] void spend(bool burn) {
  std::atomic<std::uint64_t> work = 0;
  for (;;) {
    if (burn) {
      ++work;
    } else {
      ::pause();
    }
  }
}

class TestWindow {
 public:
  explicit TestWindow(Options options) : m_options(std::move(options)) {
    sigset_t watched;
    ::sigemptyset(&watched);
    ::sigaddset(&watched, SIGUSR1);
    ::sigaddset(&watched, SIGUSR2);
    ::sigaddset(&watched, SIGWINCH);
    ::sigaddset(&watched, SIGURG);
    ::sigaddset(&watched, SIGIO);
    ::sigprocmask(SIG_BLOCK, &watched, nullptr);
    m_signals = ::signalfd(-1, &watched, SFD_CLOEXEC);
  }

  int run() {
    for (int count = 0; count < m_options.children; ++count) forkChild();
    m_connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(m_connection) != 0) return 3;
    m_protocols = atom("WM_PROTOCOLS");
    m_delete = atom("WM_DELETE_WINDOW");
    for (int count = 0; count < m_options.windows; ++count) openWindow();
    for (int count = 0; count < m_options.threads; ++count) {
      std::thread([burn = m_options.burn] { spend(burn); }).detach();
    }
    if (m_options.burn) std::thread([] { spend(true); }).detach();
    return serve();
  }

 private:
  xcb_atom_t atom(std::string_view name) { return vantle::desktop::internAtom(m_connection, name); }

  void setText(xcb_window_t window, xcb_atom_t name, xcb_atom_t type, const std::string& bytes) {
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, window, name, type, 8,
                        static_cast<std::uint32_t>(bytes.size()), bytes.data());
  }

  void setNumber(xcb_window_t window, xcb_atom_t name, xcb_atom_t type, std::uint32_t value) {
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, window, name, type, 32, 1, &value);
  }

  void openWindow() {
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    const xcb_window_t window = xcb_generate_id(m_connection);
    const std::uint32_t values[] = {screen->white_pixel, m_options.overrideRedirect ? 1U : 0U};
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, screen->root, 10, 10, 200, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    setNumber(window, m_protocols, XCB_ATOM_ATOM, m_delete);
    if (m_options.title) {
      setText(window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, *m_options.title);
      setText(window, atom("_NET_WM_NAME"), atom("UTF8_STRING"), *m_options.title);
    }
    if (m_options.windowClass) setText(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, *m_options.windowClass);
    if (m_options.appId) setText(window, atom("_GTK_APPLICATION_ID"), atom("UTF8_STRING"), *m_options.appId);
    if (m_options.claimedPid)
      setNumber(window, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, *m_options.claimedPid);
    if (m_options.type) {
      setNumber(window, atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM,
                atom("_NET_WM_WINDOW_TYPE_" + *m_options.type));
    }
    if (m_options.background) setNumber(window, atom("_NET_WM_USER_TIME"), XCB_ATOM_CARDINAL, 0);
    xcb_map_window(m_connection, window);
    xcb_flush(m_connection);
    m_windows.push_back(window);
  }

  void destroyWindow() {
    if (m_windows.empty()) return;
    xcb_destroy_window(m_connection, m_windows.back());
    xcb_flush(m_connection);
    m_windows.pop_back();
  }

  void renameWindows() {
    m_options.windowClass = m_options.nextClass;
    for (const xcb_window_t window : m_windows)
      setText(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, m_options.windowClass.value_or(""));
    xcb_flush(m_connection);
  }

  void changeTitles() {
    if (m_windows.empty()) return;
    for (int count = 1; count <= 100; ++count)
      setText(m_windows.back(), XCB_ATOM_WM_NAME, XCB_ATOM_STRING, std::to_string(count));
    xcb_flush(m_connection);
  }

  void forkChild() const {
    if (::fork() != 0) return;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    spend(m_options.burn);
  }

  bool isCloseRequest(const xcb_generic_event_t& event) const {
    if ((event.response_type & 0x7f) != XCB_CLIENT_MESSAGE) return false;
    const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
    return message.type == m_protocols && message.data.data32[0] == m_delete;
  }

  int serve() {
    pollfd ready[] = {{xcb_get_file_descriptor(m_connection), POLLIN, 0}, {m_signals, POLLIN, 0}};
    for (;;) {
      while (xcb_generic_event_t* event = xcb_poll_for_event(m_connection)) {
        const bool close = isCloseRequest(*event);
        std::free(event);
        if (close && !m_options.ignoreClose) return 0;
      }
      if (xcb_connection_has_error(m_connection) != 0) {
        if (m_options.outliveDisplay) spend(false);
        return 4;
      }
      if (::poll(ready, 2, -1) < 0 && errno != EINTR) return 5;
      signalfd_siginfo arrived{};
      if (ready[1].revents == 0 || ::read(m_signals, &arrived, sizeof arrived) != sizeof arrived) continue;
      if (arrived.ssi_signo == SIGUSR1) forkChild();
      if (arrived.ssi_signo == SIGUSR2) {
        if (m_options.nextClass) m_options.windowClass = m_options.nextClass;
        openWindow();
      }
      if (arrived.ssi_signo == SIGWINCH) destroyWindow();
      if (arrived.ssi_signo == SIGURG) renameWindows();
      if (arrived.ssi_signo == SIGIO) changeTitles();
    }
  }

  Options m_options;
  int m_signals = -1;
  xcb_connection_t* m_connection = nullptr;
  std::vector<xcb_window_t> m_windows;
  xcb_atom_t m_protocols = 0;
  xcb_atom_t m_delete = 0;
};

} // namespace

int main(int argc, char** argv) {
  const std::optional<Options> options = parse({argv + 1, argv + argc});
  return options ? TestWindow(*options).run() : 2;
}
