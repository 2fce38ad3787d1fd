// SPDX-License-Identifier: MIT
// Sends one thing without end, as fast as it is taken, until it is killed. The argument says what:
//
//   manager    announcements of a tray on the X server
//   list       changes of the list of windows on the X server
//   activate   calls that open the panel on the session bus
//   click      clicks on the icon of the process that is named after it, on the session bus
#include "tests/support/X11Messages.h"

#include <cstdlib>
#include <iostream>
#include <string>
#include <systemd/sd-bus.h>
#include <xcb/xcb.h>

namespace {

class Display {
 public:
  Display() : m_connection(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(m_connection) == 0)
      m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
  }

  [[noreturn]] void announceTrays() {
    const auto message = vantle::desktop::trayAnnouncement(m_connection, m_root, XCB_WINDOW_NONE);
    repeat([&] { vantle::desktop::sendToRoot(m_connection, message); });
  }

  // Adds nothing to it, which is a change all the same.
  [[noreturn]] void changeWindowList() {
    const xcb_atom_t list = vantle::desktop::internAtom(m_connection, "_NET_CLIENT_LIST");
    repeat([&] {
      xcb_change_property(m_connection, XCB_PROP_MODE_APPEND, m_root, list, XCB_ATOM_WINDOW, 32, 0, nullptr);
    });
  }

 private:
  // A hundred at a time, and then as long as the server takes for them.
  template <class Send> [[noreturn]] void repeat(const Send& send) {
    while (xcb_connection_has_error(m_connection) == 0) {
      for (int count = 0; count < 100; ++count) send();
      vantle::desktop::settle(m_connection);
    }
    std::exit(1);
  }

  xcb_connection_t* m_connection;
  xcb_window_t m_root = 0;
};

template <class Append> [[noreturn]] void call(const std::string& service, const char* path,
                                               const char* interface, const char* member,
                                               const Append& append) {
  sd_bus* bus = nullptr;
  int status = sd_bus_open_user(&bus);
  while (status >= 0) {
    sd_bus_message* message = nullptr;
    status = sd_bus_message_new_method_call(bus, &message, service.c_str(), path, interface, member);
    if (status >= 0) status = append(message);
    if (status >= 0) status = sd_bus_message_set_expect_reply(message, 0);
    if (status >= 0) status = sd_bus_send(bus, message, nullptr);
    if (status >= 0) status = sd_bus_flush(bus);
    sd_bus_message_unref(message);
  }
  std::cerr << "the bus says " << status << '\n';
  std::exit(1);
}

} // namespace

int main(int argc, char** argv) {
  const std::string what = argc > 1 ? argv[1] : "";
  if (what == "manager") Display().announceTrays();
  if (what == "list") Display().changeWindowList();
  if (what == "activate") {
    call("com.halvo.vantle", "/com/halvo/vantle", "org.freedesktop.Application", "Activate",
         [](sd_bus_message* message) { return sd_bus_message_append(message, "a{sv}", 0); });
  }
  if (what == "click" && argc > 2) {
    call("org.kde.StatusNotifierItem-" + std::string(argv[2]) + "-1", "/StatusNotifierItem",
         "org.kde.StatusNotifierItem", "Activate",
         [](sd_bus_message* message) { return sd_bus_message_append(message, "ii", 10, 10); });
  }
  return 2;
}
