// SPDX-License-Identifier: MIT
#include "panel/tray/XEmbedIcon.h"

#include "base/Names.h"

#include <QElapsedTimer>
#include <QPainter>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

namespace vantle {
namespace {

// Values of the two protocols.
constexpr std::uint32_t requestDock = 0;
constexpr std::uint32_t xembedVersion = 0;
constexpr std::uint32_t xembedMapped = 1;

constexpr std::chrono::milliseconds shortestDockPause{500};
constexpr int longestTurn = 10; // milliseconds
constexpr int firstSize = 22;   // pixels; the tray then says what it wants
constexpr int largest = 256;
constexpr std::uint8_t argbDepth = 32;

template <class Type> using Freed = std::unique_ptr<Type, decltype(&std::free)>;
template <class Type> Freed<Type> freed(Type* value) { return {value, &std::free}; }

} // namespace

XEmbedIcon::XEmbedIcon(std::function<void(QRect)> onActivate) : m_onActivate(std::move(onActivate)) {
  for (QTimer* timer : {&m_nextTurn, &m_dockPause}) timer->setSingleShot(true);
  QObject::connect(&m_nextTurn, &QTimer::timeout, &m_nextTurn, [this] { handleEvents(); });
  QObject::connect(&m_dockPause, &QTimer::timeout, &m_dockPause, [this] { act(); });
  connectToServer();
}

XEmbedIcon::~XEmbedIcon() {
  m_notifier.reset();
  if (m_connection != nullptr) xcb_disconnect(m_connection);
}

void XEmbedIcon::connectToServer() {
  int number = 0;
  m_connection = xcb_connect(nullptr, &number);
  if (xcb_connection_has_error(m_connection) != 0) return;
  xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
  for (int i = 0; i < number && screens.rem > 1; ++i) xcb_screen_next(&screens);
  m_screen = screens.data;
  m_atoms = {.selection = atom("_NET_SYSTEM_TRAY_S" + std::to_string(number)),
             .opcode = atom("_NET_SYSTEM_TRAY_OPCODE"),
             .visual = atom("_NET_SYSTEM_TRAY_VISUAL"),
             .info = atom("_XEMBED_INFO"),
             .manager = atom("MANAGER")};
  const std::uint32_t mask =
      XCB_EVENT_MASK_STRUCTURE_NOTIFY; // a new tray announces itself on the root window
  xcb_change_window_attributes(m_connection, m_screen->root, XCB_CW_EVENT_MASK, &mask);
  m_notifier =
      std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection), QSocketNotifier::Read);
  QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                   [this] { handleEvents(); });
  dock();
}

xcb_atom_t XEmbedIcon::atom(const std::string& name) {
  const auto cookie = xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
  const auto reply = freed(xcb_intern_atom_reply(m_connection, cookie, nullptr));
  return reply ? reply->atom : XCB_NONE;
}

void XEmbedIcon::dock() {
  m_isDockWanted = false;
  m_dockPause.start(shortestDockPause);
  removeWindow();
  const auto cookie = xcb_get_selection_owner(m_connection, m_atoms.selection);
  const auto owner = freed(xcb_get_selection_owner_reply(m_connection, cookie, nullptr));
  m_tray = owner ? owner->owner : XCB_NONE;
  if (m_tray == XCB_NONE) return;
  const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY; // its end
  xcb_change_window_attributes(m_connection, m_tray, XCB_CW_EVENT_MASK, &mask);
  makeWindow(trayVisual());

  xcb_client_message_event_t request{};
  request.response_type = XCB_CLIENT_MESSAGE;
  request.format = 32;
  request.window = m_tray;
  request.type = m_atoms.opcode;
  request.data.data32[0] = XCB_CURRENT_TIME;
  request.data.data32[1] = requestDock;
  request.data.data32[2] = m_window;
  xcb_send_event(m_connection, 0, m_tray, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&request));
  xcb_flush(m_connection);
}

// The visual that the tray wants; 0 for the parent's.
xcb_visualid_t XEmbedIcon::trayVisual() {
  const auto cookie = xcb_get_property(m_connection, 0, m_tray, m_atoms.visual, XCB_ATOM_VISUALID, 0, 1);
  const auto reply = freed(xcb_get_property_reply(m_connection, cookie, nullptr));
  if (!reply || reply->type != XCB_ATOM_VISUALID || reply->value_len != 1) return 0;
  xcb_visualid_t wanted = 0;
  std::memcpy(&wanted, xcb_get_property_value(reply.get()), sizeof wanted);
  for (auto depth = xcb_screen_allowed_depths_iterator(m_screen); depth.rem > 0; xcb_depth_next(&depth)) {
    if (depth.data->depth != argbDepth) continue;
    for (auto type = xcb_depth_visuals_iterator(depth.data); type.rem > 0; xcb_visualtype_next(&type)) {
      if (type.data->visual_id == wanted) return wanted;
    }
  }
  return 0;
}

void XEmbedIcon::makeWindow(xcb_visualid_t visual) {
  m_window = xcb_generate_id(m_connection);
  m_size = {firstSize, firstSize};
  const std::uint32_t events = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                               XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE;
  const auto create = [&](std::uint8_t depth, std::uint32_t mask, const std::uint32_t* values) {
    m_depth = depth;
    xcb_create_window(m_connection, depth, m_window, m_screen->root, 0, 0, firstSize, firstSize, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, visual != 0 ? visual : m_screen->root_visual, mask,
                      values);
  };
  if (visual != 0) {
    m_colormap = xcb_generate_id(m_connection);
    xcb_create_colormap(m_connection, XCB_COLORMAP_ALLOC_NONE, m_colormap, m_screen->root, visual);
    const std::uint32_t values[] = {0, 0, events, m_colormap};
    create(argbDepth, XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP, values);
  } else {
    const std::uint32_t values[] = {XCB_BACK_PIXMAP_PARENT_RELATIVE, events};
    create(m_screen->root_depth, XCB_CW_BACK_PIXMAP | XCB_CW_EVENT_MASK, values);
  }
  const std::uint32_t info[] = {xembedVersion, xembedMapped};
  xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, m_atoms.info, m_atoms.info, 32, 2, info);
  xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                      static_cast<std::uint32_t>(std::strlen(names::display)), names::display);
  constexpr char windowClass[] = "vantle\0Vantle";
  xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                      sizeof windowClass, windowClass);
  sayLeastSize();
  m_context = xcb_generate_id(m_connection);
  xcb_create_gc(m_connection, m_context, m_window, 0, nullptr);
}

// Without it some trays give a column of one pixel.
void XEmbedIcon::sayLeastSize() {
  constexpr std::uint32_t hasLeastSize = 1U << 4U; // PMinSize of WM_SIZE_HINTS
  std::array<std::uint32_t, 18> hints{};           // that record's length
  hints[0] = hasLeastSize;
  hints[5] = firstSize;
  hints[6] = firstSize;
  xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NORMAL_HINTS,
                      XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(), hints.data());
}

void XEmbedIcon::removeWindow() {
  if (m_window == XCB_NONE) return;
  xcb_free_gc(m_connection, m_context);
  xcb_destroy_window(m_connection, m_window);
  if (m_colormap != XCB_NONE) xcb_free_colormap(m_connection, m_colormap);
  m_window = XCB_NONE;
  m_colormap = XCB_NONE;
  xcb_flush(m_connection);
}

// What the events ask for is noted and done once, however many ask for it.
void XEmbedIcon::handleEvents() {
  QElapsedTimer turn;
  turn.start();
  while (const auto event = freed(xcb_poll_for_event(m_connection))) {
    handle(*event);
    if (turn.elapsed() >= longestTurn) break;
  }
  act();
  // The library may have read more already, also with an answer that was waited for: the socket alone would
  // wake nobody up.
  if (const auto event = freed(xcb_poll_for_queued_event(m_connection))) {
    handle(*event);
    m_nextTurn.start(0);
  }
  if (xcb_connection_has_error(m_connection) != 0) m_notifier->setEnabled(false); // the display is gone
}

void XEmbedIcon::act() {
  if (std::exchange(m_isClicked, false)) clicked();
  if (std::exchange(m_isPaintWanted, false)) paint();
  if (m_isDockWanted && !m_dockPause.isActive()) dock();
}

void XEmbedIcon::handle(const xcb_generic_event_t& event) {
  switch (event.response_type & 0x7f) {
  case XCB_CLIENT_MESSAGE: {
    const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
    if (message.type == m_atoms.manager && message.data.data32[1] == m_atoms.selection) {
      m_isDockWanted = true;
    }
    break;
  }
  case XCB_DESTROY_NOTIFY: {
    const xcb_window_t gone = reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window;
    if (gone == m_window) m_window = XCB_NONE; // the tray took it along
    if (gone == m_tray) m_isDockWanted = true;
    break;
  }
  case XCB_CONFIGURE_NOTIFY: {
    const auto& configured = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
    if (configured.window != m_window) break;
    m_size = {configured.width, configured.height};
    m_isPaintWanted = true;
    break;
  }
  case XCB_EXPOSE:
    m_isPaintWanted = true;
    break;
  case XCB_BUTTON_RELEASE:
    m_isClicked = true;
    break;
  default:
    break;
  }
}

void XEmbedIcon::clicked() {
  if (m_window == XCB_NONE) return;
  const auto cookie = xcb_translate_coordinates(m_connection, m_window, m_screen->root, 0, 0);
  const auto place = freed(xcb_translate_coordinates_reply(m_connection, cookie, nullptr));
  if (place) m_onActivate({QPoint(place->dst_x, place->dst_y), m_size});
}

void XEmbedIcon::show(const TrayIcon& icon) {
  if (icon == m_icon) return;
  m_icon = icon;
  if (m_connection != nullptr && m_window != XCB_NONE) paint();
}

QImage XEmbedIcon::background() {
  QImage image(m_size, m_depth == argbDepth ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
  image.fill(Qt::transparent);
  if (m_depth == argbDepth) return image;
  const auto width = static_cast<std::uint16_t>(m_size.width());
  const auto height = static_cast<std::uint16_t>(m_size.height());
  xcb_clear_area(m_connection, 0, m_window, 0, 0, width, height);
  const auto cookie =
      xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, 0, 0, width, height, ~0U);
  const auto reply = freed(xcb_get_image_reply(m_connection, cookie, nullptr));
  if (reply && xcb_get_image_data_length(reply.get()) == image.sizeInBytes()) {
    std::memcpy(image.bits(), xcb_get_image_data(reply.get()), static_cast<std::size_t>(image.sizeInBytes()));
  }
  return image;
}

void XEmbedIcon::paint() {
  if (m_window == XCB_NONE || m_size.isEmpty() || std::max(m_size.width(), m_size.height()) > largest) return;
  QImage image = background();
  // Trays of this kind say nothing of their colour; what they show behind the icon does.
  TrayIcon icon = m_icon;
  if (m_depth != argbDepth) icon.forDarkTray = image.pixelColor(0, 0).lightness() < 128;
  const int side = std::min(m_size.width(), m_size.height());
  {
    QPainter painter(&image);
    painter.drawImage((m_size.width() - side) / 2, (m_size.height() - side) / 2, trayImage(icon, side));
  }
  xcb_put_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, m_context,
                static_cast<std::uint16_t>(m_size.width()), static_cast<std::uint16_t>(m_size.height()), 0, 0,
                0, m_depth, static_cast<std::uint32_t>(image.sizeInBytes()), image.constBits());
  xcb_flush(m_connection);
}

} // namespace vantle
