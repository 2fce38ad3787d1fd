// SPDX-License-Identifier: MIT
#include "tests/unit/linux/windows/ScriptedCompositor.h"

#include "platform/linux/sockets/LocalSocket.h"
#include "tests/support/NamedSocket.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

namespace vantle {

namespace {

constexpr ScriptedCompositor::Object display = 1;
constexpr std::uint32_t managersName = 7;

std::uint32_t numberAt(std::string_view bytes, std::size_t at) {
  std::uint32_t number = 0; // in the byte order of the machine
  if (bytes.size() >= at + sizeof number) std::memcpy(&number, bytes.data() + at, sizeof number);
  return number;
}

std::string padded(std::string bytes) {
  bytes.resize((bytes.size() + 3) / 4 * 4);
  return bytes;
}

} // namespace

ScriptedCompositor::ScriptedCompositor(const std::string& path)
    : m_path(path), m_listener(desktop::listeningSocket(path)) {
  ::fcntl(m_listener.get(), F_SETFL, O_NONBLOCK);
}

Descriptor ScriptedCompositor::connect() {
  auto own = connectToOwn(m_path);
  const auto isOwn = [](const Descriptor& client) {
    ucred peer{};
    socklen_t size = sizeof peer;
    ::getsockopt(client.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size);
    return peer.pid == ::getpid();
  };
  do {
    if (m_client) m_others.push_back(std::move(m_client));
    m_client = Descriptor(::accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  } while (!isOwn(m_client));
  return std::move(own->socket);
}

void ScriptedCompositor::takeClient() {
  pollfd waiting{m_listener.get(), POLLIN, 0};
  ::poll(&waiting, 1, -1);
  m_client = Descriptor(::accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
}

std::string ScriptedCompositor::number(std::uint32_t value) {
  std::string bytes(sizeof value, '\0');
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

std::string ScriptedCompositor::text(std::string_view value) {
  const std::string bytes = std::string(value) + '\0';
  return number(static_cast<std::uint32_t>(bytes.size())) + padded(bytes);
}

std::string ScriptedCompositor::message(Object object, std::uint16_t event, std::string_view arguments) {
  const auto size = static_cast<std::uint32_t>(8 + arguments.size());
  return number(object) + number(size << 16U | event) + std::string(arguments);
}

void ScriptedCompositor::tell(Object object, std::uint16_t event, std::string_view arguments) {
  sendBytes(message(object, event, arguments));
}

void ScriptedCompositor::sendBytes(std::string_view bytes) {
  m_unsent.append(bytes);
  flush();
}

bool ScriptedCompositor::flush() {
  while (!m_unsent.empty()) {
    const ssize_t sent = ::send(m_client.get(), m_unsent.data(), m_unsent.size(), MSG_NOSIGNAL);
    if (sent <= 0) break;
    m_unsent.erase(0, static_cast<std::size_t>(sent));
  }
  return m_unsent.empty();
}

int ScriptedCompositor::serve() {
  while (Descriptor other{::accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC)}) {
    m_others.push_back(std::move(other));
  }
  flush();
  std::array<char, 4096> bytes{};
  for (;;) {
    const ssize_t count = ::recv(m_client.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count <= 0) break;
    m_received.append(bytes.data(), static_cast<std::size_t>(count));
  }
  int answered = 0;
  while (m_received.size() >= 8) {
    const std::uint32_t head = numberAt(m_received, 4);
    const std::size_t size = head >> 16U;
    if (m_received.size() < size) break;
    answer(numberAt(m_received, 0), static_cast<std::uint16_t>(head), m_received.substr(8, size - 8));
    m_received.erase(0, size);
    ++answered;
  }
  return answered;
}

void ScriptedCompositor::answer(Object object, std::uint16_t request, std::string_view arguments) {
  constexpr std::uint16_t sync = 0;
  constexpr std::uint16_t close = 5;
  constexpr std::uint16_t destroy = 7;
  if (object == display && request == sync) {
    tell(numberAt(arguments, 0), 0, number(0));
    tell(display, 1, std::string(arguments)); // the object is no longer there
  } else if (object == display) {
    m_registry = numberAt(arguments, 0);
    tell(m_registry, 0, number(3) + text("wl_seat") + number(7));
    if (offersToplevels)
      tell(m_registry, 0, number(managersName) + text("zwlr_foreign_toplevel_manager_v1") + number(3));
  } else if (object == m_registry) {
    m_manager = numberAt(arguments, arguments.size() - 4);
    for (const Window& window : m_windows) announce(window);
  } else if (request == close) {
    askedToClose.push_back(object);
  } else if (request == destroy) {
    destroyed.push_back(object);
  }
}

void ScriptedCompositor::announce(const Window& window) {
  tellOfWindow(window.object);
  tell(window.object, title, text("A title"));
  tell(window.object, appId, text(window.applicationId));
  tellState(window);
}

void ScriptedCompositor::tellState(const Window& window) {
  constexpr std::uint32_t maximized = 0;
  constexpr std::uint32_t activated = 2;
  const std::string states = number(maximized) + (window.isActive ? number(activated) : std::string());
  tell(window.object, state, number(static_cast<std::uint32_t>(states.size())) + states);
  tell(window.object, done);
}

ScriptedCompositor::Object ScriptedCompositor::open(std::string_view applicationId, bool isActive) {
  const Window window{m_lastObject++, std::string(applicationId), isActive};
  m_windows.push_back(window);
  if (m_manager != 0) announce(window);
  return window.object;
}

void ScriptedCompositor::rename(Object window, std::string_view applicationId) {
  tell(window, appId, text(applicationId));
  tell(window, done);
}

// The one that loses the focus is told first, as wlroots does.
void ScriptedCompositor::focus(Object window) {
  for (const bool isActive : {false, true}) {
    for (Window& each : m_windows) {
      if (each.isActive == isActive || (each.object == window) != isActive) continue;
      each.isActive = isActive;
      tellState(each);
    }
  }
}

void ScriptedCompositor::close(Object window) {
  std::erase_if(m_windows, [window](const Window& each) { return each.object == window; });
  tell(window, closed);
}

void ScriptedCompositor::tellOfWindow(Object object) { tell(m_manager, 0, number(object)); }

void ScriptedCompositor::finish() { tell(m_manager, 1); }

} // namespace vantle
