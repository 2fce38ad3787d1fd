// SPDX-License-Identifier: MIT
#include "tests/unit/linux/windows/ScriptedSway.h"

#include <array>
#include <cstring>
#include <stdexcept>
#include <sys/socket.h>

namespace vantle {

namespace {

constexpr std::string_view magic = "i3-ipc";
constexpr std::size_t headerSize = 14;

std::string bytesOf(std::uint32_t number) {
  std::string bytes(sizeof number, '\0');
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

std::string member(const char* name, const std::string& text) {
  return std::string("\"") + name + "\":" + (text.empty() ? "null" : "\"" + text + "\"");
}

} // namespace

ScriptedSway::ScriptedSway() {
  std::array<int, 2> ends{-1, -1};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0)
    throw std::runtime_error("no sockets");
  m_socket = Descriptor(ends[0]);
  m_clientsEnd = Descriptor(ends[1]);
}

std::string ScriptedSway::message(std::uint32_t type, std::string_view json) {
  const std::string length = bytesOf(static_cast<std::uint32_t>(json.size()));
  return std::string(magic) + length + bytesOf(type) + std::string(json);
}

void ScriptedSway::sendBytes(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(m_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) return;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

std::vector<ScriptedSway::Asked> ScriptedSway::asked() {
  std::array<char, 4096> bytes{};
  for (;;) {
    const ssize_t count = ::recv(m_socket.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count <= 0) break;
    m_received.append(bytes.data(), static_cast<std::size_t>(count));
  }
  std::vector<Asked> all;
  while (m_received.size() >= headerSize) {
    std::uint32_t length = 0;
    std::uint32_t type = 0;
    std::memcpy(&length, m_received.data() + magic.size(), sizeof length);
    std::memcpy(&type, m_received.data() + magic.size() + sizeof length, sizeof type);
    if (m_received.size() < headerSize + length) break;
    all.emplace_back(type, m_received.substr(headerSize, length));
    m_received.erase(0, headerSize + length);
  }
  return all;
}

int ScriptedSway::serve() {
  const std::vector<Asked> questions = asked();
  for (const auto& [type, payload] : questions) {
    if (type == runCommand) commands.push_back(payload);
    if (type == runCommand) send(type, R"([{"success":true}])");
    if (type == getVersion) send(type, version);
    if (type == subscribe) send(type, subscription);
    if (type == getTree) send(type, brokenTree.empty() ? tree() : brokenTree);
  }
  return static_cast<int>(questions.size());
}

std::string ScriptedSway::windowNode(const ScriptedWindow& window) {
  std::string node = R"({"type":"con","nodes":[],"floating_nodes":[],"focus":[],"id":)" +
                     std::to_string(window.id) + ",\"pid\":" + window.pid;
  node += "," + member("app_id", window.applicationId);
  if (!window.className.empty()) {
    const std::string properties =
        member("class", window.className) + "," + member("instance", window.className);
    node += ",\"window_properties\":{" + properties + "}";
  }
  return node + "}";
}

std::string ScriptedSway::tree() const {
  std::string nodes;
  std::string focus;
  for (const ScriptedWindow& window : windows) {
    nodes += (nodes.empty() ? "" : ",") + windowNode(window);
    focus += (focus.empty() ? "" : ",") + std::to_string(window.id);
  }
  const std::string workspace = R"({"id":9003,"type":"workspace","floating_nodes":[],"nodes":[)" + nodes +
                                R"(],"focus":[)" + focus + "]}";
  const std::string output =
      R"({"id":9002,"type":"output","floating_nodes":[],"nodes":[)" + workspace + R"(],"focus":[9003]})";
  return R"({"id":9001,"type":"root","floating_nodes":[],"nodes":[)" + output + R"(],"focus":[9002]})";
}

void ScriptedSway::tell(const char* change, const ScriptedWindow& window) {
  send(windowEvent, "{" + member("change", change) + ",\"container\":" + windowNode(window) + "}");
}

void ScriptedSway::tellWorkspace(const char* change, bool isEmpty) {
  const std::string nodes = isEmpty ? "" : windowNode({.id = 8000});
  send(workspaceEvent, "{" + member("change", change) +
                           R"(,"current":{"id":9003,"floating_nodes":[],"nodes":[)" + nodes + "]}}");
}

} // namespace vantle
