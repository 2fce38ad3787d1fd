// SPDX-License-Identifier: MIT
#include "platform/linux/windows/hyprland/HyprlandWindows.h"

#include "base/Json.h"

#include <charconv>
#include <utility>

namespace vantle {

namespace {

// Its numbers are addresses of a program, which have 47 bits; the highest bit is the X server's windows'.
constexpr WindowId highestAddress = (WindowId{1} << 63U) - 1;

// "55d0c8a3f6e0", with "0x" before it in answers; 0 for anything else.
WindowId addressOf(std::string_view text) {
  if (text.starts_with("0x")) text.remove_prefix(2);
  WindowId address = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), address, 16);
  const bool isRead = error == std::errc() && end == text.data() + text.size();
  return isRead && address <= highestAddress ? address : 0;
}

std::string hexOf(WindowId address) {
  std::string digits(16, '\0');
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), address, 16);
  digits.resize(static_cast<std::size_t>(end - digits.data()));
  return "0x" + digits;
}

std::optional<Json> parsed(const std::optional<std::string>& answer) {
  return answer ? Json::parse(*answer) : std::nullopt;
}

bool isTrue(const Json& object, std::string_view key) {
  const Json* const member = object.find(key);
  return member != nullptr && member->asBool() == true;
}

std::optional<ToldWindow> windowOf(const Json& client) {
  const WindowId id = addressOf(client.textAt("address").value_or(""));
  if (id == 0 || !isTrue(client, "mapped")) return std::nullopt;
  ToldWindow window;
  window.toldPid = client.integerAt("pid").value_or(0);
  window.facts.id = id;
  window.facts.isX11 = isTrue(client, "xwayland");
  const std::string name = client.textAt("class").value_or("");
  (window.facts.isX11 ? window.facts.className : window.facts.applicationId) = name;
  window.facts.canBeClosed = true;
  return window;
}

} // namespace

std::optional<std::vector<ToldWindow>> hyprlandWindowsOf(const std::string& answer) {
  const std::optional<Json> clients = Json::parse(answer);
  if (!clients || clients->asArray() == nullptr) return std::nullopt;
  std::vector<ToldWindow> windows;
  for (const Json& client : *clients->asArray()) {
    if (std::optional<ToldWindow> window = windowOf(client)) windows.push_back(std::move(*window));
  }
  return windows;
}

HyprlandWindows::HyprlandWindows(EventLoop& loop, const Kernel& kernel, Descriptor events,
                                 std::string questions, Pid pid)
    : ToldWindows(kernel), m_connection(loop, std::move(events),
                                        {.path = std::move(questions),
                                         .pid = pid,
                                         .answer = LineConnection::Questions::Answer::untilTheEnd},
                                        {.event = [this](std::string_view line) { handle(line); },
                                         .turnEnded = [this] { endTurn(); },
                                         .lost = [this] { lose(); }}) {
  m_connection.ask("j/version", [this](const auto& answer) { takeVersion(answer); });
  m_connection.ask("j/activewindow", [this](const auto& answer) { takeFirstActive(answer); });
  endTurn();
}

bool HyprlandWindows::askForReading() {
  return m_connection.ask("j/clients", [this](const auto& answer) {
    readings().take(answer ? hyprlandWindowsOf(*answer) : std::nullopt);
  });
}

// Others may listen under its name. What names the version has changed with the versions.
void HyprlandWindows::takeVersion(const std::optional<std::string>& answer) {
  const std::optional<Json> version = parsed(answer);
  const bool isIts = version && (version->find("version") != nullptr || version->find("tag") != nullptr);
  if (!isIts) m_connection.close();
}

// An event is later, or says the same: it was sent on a connection that was there before the question.
void HyprlandWindows::takeFirstActive(const std::optional<std::string>& answer) {
  const std::optional<Json> window = parsed(answer);
  if (window && !m_isFrontTold) readings().setActive(addressOf(window->textAt("address").value_or("")));
}

void HyprlandWindows::handle(std::string_view line) {
  const std::size_t nameEnd = line.find(">>");
  if (nameEnd == std::string_view::npos) return;
  const std::string_view name = line.substr(0, nameEnd);
  const std::string_view data = line.substr(nameEnd + 2);
  const WindowId window = addressOf(data.substr(0, data.find(',')));
  if (name == "activewindowv2") {
    m_isFrontTold = true;
    readings().setActive(window); // none on an empty workspace
    if (window != 0 && !known().contains(window)) readings().expire();
  }
  if (name == "closewindow" && window != 0) readings().remove(window);
  if (name == "openwindow") readings().expire();
}

bool HyprlandWindows::requestClose(const WindowFacts& window) {
  return window.canBeClosed &&
         m_connection.ask("dispatch closewindow address:" + hexOf(window.id), [](const auto& /*answer*/) {});
}

bool HyprlandWindows::requestFront(const WindowFacts& window) {
  return m_connection.ask("dispatch focuswindow address:" + hexOf(window.id), [](const auto& /*answer*/) {});
}

} // namespace vantle
