// SPDX-License-Identifier: MIT
#include "tests/desktop/harness/PrivateBus.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace vantle::desktop {

namespace fs = std::filesystem;

namespace {

// The socket is there a moment before anybody listens on it.
bool accepts(const fs::path& socket) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  socket.string().copy(address.sun_path, sizeof address.sun_path - 1);
  const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool isAccepted =
      ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  ::close(descriptor);
  return isAccepted;
}

} // namespace

PrivateBus::PrivateBus(std::vector<std::string> prefix)
    : m_prefix(std::move(prefix)), m_socket(m_folder.path() / "socket"),
      m_address("unix:path=" + m_socket.string()) {
  start();
}

void PrivateBus::start() {
  const fs::path configuration =
      m_folder.write("bus.conf", "<!DOCTYPE busconfig PUBLIC"
                                 " \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\""
                                 " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">"
                                 "<busconfig><type>session</type><listen>" +
                                     m_address +
                                     "</listen><policy context=\"default\"><allow send_destination=\"*\"/>"
                                     "<allow receive_sender=\"*\"/><allow own=\"*\"/><allow user=\"*\"/>"
                                     "</policy></busconfig>");
  fs::remove(m_socket);
  Start start;
  start.command = m_prefix;
  for (const std::string& word : {std::string("dbus-daemon"), "--config-file=" + configuration.string(),
                                  std::string("--nofork"), std::string("--nopidfile")}) {
    start.command.push_back(word);
  }
  start.environment = {{"PATH", "/usr/bin:/bin"}};
  m_daemon = std::make_unique<Program>(start);
  require("a message bus", [this] { return accepts(m_socket); });
}

} // namespace vantle::desktop
