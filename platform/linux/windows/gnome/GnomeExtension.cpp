// SPDX-License-Identifier: MIT
#include "platform/linux/windows/gnome/GnomeExtension.h"

#include <chrono>
#include <utility>

namespace vantle {

namespace {

// It only ends what would otherwise be remembered for ever.
constexpr std::chrono::seconds longestAnswer{25};

} // namespace

void GnomeExtension::meet(const std::string& shell, std::function<void()>) {
  m_meeting = std::make_shared<const bool>();
  m_shell = shell;
}

void GnomeExtension::ask(std::function<void(bool)> answered) {
  m_bus.callAsync(
      m_bus.methodCall({m_shell.c_str(), path, interface, "Sync"}), longestAnswer,
      [meeting = std::weak_ptr(m_meeting), answered = std::move(answered)](sd_bus_message* reply) {
        if (!meeting.expired()) answered(reply != nullptr);
      });
}

bool GnomeExtension::order(const char* method, const std::string& window) {
  BusMessage message = m_bus.methodCall({m_shell.c_str(), path, interface, method});
  return message && sd_bus_message_append(message.get(), "s", window.c_str()) >= 0 &&
         m_bus.send(std::move(message));
}

} // namespace vantle
