// SPDX-License-Identifier: MIT
#include "platform/linux/notices/DesktopNotifications.h"

#include "base/Names.h"

#include <cstring>
#include <utility>

namespace vantle {

namespace {

constexpr const char* daemonName = "org.freedesktop.Notifications";
constexpr const char* daemonPath = "/org/freedesktop/Notifications";

// A daemon that takes longer than this has lost the notice.
constexpr std::chrono::seconds forgetAfter{25};

// The daemon went away or was replaced. (Its coming, with no one before it, changes nothing.)
constexpr const char* daemonChange =
    "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
    "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='org.freedesktop.Notifications'";

BusMethod method(const char* member) { return {daemonName, daemonPath, daemonName, member}; }

} // namespace

std::string escapedMarkup(const std::string& text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (const char character : text) {
    switch (character) {
    case '&':
      escaped += "&amp;";
      break;
    case '<':
      escaped += "&lt;";
      break;
    case '>':
      escaped += "&gt;";
      break;
    case '"':
      escaped += "&quot;";
      break;
    case '\'':
      escaped += "&#39;";
      break;
    default:
      escaped += character;
    }
  }
  return escaped;
}

DesktopNotifications::DesktopNotifications(BusConnection& sessionBus)
    : m_bus(sessionBus), m_busLost(sessionBus.onLost([this] {
        m_daemonChanges.reset();
        forgetDaemon();
      })) {}

void DesktopNotifications::post(const std::string& identifier, const std::string& title,
                                const std::string& body) {
  m_bus.noticeEnd(); // before the notice is noted: the end of its daemon takes all of them along
  watchDaemon();
  m_notices[identifier].next = Content{title, body};
  if (m_readsMarkup) {
    send(identifier);
  } else {
    askForMarkup();
  }
}

void DesktopNotifications::send(const std::string& identifier) {
  // First of all: a bus that is found dead here takes the notices along.
  BusMessage message = m_bus.methodCall(method("Notify"));
  const auto found = m_notices.find(identifier);
  if (!message || found == m_notices.end()) return;
  Notice& notice = found->second;
  if (!notice.next || notice.isOnTheWay) return;
  const Content content = *std::exchange(notice.next, std::nullopt);
  const std::string body = m_readsMarkup == true ? escapedMarkup(content.body) : content.body;
  // No actions; the daemon's own time to show it; no sound.
  const int status = sd_bus_message_append(
      message.get(), "susssasa{sv}i", names::display, notice.id, names::identifier, content.title.c_str(),
      body.c_str(), 0, 2, "desktop-entry", "s", names::identifier, "suppress-sound", "b", 1, -1);
  if (status < 0) return;
  notice.isOnTheWay = m_bus.callAsync(
      std::move(message), forgetAfter,
      whileDaemonLives([this, identifier](sd_bus_message* reply) { takeId(identifier, reply); }));
}

void DesktopNotifications::takeId(const std::string& identifier, sd_bus_message* reply) {
  Notice& notice = m_notices[identifier];
  notice.isOnTheWay = false;
  if (reply) sd_bus_message_read(reply, "u", &notice.id);
  send(identifier);
}

void DesktopNotifications::askForMarkup() {
  if (m_isAskingForMarkup) return;
  m_isAskingForMarkup =
      m_bus.callAsync(m_bus.methodCall(method("GetCapabilities")), forgetAfter,
                      whileDaemonLives([this](sd_bus_message* reply) { takeCapabilities(reply); }));
}

void DesktopNotifications::takeCapabilities(sd_bus_message* reply) {
  m_isAskingForMarkup = false;
  if (!reply) {
    // Nobody shows notices here. What was to be shown would be old news to a daemon that comes later.
    for (auto& [identifier, notice] : m_notices) notice.next.reset();
    return;
  }
  bool readsMarkup = false;
  const char* capability = nullptr;
  if (sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "s") >= 0) {
    while (sd_bus_message_read(reply, "s", &capability) > 0) {
      readsMarkup = readsMarkup || std::strcmp(capability, "body-markup") == 0;
    }
  }
  m_readsMarkup = readsMarkup;
  for (const auto& [identifier, notice] : m_notices) send(identifier);
}

void DesktopNotifications::watchDaemon() {
  if (m_daemonChanges) return;
  m_daemonChanges = m_bus.match(daemonChange, [this](sd_bus_message* signal) {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* after = nullptr;
    if (sd_bus_message_read(signal, "sss", &name, &before, &after) > 0 && *before != '\0') forgetDaemon();
  });
}

void DesktopNotifications::forgetDaemon() {
  m_daemon = std::make_shared<const bool>();
  m_readsMarkup.reset();
  m_isAskingForMarkup = false;
  m_notices.clear();
}

BusConnection::Reply DesktopNotifications::whileDaemonLives(BusConnection::Reply reply) const {
  return [daemon = std::weak_ptr<const bool>(m_daemon), handler = std::move(reply)](sd_bus_message* message) {
    if (!daemon.expired()) handler(message);
  };
}

} // namespace vantle
