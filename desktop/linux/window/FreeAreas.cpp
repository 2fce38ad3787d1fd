// SPDX-License-Identifier: MIT
#include "desktop/linux/window/FreeAreas.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <private/qhighdpiscaling_p.h>
#include <qpa/qplatformscreen.h>
#include <qpa/qwindowsysteminterface.h>
#include <span>
#include <utility>

namespace vantle {
namespace {

constexpr std::uint32_t mostClients = 1024;
constexpr std::uint32_t longestStrut = 12; // numbers
constexpr int framesAndTheirs = 2;         // how far down the tree of windows

std::span<const std::uint32_t> numbersOf(const xcb_get_property_reply_t* reply) {
  if (reply == nullptr || reply->format != 32) return {};
  return {static_cast<const std::uint32_t*>(xcb_get_property_value(reply)), reply->value_len};
}

} // namespace

FreeAreas::FreeAreas(EventLoop& loop) {
  if (QGuiApplication::platformName() != QLatin1String("xcb")) return;
  m_server = std::make_unique<X11Connection>(
      loop, std::string(),
      X11Connection::Handlers{.ready = [this] { start(); },
                              .event = [this](const xcb_generic_event_t& event) { handle(event); },
                              .turnEnded = [this] { act(); },
                              .lost = [] {}});
  for (QScreen* screen : QGuiApplication::screens()) follow(screen);
  connect(qApp, &QGuiApplication::screenAdded, this, [this](QScreen* screen) {
    follow(screen);
    tellScreens();
  });
  qApp->installEventFilter(this);
}

void FreeAreas::start() {
  m_server->learn("_NET_WM_STRUT_PARTIAL", m_atoms.partial);
  m_server->learn("_NET_WM_STRUT", m_atoms.plain);
  m_server->learn("_NET_WORKAREA", m_atoms.workArea);
  m_server->learn("_NET_CLIENT_LIST", m_atoms.clients);
  const xcb_screen_t& screen = m_server->screen();
  m_desktop = {screen.width_in_pixels, screen.height_in_pixels};
  // Window managers write the work area anew whenever a bar comes, goes or changes.
  const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(m_server->raw(), screen.root, XCB_CW_EVENT_MASK, &mask);
}

void FreeAreas::handle(const xcb_generic_event_t& event) {
  const auto type = event.response_type & 0x7fU;
  if (type == XCB_PROPERTY_NOTIFY) {
    const xcb_atom_t changed = reinterpret_cast<const xcb_property_notify_event_t&>(event).atom;
    if (changed == m_atoms.workArea || changed == m_atoms.clients) m_isReadingWanted = true;
  }
  if (type == XCB_CONFIGURE_NOTIFY) {
    const auto& root = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
    if (root.window != m_server->screen().root) return;
    m_desktop = {root.width, root.height};
    tellScreens();
  }
  if (type == XCB_MAP_NOTIFY || type == XCB_UNMAP_NOTIFY) m_isReadingWanted = true;
}

// The last of the atoms is there when all are.
void FreeAreas::act() {
  if (!m_isReadingWanted || m_unanswered > 0 || m_atoms.clients == XCB_NONE) return;
  m_isReadingWanted = false;
  m_found.clear();
  m_unanswered = 2;
  const xcb_window_t root = m_server->screen().root;
  const auto area = xcb_get_property(m_server->raw(), 0, root, m_atoms.workArea, XCB_ATOM_CARDINAL, 0, 1);
  m_server->expect(area.sequence, [this](const void* reply) {
    lookForBars(numbersOf(static_cast<const xcb_get_property_reply_t*>(reply)).empty());
    answered();
  });
  const auto clients =
      xcb_get_property(m_server->raw(), 0, root, m_atoms.clients, XCB_ATOM_WINDOW, 0, mostClients);
  m_server->expect(clients.sequence, [this](const void* reply) {
    for (const xcb_window_t window : numbersOf(static_cast<const xcb_get_property_reply_t*>(reply)))
      askFor(window, m_atoms.partial);
    if (m_isLookedFor) askBelow(m_server->screen().root, framesAndTheirs);
    answered();
  });
}

// A window manager that writes no work area (i3) does not list bars among its windows either.
void FreeAreas::lookForBars(bool look) {
  if (std::exchange(m_isLookedFor, look) == look) return;
  const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                             (look ? XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY : XCB_EVENT_MASK_NO_EVENT);
  xcb_change_window_attributes(m_server->raw(), m_server->screen().root, XCB_CW_EVENT_MASK, &mask);
}

void FreeAreas::askBelow(xcb_window_t window, int depth) {
  ++m_unanswered;
  const auto cookie = xcb_query_tree(m_server->raw(), window);
  m_server->expect(cookie.sequence, [this, depth](const void* reply) {
    const auto* tree = static_cast<const xcb_query_tree_reply_t*>(reply);
    const std::size_t count = tree != nullptr ? tree->children_len : 0;
    for (const xcb_window_t child : std::span(count > 0 ? xcb_query_tree_children(tree) : nullptr, count)) {
      askFor(child, m_atoms.partial);
      if (depth > 1) askBelow(child, depth - 1);
    }
    answered();
  });
}

void FreeAreas::askFor(xcb_window_t window, xcb_atom_t property) {
  ++m_unanswered;
  const auto cookie =
      xcb_get_property(m_server->raw(), 0, window, property, XCB_ATOM_CARDINAL, 0, longestStrut);
  m_server->expect(cookie.sequence, [this, window, property](const void* reply) {
    const auto numbers = numbersOf(static_cast<const xcb_get_property_reply_t*>(reply));
    const auto strut = strutOf(numbers.data(), numbers.size());
    if (!strut && property == m_atoms.partial) askFor(window, m_atoms.plain);
    if (strut) m_found.push_back(*strut);
    answered();
  });
}

void FreeAreas::answered() {
  if (--m_unanswered > 0 || m_found == m_struts) return;
  m_struts = m_found;
  tellScreens();
}

// The toolkit takes back what it was told whenever it looks at a screen itself.
void FreeAreas::follow(QScreen* screen) const {
  connect(screen, &QScreen::geometryChanged, this, &FreeAreas::tellScreens);
  connect(screen, &QScreen::availableGeometryChanged, this, &FreeAreas::tellScreens);
}

// So it does without a word when it is made to draw larger or smaller, of which this is the sign.
bool FreeAreas::eventFilter(QObject* watched, QEvent* event) {
  if (watched == qApp && event->type() == QEvent::ApplicationFontChange) tellScreens();
  return QObject::eventFilter(watched, event);
}

void FreeAreas::tellScreens() {
  for (QScreen* screen : QGuiApplication::screens()) {
    const QPlatformScreen& platform = *screen->handle();
    const QRect whole = platform.geometry();
    const QRect room = roomBeside(m_struts, whole, m_desktop) & platform.availableGeometry();
    if (screen->availableGeometry() == QHighDpi::fromNative(room, screen, whole.topLeft())) continue;
    QWindowSystemInterface::handleScreenGeometryChange(screen, whole, room);
  }
}

} // namespace vantle
