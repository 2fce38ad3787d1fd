// SPDX-License-Identifier: MIT
#include "tests/unit/linux/windows/ScriptedLines.h"

#include "tests/support/NamedSocket.h"

#include <array>
#include <fcntl.h>
#include <stdexcept>
#include <sys/socket.h>
#include <utility>

namespace vantle {

namespace {

std::string hexOf(std::uint64_t number) {
  constexpr const char* digits = "0123456789abcdef";
  std::string text;
  for (; number != 0; number /= 16) text.insert(text.begin(), digits[number % 16]);
  return text;
}

std::string joined(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : ",") + part;
  return "[" + text + "]";
}

} // namespace

ScriptedLines::ScriptedLines(std::string questions)
    : m_questions(std::move(questions)), m_listener(desktop::listeningSocket(m_questions)) {
  ::fcntl(m_listener.get(), F_SETFL, O_NONBLOCK);
  std::array<int, 2> ends{-1, -1};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0)
    throw std::runtime_error("no sockets");
  m_events = Descriptor(ends[0]);
  m_clientsEnd = Descriptor(ends[1]);
}

// Both ends are in this process: whoever has connected has asked as well.
int ScriptedLines::serve() {
  int count = 0;
  for (;;) {
    Descriptor client(::accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!client) return count;
    std::array<char, 4096> bytes{};
    const ssize_t length = ::recv(client.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (length <= 0) continue;
    ++count;
    const std::string question(bytes.data(), static_cast<std::size_t>(length));
    std::string answer = answerTo(question);
    if (answer.empty()) {
      others.push_back(question);
      answer = R"({"Ok":"Handled"})"
               "\n";
    } else if (!brokenAnswer.empty()) {
      answer = brokenAnswer;
    }
    ::send(client.get(), answer.data(), answer.size(), MSG_NOSIGNAL);
    if (!endsAfterAnswer()) m_answered.push_back(std::move(client));
  }
}

void ScriptedLines::sendBytes(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(m_events.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) return;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

void ScriptedHyprland::tellOpened(const Window& window) {
  sendBytes("openwindow>>" + hexOf(window.id) + ",1," + window.applicationId + ",A title, with a comma\n");
}

void ScriptedHyprland::tellFocus(std::uint64_t id) {
  sendBytes("activewindow>>app,title\nactivewindowv2>>" + hexOf(id) + "\n");
}

void ScriptedHyprland::tellClosed(std::uint64_t id) { sendBytes("closewindow>>" + hexOf(id) + "\n"); }

std::string ScriptedHyprland::closing(std::uint64_t id) const {
  return "dispatch closewindow address:0x" + hexOf(id);
}

std::string ScriptedHyprland::fronting(std::uint64_t id) const {
  return "dispatch focuswindow address:0x" + hexOf(id);
}

std::string ScriptedHyprland::answerTo(const std::string& question) const {
  std::vector<std::string> clients;
  for (const Window& window : windows) {
    clients.push_back(R"({"address":"0x)" + hexOf(window.id) + R"(","mapped":true,"pid":)" + window.pid +
                      R"(,"xwayland":)" + (window.isX11 ? "true" : "false") + R"(,"class":")" +
                      window.applicationId + R"("})");
  }
  if (question == "j/version") return version;
  if (question == "j/clients") return joined(clients);
  if (question == "j/activewindow") return clients.empty() ? "{}" : clients.front();
  return {};
}

std::string ScriptedNiri::text(const Window& window, bool isFocused) {
  return R"({"id":)" + std::to_string(window.id) + R"(,"title":null,"app_id":")" + window.applicationId +
         R"(","pid":)" + window.pid + R"(,"is_focused":)" + (isFocused ? "true" : "false") + "}";
}

std::string ScriptedNiri::list() const {
  std::vector<std::string> all;
  for (const Window& window : windows) all.push_back(text(window, all.empty()));
  return joined(all);
}

void ScriptedNiri::agree(const std::string& first) {
  sendBytes(first + "\n" + R"({"WorkspacesChanged":{"workspaces":[]}})" + "\n" +
            R"({"WindowsChanged":{"windows":)" + list() + "}}\n");
}

void ScriptedNiri::tellOpened(const Window& window) {
  sendBytes(R"({"WindowOpenedOrChanged":{"window":)" + text(window, false) + "}}\n");
}

void ScriptedNiri::tellFocus(std::uint64_t id) {
  sendBytes(R"({"WindowFocusChanged":{"id":)" + (id == 0 ? "null" : std::to_string(id)) + "}}\n");
}

void ScriptedNiri::tellClosed(std::uint64_t id) {
  sendBytes(R"({"WindowClosed":{"id":)" + std::to_string(id) + "}}\n");
}

std::string ScriptedNiri::closing(std::uint64_t id) const {
  return R"({"Action":{"CloseWindow":{"id":)" + std::to_string(id) + "}}}\n";
}

std::string ScriptedNiri::fronting(std::uint64_t id) const {
  return R"({"Action":{"FocusWindow":{"id":)" + std::to_string(id) + "}}}\n";
}

std::string ScriptedNiri::answerTo(const std::string& question) const {
  return question == "\"Windows\"\n" ? R"({"Ok":{"Windows":)" + list() + "}}\n" : "";
}

} // namespace vantle
