// SPDX-License-Identifier: MIT
#include "platform/linux/windows/sway/SwayWindows.h"

#include "platform/linux/windows/sway/SwayTree.h"

#include <string>

namespace vantle {

namespace {

// Of an event of the wrong form it is nothing.
const Json& memberOf(const Json& event, std::string_view name) {
  static const Json nothing;
  const Json* const member = event.find(name);
  return member == nullptr ? nothing : *member;
}

bool isEmptyWorkspace(const Json& workspace) {
  return workspace.find("nodes") != nullptr && workspace.arrayAt("nodes").empty() &&
         workspace.arrayAt("floating_nodes").empty();
}

} // namespace

SwayWindows::SwayWindows(EventLoop& loop, const Kernel& kernel, Descriptor socket)
    : ToldWindows(kernel),
      m_connection(loop, std::move(socket),
                   {.event = [this](SwayConnection::Event event, const Json& body) { handle(event, body); },
                    .turnEnded = [this] { endTurn(); },
                    .lost = [this] { lose(); }}) {
  using Request = SwayConnection::Request;
  m_connection.ask(Request::getVersion, "", [this](const auto& reply) { takeVersion(reply); });
  m_connection.ask(Request::subscribe, R"(["window","workspace"])",
                   [this](const auto& reply) { takeSubscription(reply); });
  endTurn();
}

bool SwayWindows::askForReading() {
  return m_connection.ask(SwayConnection::Request::getTree, "",
                          [this](const auto& reply) { takeTree(reply); });
}

// Others may listen under its name.
void SwayWindows::takeVersion(const std::optional<Json>& reply) {
  if (!reply || reply->find("major") == nullptr) m_connection.close();
}

// Without events nobody would hear of the person's turning to an app that is slowed.
void SwayWindows::takeSubscription(const std::optional<Json>& reply) {
  const Json* const success = reply ? reply->find("success") : nullptr;
  if (success == nullptr || success->asBool() != true) m_connection.close();
}

void SwayWindows::handle(SwayConnection::Event event, const Json& body) {
  if (event == SwayConnection::Event::window) handleWindow(body);
  if (event == SwayConnection::Event::workspace) handleWorkspace(body);
}

void SwayWindows::handleWindow(const Json& event) {
  const std::string change = event.textAt("change").value_or("");
  const std::optional<ToldWindow> window = swayWindowOf(memberOf(event, "container"));
  // A container that only holds others has the focus: one of those is in front.
  if (!window) {
    readings().expire();
    return;
  }
  if (change == "close") return readings().remove(window->facts.id);
  if (change == "focus") readings().setActive(window->facts.id);
  // The last window of a workspace takes the focus along, and nothing tells where it went.
  if (change == "move") readings().expire();
  readings().tell(*window);
}

// The one event of an empty workspace. On any other a window's own follows, unless the workspace itself keeps
// the focus.
void SwayWindows::handleWorkspace(const Json& event) {
  if (event.textAt("change") != "focus") return;
  if (isEmptyWorkspace(memberOf(event, "current"))) {
    readings().setActive(0);
  } else {
    readings().expire();
  }
}

void SwayWindows::takeTree(const std::optional<Json>& reply) {
  const std::optional<SwayTree> tree = reply ? swayTreeOf(*reply) : std::nullopt;
  if (tree) readings().setActive(tree->front);
  readings().take(tree ? std::optional(tree->windows) : std::nullopt);
}

bool SwayWindows::requestClose(const WindowFacts& window) {
  return window.canBeClosed &&
         m_connection.ask(SwayConnection::Request::runCommand,
                          "[con_id=" + std::to_string(window.id) + "] kill", [](const auto& /*reply*/) {});
}

bool SwayWindows::requestFront(const WindowFacts& window) {
  return m_connection.ask(SwayConnection::Request::runCommand,
                          "[con_id=" + std::to_string(window.id) + "] focus", [](const auto& /*reply*/) {});
}

} // namespace vantle
