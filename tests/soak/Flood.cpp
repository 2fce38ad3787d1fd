// SPDX-License-Identifier: MIT
#include "tests/soak/Flood.h"

#include <cstdlib>
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

std::uint32_t Flood::atom(const std::string& name) {
  const auto cookie = xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
  xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(m_connection, cookie, nullptr);
  const std::uint32_t found = reply == nullptr ? 0 : reply->atom;
  std::free(reply);
  return found;
}

void Flood::settle() {
  std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

void Flood::changeProperties(int count) {
  const std::uint32_t name = atom("_SOAK");
  for (int at = 0; at < count; ++at) {
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_root, name, XCB_ATOM_CARDINAL, 32, 1, &at);
  }
  settle();
}

void Flood::claimFront(std::uint32_t first, std::uint32_t second, int count) {
  const std::uint32_t name = atom("_NET_ACTIVE_WINDOW");
  for (int at = count; at >= 0; --at) {
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_root, name, XCB_ATOM_WINDOW, 32, 1,
                        at % 2 == 0 ? &first : &second);
  }
  settle();
}

void Flood::announceTrays(int count) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = m_root;
  event.type = atom("MANAGER");
  event.data.data32[1] = atom("_NET_SYSTEM_TRAY_S0");
  event.data.data32[2] = m_root;
  for (int at = 0; at < count; ++at) {
    xcb_send_event(m_connection, 0, m_root, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&event));
  }
  settle();
}

} // namespace vantle::soak
