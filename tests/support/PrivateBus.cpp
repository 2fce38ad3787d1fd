// SPDX-License-Identifier: MIT
#include "tests/support/PrivateBus.h"

#include "tests/support/NamedSocket.h"

#include <unistd.h>
#include <utility>

namespace vantle::desktop {

namespace fs = std::filesystem;

// Without service folders: a name that nobody owns is an error at once instead of a portal or a second copy.
std::vector<std::string> busDaemon(const TemporaryFolder& folder, const fs::path& socket) {
  const fs::path configuration =
      folder.write("bus.conf", "<!DOCTYPE busconfig PUBLIC"
                               " \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\""
                               " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">"
                               "<busconfig><type>session</type><listen>unix:path=" +
                                   socket.string() +
                                   "</listen><policy context=\"default\">"
                                   "<allow send_destination=\"*\" eavesdrop=\"true\"/>"
                                   "<allow eavesdrop=\"true\"/><allow own=\"*\"/><allow user=\"*\"/>"
                                   "</policy></busconfig>");
  fs::remove(socket);
  return {"dbus-daemon", "--config-file=" + configuration.string(), "--nofork", "--nopidfile"};
}

// The socket is there a moment before anybody listens on it.
bool isServed(const fs::path& socket) {
  const int descriptor = connectedSocket(socket.string());
  return descriptor >= 0 && ::close(descriptor) == 0;
}

PrivateBus::PrivateBus(std::vector<std::string> prefix)
    : m_prefix(std::move(prefix)), m_socket(m_folder.path() / "socket"),
      m_address("unix:path=" + m_socket.string()) {
  start();
}

void PrivateBus::start() {
  Start start;
  start.command = busDaemon(m_folder, m_socket);
  start.command.insert(start.command.begin(), m_prefix.begin(), m_prefix.end());
  start.environment = {{"PATH", "/usr/bin:/bin"}};
  m_daemon = std::make_unique<Program>(start);
  require("a message bus", [this] { return isServed(m_socket); });
}

} // namespace vantle::desktop
