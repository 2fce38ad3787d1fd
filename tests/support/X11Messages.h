// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <xcb/xcb.h>

namespace vantle::desktop {

// 0 when the server does not answer.
inline xcb_atom_t internAtom(xcb_connection_t* connection, std::string_view name) {
  const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
  xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(connection, cookie, nullptr);
  const xcb_atom_t atom = reply == nullptr ? 0 : reply->atom;
  std::free(reply);
  return atom;
}

// Says that the window has become the tray of the first screen.
inline xcb_client_message_event_t trayAnnouncement(xcb_connection_t* connection, xcb_window_t root,
                                                   xcb_window_t tray) {
  xcb_client_message_event_t message{};
  message.response_type = XCB_CLIENT_MESSAGE;
  message.format = 32;
  message.window = root;
  message.type = internAtom(connection, "MANAGER");
  message.data.data32[1] = internAtom(connection, "_NET_SYSTEM_TRAY_S0");
  message.data.data32[2] = tray;
  return message;
}

inline void sendToRoot(xcb_connection_t* connection, const xcb_client_message_event_t& message) {
  xcb_send_event(connection, 0, message.window, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                 reinterpret_cast<const char*>(&message));
}

// Waits until the server has taken everything sent so far.
inline void settle(xcb_connection_t* connection) {
  std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

} // namespace vantle::desktop
