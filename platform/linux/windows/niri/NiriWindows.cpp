// SPDX-License-Identifier: MIT
#include "platform/linux/windows/niri/NiriWindows.h"

#include <limits>
#include <utility>
#include <vector>

namespace vantle {

namespace {

// xwayland-satellite, as far as the kernel keeps a name.
constexpr std::string_view bridge = "xwayland-satell";

// Its numbers begin at 1; the highest bit is the X server's windows'.
constexpr WindowId highestId = (WindowId{1} << 63U) - 1;

WindowId idOf(const Json& object) {
  const std::uint64_t id = object.unsignedAt("id").value_or(0);
  return id <= highestId ? id : 0;
}

bool isFocused(const Json& window) {
  const Json* const member = window.find("is_focused");
  return member != nullptr && member->asBool() == true;
}

} // namespace

NiriWindows::NiriWindows(EventLoop& loop, const Kernel& kernel, Descriptor events, std::string path, Pid pid)
    : ToldWindows(kernel), m_kernel(kernel),
      m_connection(loop, std::move(events), {.path = std::move(path), .pid = pid},
                   {.event = [this](std::string_view line) { handle(line); },
                    .turnEnded = [this] { endTurn(); },
                    .lost = [this] { lose(); }}) {
  m_connection.send("\"EventStream\"\n");
  endTurn();
}

bool NiriWindows::askForReading() {
  return m_connection.ask("\"Windows\"\n",
                          [this](const auto& answer) { readings().take(windowsOf(answer)); });
}

// Others may listen under its name, so the first line counts: without events nobody would hear of the
// person's turning to an app that is slowed. What is not understood later is of a version to come.
void NiriWindows::handle(std::string_view line) {
  const std::optional<Json> message = Json::parse(line);
  if (!m_isAgreed) {
    m_isAgreed = message && message->find("Ok") != nullptr;
    if (!m_isAgreed) m_connection.close();
    return;
  }
  if (!message || message->asObject() == nullptr) return;
  for (const auto& [name, event] : *message->asObject()) handleEvent(name, event);
}

void NiriWindows::handleEvent(const std::string& name, const Json& event) {
  if (name == "WindowFocusChanged") readings().setActive(idOf(event));
  if (name == "WindowClosed" && idOf(event) != 0) readings().remove(idOf(event));
  const Json* const window = event.find("window");
  if (name == "WindowOpenedOrChanged" && window != nullptr) takeWindow(*window);
  // All of them, at the beginning and whenever it thinks fit.
  if (name == "WindowsChanged") takeAll(event.arrayAt("windows"));
}

void NiriWindows::takeAll(const Json::Array& windows) {
  readings().setActive(0);
  for (const Json& window : windows) takeWindow(window);
  readings().expire(); // for those that are no more
}

void NiriWindows::takeWindow(const Json& window) {
  const std::optional<ToldWindow> told = windowOf(window);
  if (!told) return;
  if (isFocused(window)) readings().setActive(told->facts.id);
  readings().tell(*told);
}

std::optional<ToldWindow> NiriWindows::windowOf(const Json& window) const {
  const WindowId id = idOf(window);
  if (id == 0) return std::nullopt;
  ToldWindow told;
  told.toldPid = window.integerAt("pid").value_or(0);
  told.facts.id = id;
  told.facts.applicationId = window.textAt("app_id").value_or("");
  told.facts.canBeClosed = true;
  const bool isProcess = told.toldPid > 0 && told.toldPid <= std::numeric_limits<Pid>::max();
  const auto process = isProcess ? m_kernel.stat(static_cast<Pid>(told.toldPid)) : std::nullopt;
  told.facts.isX11 = process && process->shortName() == bridge;
  // The bridge is nobody's app, also where the X server tells nothing.
  if (told.facts.isX11) told.toldPid = 0;
  return told;
}

std::optional<std::vector<ToldWindow>>
NiriWindows::windowsOf(const std::optional<std::string>& answer) const {
  const std::optional<Json> reply = answer ? Json::parse(*answer) : std::nullopt;
  const Json* const content = reply ? reply->find("Ok") : nullptr;
  const Json* const listed = content == nullptr ? nullptr : content->find("Windows");
  if (listed == nullptr || listed->asArray() == nullptr) return std::nullopt;
  std::vector<ToldWindow> windows;
  for (const Json& window : *listed->asArray()) {
    if (std::optional<ToldWindow> told = windowOf(window)) windows.push_back(std::move(*told));
  }
  return windows;
}

bool NiriWindows::requestClose(const WindowFacts& window) {
  const std::string request = R"({"Action":{"CloseWindow":{"id":)" + std::to_string(window.id) + "}}}\n";
  return window.canBeClosed && m_connection.ask(request, [](const auto& /*answer*/) {});
}

bool NiriWindows::requestFront(const WindowFacts& window) {
  const std::string request = R"({"Action":{"FocusWindow":{"id":)" + std::to_string(window.id) + "}}}\n";
  return m_connection.ask(request, [](const auto& /*answer*/) {});
}

} // namespace vantle
