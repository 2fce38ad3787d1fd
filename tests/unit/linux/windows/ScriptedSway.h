// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/posix/Descriptor.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantle {

// What sway says of a window; see sway-ipc(7).
struct ScriptedWindow {
  std::uint64_t id = 0;
  std::string pid = "0"; // as it stands in the JSON
  std::string applicationId = {};
  std::string className = {}; // of X windows
};

// The other end of a connection to sway. It answers when it is told to, and as it is told.
class ScriptedSway {
 public:
  enum Type : std::uint32_t {
    runCommand = 0,
    subscribe = 2,
    getTree = 4,
    getVersion = 7,
    workspaceEvent = 0x80000000,
    windowEvent = 0x80000003
  };
  using Asked = std::pair<std::uint32_t, std::string>; // type and payload

  ScriptedSway(); // on a connection of its own
  explicit ScriptedSway(Descriptor connected) : m_socket(std::move(connected)) {}

  Descriptor takeClientsEnd() { return std::move(m_clientsEnd); }
  int descriptor() const { return m_socket.get(); }

  std::vector<Asked> asked(); // since the last time, as far as it has arrived
  // Answers all of those as sway would; how many.
  int serve();

  void send(std::uint32_t type, std::string_view json) { sendBytes(message(type, json)); }
  void sendBytes(std::string_view bytes); // as far as they are taken
  void end() { m_socket = Descriptor(); }
  // "new", "focus", "close", …
  void tell(const char* change, const ScriptedWindow& window);
  void tellWorkspace(const char* change, bool isEmpty);

  static std::string message(std::uint32_t type, std::string_view json);
  static std::string windowNode(const ScriptedWindow& window);
  std::string tree() const;

  std::vector<ScriptedWindow> windows; // of the one workspace, the first of them in front
  std::string version = R"({"major":1,"minor":7})";
  std::string subscription = R"({"success":true})";
  std::string brokenTree = {}; // instead of the tree
  std::vector<std::string> commands;

 private:
  Descriptor m_socket;
  Descriptor m_clientsEnd;
  std::string m_received;
};

} // namespace vantle
