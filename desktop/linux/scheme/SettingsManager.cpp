// SPDX-License-Identifier: MIT
#include "desktop/linux/scheme/SettingsManager.h"

#include <QtGlobal>
#include <string>
#include <utility>

namespace vantle {
namespace {

constexpr std::uint32_t longest = 64 * 1024; // bytes; desktops publish two or three thousand

} // namespace

SettingsManager::SettingsManager(EventLoop& loop) {
  if (!qEnvironmentVariableIsSet("DISPLAY")) return;
  m_server = std::make_unique<X11Connection>(
      loop, std::string(),
      X11Connection::Handlers{.ready = [this] { start(); },
                              .event = [this](const xcb_generic_event_t& event) { handle(event); },
                              .turnEnded = [this] { act(); },
                              .lost = [] {}});
}

void SettingsManager::start() {
  m_server->learn("_XSETTINGS_S" + std::to_string(m_server->screenNumber()), m_atoms.selection);
  m_server->learn("_XSETTINGS_SETTINGS", m_atoms.settings);
  m_server->learn("MANAGER", m_atoms.manager);
  const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY; // a new one announces itself on the root window
  xcb_change_window_attributes(m_server->raw(), m_server->screen().root, XCB_CW_EVENT_MASK, &mask);
}

void SettingsManager::handle(const xcb_generic_event_t& event) {
  switch (event.response_type & 0x7f) {
  case XCB_CLIENT_MESSAGE: {
    const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
    if (message.type == m_atoms.manager && message.data.data32[1] == m_atoms.selection)
      m_isReadingWanted = true;
    break;
  }
  case XCB_PROPERTY_NOTIFY: {
    const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    if (change.window == m_owner && change.atom == m_atoms.settings) m_isReadingWanted = true;
    break;
  }
  case XCB_DESTROY_NOTIFY:
    if (reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window == m_owner)
      m_isReadingWanted = true;
    break;
  default:
    break;
  }
}

// The last of the atoms is there when all are.
void SettingsManager::act() {
  if (!m_isReadingWanted || m_isReading || m_atoms.manager == XCB_NONE) return;
  m_isReadingWanted = false;
  m_isReading = true;
  const auto cookie = xcb_get_selection_owner(m_server->raw(), m_atoms.selection);
  m_server->expect(cookie.sequence, [this](const void* reply) {
    const auto* answer = static_cast<const xcb_get_selection_owner_reply_t*>(reply);
    read(answer != nullptr ? answer->owner : XCB_NONE);
  });
  m_server->flush();
}

void SettingsManager::read(xcb_window_t owner) {
  m_owner = owner;
  if (owner == XCB_NONE) {
    m_isReading = false;
    return take({});
  }
  const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(m_server->raw(), owner, XCB_CW_EVENT_MASK, &mask);
  const auto cookie = xcb_get_property(m_server->raw(), 0, owner, m_atoms.settings, m_atoms.settings, 0,
                                       longest / sizeof(std::uint32_t));
  m_server->expect(cookie.sequence, [this](const void* reply) {
    m_isReading = false;
    const auto* answer = static_cast<const xcb_get_property_reply_t*>(reply);
    if (answer == nullptr) return take({});
    take(readPublishedSettings({static_cast<const char*>(xcb_get_property_value(answer)),
                                static_cast<std::size_t>(xcb_get_property_value_length(answer))}));
  });
  m_server->flush();
}

void SettingsManager::take(PublishedSettings published) {
  if (published == m_published) return;
  m_published = std::move(published);
  m_observers.notify();
}

} // namespace vantle
