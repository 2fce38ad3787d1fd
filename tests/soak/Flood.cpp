// SPDX-License-Identifier: MIT
#include "tests/soak/Flood.h"

#include "tests/support/X11Messages.h"

#include <stdexcept>
#include <xcb/xcb.h>

namespace vantle::soak {

Flood::Flood(const std::string& display) : m_connection(xcb_connect(display.c_str(), nullptr)) {
  if (xcb_connection_has_error(m_connection) != 0) {
    xcb_disconnect(m_connection);
    throw std::runtime_error("no answer from display " + display);
  }
  m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
}

Flood::~Flood() { xcb_disconnect(m_connection); }

void Flood::changeProperties(int count) {
  const std::uint32_t name = desktop::internAtom(m_connection, "_SOAK");
  for (int at = 0; at < count; ++at) {
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_root, name, XCB_ATOM_CARDINAL, 32, 1, &at);
  }
  desktop::settle(m_connection);
}

void Flood::claimFront(std::uint32_t first, std::uint32_t second, int count) {
  const std::uint32_t name = desktop::internAtom(m_connection, "_NET_ACTIVE_WINDOW");
  for (int at = count; at >= 0; --at) {
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_root, name, XCB_ATOM_WINDOW, 32, 1,
                        at % 2 == 0 ? &first : &second);
  }
  desktop::settle(m_connection);
}

void Flood::announceTrays(int count) {
  const auto message = desktop::trayAnnouncement(m_connection, m_root, m_root);
  for (int at = 0; at < count; ++at) desktop::sendToRoot(m_connection, message);
  desktop::settle(m_connection);
}

} // namespace vantle::soak
