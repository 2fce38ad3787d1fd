// SPDX-License-Identifier: MIT
#include "tests/support/XWindows.h"

#include "tests/support/X11Messages.h"

#include <cstdlib>
#include <stdexcept>
#include <xcb/res.h>
#include <xcb/xcb.h>

namespace vantle::desktop {

namespace {

template <class Reply> struct Freed {
  explicit Freed(Reply* reply) : value(reply) {}
  ~Freed() { std::free(value); }
  Freed(const Freed&) = delete;
  Freed& operator=(const Freed&) = delete;
  Reply* operator->() const { return value; }
  explicit operator bool() const { return value != nullptr; }
  Reply* value;
};

} // namespace

XWindows::XWindows(const std::string& display) {
  int screen = 0;
  m_connection = xcb_connect(display.c_str(), &screen);
  if (xcb_connection_has_error(m_connection) != 0) {
    xcb_disconnect(m_connection);
    throw std::runtime_error("no answer from display " + display);
  }
  m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
}

XWindows::~XWindows() { xcb_disconnect(m_connection); }

std::uint32_t XWindows::atom(const char* name) { return internAtom(m_connection, name); }

std::vector<std::uint32_t> XWindows::property(std::uint32_t window, const char* name) {
  const auto cookie = xcb_get_property(m_connection, 0, window, atom(name), XCB_ATOM_ANY, 0, 100'000);
  const Freed reply(xcb_get_property_reply(m_connection, cookie, nullptr));
  if (!reply || reply->format != 32) return {};
  const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.value));
  return {values, values + reply->value_len};
}

std::uint32_t XWindows::pixel(int x, int y) {
  const auto cookie = xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root,
                                    static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 1, 1, ~0U);
  const Freed reply(xcb_get_image_reply(m_connection, cookie, nullptr));
  if (!reply) throw std::runtime_error("the screen cannot be read");
  const std::uint8_t* bytes = xcb_get_image_data(reply.value);
  return static_cast<std::uint32_t>(bytes[2] << 16 | bytes[1] << 8 | bytes[0]);
}

Pid XWindows::pidOf(std::uint32_t window) {
  const xcb_res_client_id_spec_t spec{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
  const auto cookie = xcb_res_query_client_ids(m_connection, 1, &spec);
  const Freed reply(xcb_res_query_client_ids_reply(m_connection, cookie, nullptr));
  if (!reply) return 0;
  for (auto ids = xcb_res_query_client_ids_ids_iterator(reply.value); ids.rem > 0;
       xcb_res_client_id_value_next(&ids)) {
    if (xcb_res_client_id_value_value_length(ids.data) > 0) {
      return static_cast<Pid>(*xcb_res_client_id_value_value(ids.data));
    }
  }
  return 0;
}

std::vector<XWindows::Window> XWindows::list() {
  std::vector<Window> windows;
  for (const std::uint32_t id : property(m_root, "_NET_CLIENT_LIST")) {
    const auto cookie = xcb_get_property(m_connection, 0, id, XCB_ATOM_WM_NAME, XCB_ATOM_ANY, 0, 10'000);
    const Freed reply(xcb_get_property_reply(m_connection, cookie, nullptr));
    Window window{id, pidOf(id), {}};
    if (reply) {
      const auto* text = static_cast<const char*>(xcb_get_property_value(reply.value));
      window.title.assign(text, static_cast<std::size_t>(xcb_get_property_value_length(reply.value)));
    }
    windows.push_back(std::move(window));
  }
  return windows;
}

std::vector<XWindows::Window> XWindows::ofProcess(Pid pid) {
  std::vector<Window> windows = list();
  std::erase_if(windows, [pid](const Window& window) { return window.pid != pid; });
  return windows;
}

std::uint32_t XWindows::active() {
  const std::vector<std::uint32_t> values = property(m_root, "_NET_ACTIVE_WINDOW");
  return values.empty() ? 0 : values.front();
}

std::vector<std::string> XWindows::states(std::uint32_t window) {
  std::vector<std::string> names;
  for (const xcb_atom_t state : property(window, "_NET_WM_STATE")) {
    const Freed reply(xcb_get_atom_name_reply(m_connection, xcb_get_atom_name(m_connection, state), nullptr));
    if (!reply) continue;
    const auto length = static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.value));
    names.emplace_back(xcb_get_atom_name_name(reply.value), length);
  }
  return names;
}

std::string XWindows::classOf(std::uint32_t window) {
  const auto cookie =
      xcb_get_property(m_connection, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 10'000);
  const Freed reply(xcb_get_property_reply(m_connection, cookie, nullptr));
  if (!reply) return {};
  const std::string both(static_cast<const char*>(xcb_get_property_value(reply.value)),
                         static_cast<std::size_t>(xcb_get_property_value_length(reply.value)));
  const std::size_t end = both.find('\0');
  return end == std::string::npos ? std::string() : both.substr(end + 1).c_str();
}

std::vector<int> XWindows::iconSides(std::uint32_t window) {
  const std::vector<std::uint32_t> values = property(window, "_NET_WM_ICON");
  std::vector<int> sides;
  for (std::size_t at = 0; at + 2 < values.size(); at += 2 + std::size_t{values[at]} * values[at + 1])
    sides.push_back(static_cast<int>(values[at]));
  return sides;
}

bool XWindows::hasWindowManager() {
  // One that starts owns its name before it reads events, and what arrives between can stay unread for long;
  // one that was killed leaves its name behind. So ask for something that only a living one answers.
  if (m_probe == 0) {
    m_probe = xcb_generate_id(m_connection);
    xcb_create_window(m_connection, 0, m_probe, m_root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, 0, 0,
                      nullptr);
  }
  if (!property(m_probe, "_NET_FRAME_EXTENTS").empty()) {
    xcb_destroy_window(m_connection, m_probe); // with the answers that may still come
    m_probe = 0;
    return true;
  }
  ask(m_probe, "_NET_REQUEST_FRAME_EXTENTS", 0);
  return false;
}

void XWindows::ask(std::uint32_t window, const char* message, std::uint32_t first) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = window;
  event.type = atom(message);
  event.data.data32[0] = first;
  xcb_send_event(m_connection, 0, m_root,
                 XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                 reinterpret_cast<const char*>(&event));
  xcb_flush(m_connection);
}

void XWindows::activate(std::uint32_t window) {
  constexpr std::uint32_t fromPager = 2;
  ask(window, "_NET_ACTIVE_WINDOW", fromPager);
}

void XWindows::minimise(std::uint32_t window) {
  constexpr std::uint32_t iconic = 3;
  ask(window, "WM_CHANGE_STATE", iconic);
}

} // namespace vantle::desktop
