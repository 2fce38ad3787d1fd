// SPDX-License-Identifier: MIT
#include "desktop/linux/tray/XEmbedIcon.h"

#include "base/Names.h"

#include <QPainter>
#include <algorithm>
#include <array>
#include <chrono>
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
constexpr std::chrono::milliseconds restTime{600}; // as on tips elsewhere
constexpr int firstSize = 22;                      // pixels; the tray then says what it wants
constexpr int largest = 255; // what one request can hold; for more the library asks the server, and waits
constexpr std::uint8_t argbDepth = 32;

} // namespace

XEmbedIcon::XEmbedIcon(EventLoop& loop, Handlers handlers)
    : m_handlers(std::move(handlers)), m_server(loop, {},
                                                {.ready = [this] { start(); },
                                                 .event = [this](const auto& event) { handle(event); },
                                                 .turnEnded = [this] { act(); },
                                                 .lost = [this] { lose(); }}) {
  m_dockPause.setSingleShot(true);
  QObject::connect(&m_dockPause, &QTimer::timeout, &m_dockPause, [this] { act(); });
  m_rest.setSingleShot(true);
  m_rest.setInterval(restTime);
  QObject::connect(&m_rest, &QTimer::timeout, &m_rest, [this] { m_tip.show(m_place, m_face.state); });
}

void XEmbedIcon::start() {
  m_server.learn("_NET_SYSTEM_TRAY_S" + std::to_string(m_server.screenNumber()), m_atoms.selection);
  m_server.learn("_NET_SYSTEM_TRAY_OPCODE", m_atoms.opcode);
  m_server.learn("_NET_SYSTEM_TRAY_VISUAL", m_atoms.visual);
  m_server.learn("_XEMBED_INFO", m_atoms.info);
  m_server.learn("MANAGER", m_atoms.manager);
  const std::uint32_t mask =
      XCB_EVENT_MASK_STRUCTURE_NOTIFY; // a new tray announces itself on the root window
  xcb_change_window_attributes(m_server.raw(), m_server.screen().root, XCB_CW_EVENT_MASK, &mask);
  m_isDockWanted = true;
}

// The display is gone, and with it all that was on it.
void XEmbedIcon::lose() {
  m_rest.stop();
  m_window = XCB_NONE;
  m_isDockWanted = false;
}

void XEmbedIcon::dock() {
  m_isDockWanted = false;
  m_isDocking = true;
  m_dockPause.start(shortestDockPause);
  removeWindow();
  const auto cookie = xcb_get_selection_owner(m_server.raw(), m_atoms.selection);
  m_server.expect(cookie.sequence, [this](const void* reply) {
    const auto* owner = static_cast<const xcb_get_selection_owner_reply_t*>(reply);
    askTray(owner != nullptr ? owner->owner : XCB_NONE);
  });
  m_server.flush();
}

void XEmbedIcon::askTray(xcb_window_t tray) {
  m_tray = tray;
  m_isDocking = tray != XCB_NONE;
  if (!m_isDocking) return;
  const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY; // its end
  xcb_change_window_attributes(m_server.raw(), tray, XCB_CW_EVENT_MASK, &mask);
  const auto cookie = xcb_get_property(m_server.raw(), 0, tray, m_atoms.visual, XCB_ATOM_VISUALID, 0, 1);
  m_server.expect(cookie.sequence,
                  [this](const void* reply) { moveIn(static_cast<const xcb_get_property_reply_t*>(reply)); });
}

void XEmbedIcon::moveIn(const xcb_get_property_reply_t* visual) {
  m_isDocking = false;
  makeWindow(visualOf(visual));
  xcb_client_message_event_t request{};
  request.response_type = XCB_CLIENT_MESSAGE;
  request.format = 32;
  request.window = m_tray;
  request.type = m_atoms.opcode;
  request.data.data32[0] = XCB_CURRENT_TIME;
  request.data.data32[1] = requestDock;
  request.data.data32[2] = m_window;
  xcb_send_event(m_server.raw(), 0, m_tray, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&request));
}

// The visual that the tray wants; 0 for the parent's.
xcb_visualid_t XEmbedIcon::visualOf(const xcb_get_property_reply_t* reply) const {
  if (reply == nullptr || reply->type != XCB_ATOM_VISUALID || reply->value_len != 1) return 0;
  xcb_visualid_t wanted = 0;
  std::memcpy(&wanted, xcb_get_property_value(reply), sizeof wanted);
  for (auto depth = xcb_screen_allowed_depths_iterator(&m_server.screen()); depth.rem > 0;
       xcb_depth_next(&depth)) {
    if (depth.data->depth != argbDepth) continue;
    for (auto type = xcb_depth_visuals_iterator(depth.data); type.rem > 0; xcb_visualtype_next(&type)) {
      if (type.data->visual_id == wanted) return wanted;
    }
  }
  return 0;
}

void XEmbedIcon::makeWindow(xcb_visualid_t visual) {
  m_window = xcb_generate_id(m_server.raw());
  m_size = {firstSize, firstSize};
  const std::uint32_t events = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                               XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                               XCB_EVENT_MASK_ENTER_WINDOW | XCB_EVENT_MASK_LEAVE_WINDOW;
  const auto create = [&](std::uint8_t depth, std::uint32_t mask, const std::uint32_t* values) {
    m_depth = depth;
    xcb_create_window(m_server.raw(), depth, m_window, m_server.screen().root, 0, 0, firstSize, firstSize, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, visual != 0 ? visual : m_server.screen().root_visual,
                      mask, values);
  };
  if (visual != 0) {
    m_colormap = xcb_generate_id(m_server.raw());
    xcb_create_colormap(m_server.raw(), XCB_COLORMAP_ALLOC_NONE, m_colormap, m_server.screen().root, visual);
    const std::uint32_t values[] = {0, 0, events, m_colormap};
    create(argbDepth, XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP, values);
  } else {
    const std::uint32_t values[] = {XCB_BACK_PIXMAP_PARENT_RELATIVE, events};
    create(m_server.screen().root_depth, XCB_CW_BACK_PIXMAP | XCB_CW_EVENT_MASK, values);
  }
  const std::uint32_t info[] = {xembedVersion, xembedMapped};
  xcb_change_property(m_server.raw(), XCB_PROP_MODE_REPLACE, m_window, m_atoms.info, m_atoms.info, 32, 2,
                      info);
  xcb_change_property(m_server.raw(), XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                      static_cast<std::uint32_t>(std::strlen(names::display)), names::display);
  constexpr char windowClass[] = "vantle\0Vantle";
  xcb_change_property(m_server.raw(), XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                      sizeof windowClass, windowClass);
  sayLeastSize();
  m_context = xcb_generate_id(m_server.raw());
  xcb_create_gc(m_server.raw(), m_context, m_window, 0, nullptr);
}

// Without it some trays give a column of one pixel.
void XEmbedIcon::sayLeastSize() {
  constexpr std::uint32_t hasLeastSize = 1U << 4U; // PMinSize of WM_SIZE_HINTS
  std::array<std::uint32_t, 18> hints{};           // that record's length
  hints[0] = hasLeastSize;
  hints[5] = firstSize;
  hints[6] = firstSize;
  xcb_change_property(m_server.raw(), XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NORMAL_HINTS,
                      XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(), hints.data());
}

void XEmbedIcon::removeWindow() {
  if (m_window == XCB_NONE) return;
  leave();
  xcb_free_gc(m_server.raw(), m_context);
  xcb_destroy_window(m_server.raw(), m_window);
  if (m_colormap != XCB_NONE) xcb_free_colormap(m_server.raw(), m_colormap);
  m_window = XCB_NONE;
  m_colormap = XCB_NONE;
}

// The last of the atoms is there when all are.
void XEmbedIcon::act() {
  if (std::exchange(m_isClicked, false)) tellPlace(m_handlers.clicked);
  if (std::exchange(m_isMiddleClicked, false)) m_handlers.middleClicked();
  if (std::exchange(m_isMenuWanted, false)) tellPlace(m_handlers.menuWanted);
  if (m_isPaintWanted && !m_isPainting) paint();
  const bool canDock = m_atoms.manager != XCB_NONE && !m_isDocking && !m_dockPause.isActive();
  if (m_isDockWanted && canDock) dock();
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
    if (gone == m_window) {
      leave();
      m_window = XCB_NONE; // the tray took it along
    }
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
    if (reinterpret_cast<const xcb_expose_event_t&>(event).window == m_window)
      m_isPaintWanted = true;
    else
      m_tip.draw();
    break;
  case XCB_ENTER_NOTIFY:
    rest(reinterpret_cast<const xcb_enter_notify_event_t&>(event));
    break;
  case XCB_LEAVE_NOTIFY:
  case XCB_BUTTON_PRESS:
    leave();
    break;
  case XCB_BUTTON_RELEASE: {
    const xcb_button_t button = reinterpret_cast<const xcb_button_release_event_t&>(event).detail;
    if (button == XCB_BUTTON_INDEX_1) m_isClicked = true;
    if (button == XCB_BUTTON_INDEX_2) m_isMiddleClicked = true;
    if (button == XCB_BUTTON_INDEX_3) m_isMenuWanted = true; // the others are the wheel's
    break;
  }
  default:
    break;
  }
}

void XEmbedIcon::tellPlace(const std::function<void(QRect)>& told) {
  if (m_window == XCB_NONE) return;
  const auto cookie = xcb_translate_coordinates(m_server.raw(), m_window, m_server.screen().root, 0, 0);
  m_server.expect(cookie.sequence, [this, &told](const void* reply) {
    const auto* place = static_cast<const xcb_translate_coordinates_reply_t*>(reply);
    if (place != nullptr) told({QPoint(place->dst_x, place->dst_y), m_size});
  });
}

// Trays of this kind know no tips: it is for each icon to show its own.
void XEmbedIcon::rest(const xcb_enter_notify_event_t& event) {
  m_place = {QPoint(event.root_x - event.event_x, event.root_y - event.event_y), m_size};
  m_rest.start();
}

void XEmbedIcon::leave() {
  m_rest.stop();
  m_tip.hide();
}

void XEmbedIcon::show(const TrayFace& face, bool onDark) {
  m_face = face;
  m_isOnDark = onDark;
  m_isPaintWanted = true;
  m_tip.change(m_face.state);
  act();
  m_server.flush();
}

// When the server has answered: one that hangs is sent one picture, however often the icon changes.
void XEmbedIcon::paint() {
  m_isPaintWanted = false;
  if (m_window == XCB_NONE || !m_face.picture || m_size.isEmpty() ||
      std::max(m_size.width(), m_size.height()) > largest)
    return;
  m_isPainting = true;
  m_server.expect(askBehind(), [this, window = m_window, size = m_size](const void* reply) {
    m_isPainting = false;
    // Otherwise there is an event that has it painted again.
    if (window == m_window && size == m_size) draw(behind(static_cast<const xcb_get_image_reply_t*>(reply)));
  });
}

// Makes the request whose reply says what is behind the icon; what is translucent need not know it.
unsigned int XEmbedIcon::askBehind() {
  if (m_depth == argbDepth) return xcb_get_geometry(m_server.raw(), m_window).sequence;
  const auto width = static_cast<std::uint16_t>(m_size.width());
  const auto height = static_cast<std::uint16_t>(m_size.height());
  xcb_clear_area(m_server.raw(), 0, m_window, 0, 0, width, height);
  return xcb_get_image(m_server.raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, 0, 0, width, height, ~0U)
      .sequence;
}

QImage XEmbedIcon::behind(const xcb_get_image_reply_t* reply) const {
  QImage image(m_size, m_depth == argbDepth ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
  image.fill(Qt::transparent);
  if (m_depth == argbDepth || reply == nullptr) return image;
  if (xcb_get_image_data_length(reply) == image.sizeInBytes()) {
    std::memcpy(image.bits(), xcb_get_image_data(reply), static_cast<std::size_t>(image.sizeInBytes()));
  }
  return image;
}

void XEmbedIcon::draw(QImage image) {
  // Trays of this kind say nothing of their colour; what they show behind the icon does.
  const bool onDark = m_depth == argbDepth ? m_isOnDark : image.pixelColor(0, 0).lightness() < 128;
  const int side = std::min(m_size.width(), m_size.height());
  {
    QPainter painter(&image);
    painter.drawImage((m_size.width() - side) / 2, (m_size.height() - side) / 2,
                      m_face.picture(side, onDark));
  }
  xcb_put_image(m_server.raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, m_context,
                static_cast<std::uint16_t>(m_size.width()), static_cast<std::uint16_t>(m_size.height()), 0, 0,
                0, m_depth, static_cast<std::uint32_t>(image.sizeInBytes()), image.constBits());
}

} // namespace vantle
