// SPDX-License-Identifier: MIT
#include "desktop/linux/window/FreeAreas.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <cstring>
#include <private/qhighdpiscaling_p.h>
#include <qpa/qplatformscreen.h>
#include <qpa/qwindowsysteminterface.h>
#include <span>

namespace vantle {
namespace {

constexpr std::uint32_t mostClients = 1024;
constexpr std::uint32_t longestStrut = 12; // numbers

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
  learn(m_atoms.partial, "_NET_WM_STRUT_PARTIAL");
  learn(m_atoms.plain, "_NET_WM_STRUT");
  learn(m_atoms.workArea, "_NET_WORKAREA");
  learn(m_atoms.clients, "_NET_CLIENT_LIST");
  const xcb_screen_t& screen = m_server->screen();
  m_desktop = {screen.width_in_pixels, screen.height_in_pixels};
  // Window managers write the work area anew whenever a bar comes, goes or changes.
  const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(m_server->raw(), screen.root, XCB_CW_EVENT_MASK, &mask);
}

void FreeAreas::learn(xcb_atom_t& atom, const char* name) {
  const auto cookie =
      xcb_intern_atom(m_server->raw(), 0, static_cast<std::uint16_t>(std::strlen(name)), name);
  m_server->expect(cookie.sequence, [&atom](const void* reply) {
    if (reply != nullptr) atom = static_cast<const xcb_intern_atom_reply_t*>(reply)->atom;
  });
}

void FreeAreas::handle(const xcb_generic_event_t& event) {
  const auto type = event.response_type & 0x7fU;
  if (type == XCB_PROPERTY_NOTIFY) {
    const xcb_atom_t changed = reinterpret_cast<const xcb_property_notify_event_t&>(event).atom;
    if (changed == m_atoms.workArea || changed == m_atoms.clients) m_isReadingWanted = true;
  }
  if (type == XCB_CONFIGURE_NOTIFY) {
    const auto& root = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
    m_desktop = {root.width, root.height};
    tellScreens();
  }
}

// The last of the atoms is there when all are.
void FreeAreas::act() {
  if (!m_isReadingWanted || m_unanswered > 0 || m_atoms.clients == XCB_NONE) return;
  m_isReadingWanted = false;
  m_unanswered = 1;
  const auto cookie = xcb_get_property(m_server->raw(), 0, m_server->screen().root, m_atoms.clients,
                                       XCB_ATOM_WINDOW, 0, mostClients);
  m_server->expect(cookie.sequence,
                   [this](const void* reply) { ask(static_cast<const xcb_get_property_reply_t*>(reply)); });
}

void FreeAreas::ask(const xcb_get_property_reply_t* clients) {
  m_found.clear();
  const auto windows = numbersOf(clients);
  m_unanswered += windows.size();
  for (const xcb_window_t window : windows) askFor(window, m_atoms.partial);
  answered();
}

void FreeAreas::askFor(xcb_window_t window, xcb_atom_t property) {
  const auto cookie =
      xcb_get_property(m_server->raw(), 0, window, property, XCB_ATOM_CARDINAL, 0, longestStrut);
  m_server->expect(cookie.sequence, [this, window, property](const void* reply) {
    const auto numbers = numbersOf(static_cast<const xcb_get_property_reply_t*>(reply));
    const auto strut = strutOf(numbers.data(), numbers.size());
    if (!strut && property == m_atoms.partial) return askFor(window, m_atoms.plain);
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
void FreeAreas::follow(QScreen* screen) {
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
