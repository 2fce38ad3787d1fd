// SPDX-License-Identifier: MIT
#include "platform/linux/windows/sway/SwayWindows.h"

#include <set>
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
    : m_kernel(kernel),
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
  const std::optional<SwayWindow> window = swayWindowOf(memberOf(event, "container"));
  // A container that only holds others has the focus: one of those is in front.
  if (!window) {
    m_isStale = true;
    return;
  }
  if (change == "close") return remove(window->facts.id);
  if (change == "focus") setActive(window->facts.id);
  // The last window of a workspace takes the focus along, and nothing tells where it went.
  if (change == "move") m_isStale = true;
  consider(*window, 0);
}

// The one event of an empty workspace. On any other a window's own follows, unless the workspace itself keeps
// the focus.
void SwayWindows::handleWorkspace(const Json& event) {
  if (event.textAt("change") != "focus") return;
  if (isEmptyWorkspace(memberOf(event, "current"))) {
    setActive(0);
  } else {
    m_isStale = true;
  }
}

void SwayWindows::setActive(WindowId window) {
  if (std::exchange(m_active, window) != window) m_isChanged = true;
}

void SwayWindows::remove(WindowId window) {
  m_known.erase(window);
  m_drafts.erase(window);
  if (m_active == window) m_active = 0;
  m_isStale = true;
  m_isChanged = true;
}

void SwayWindows::takeTree(const std::optional<Json>& reply) {
  m_isReading = false;
  const std::optional<SwayTree> tree = reply ? swayTreeOf(*reply) : std::nullopt;
  if (!tree) return;
  setActive(tree->front);
  std::set<WindowId> listed;
  for (const SwayWindow& window : tree->windows) {
    if (listed.insert(window.facts.id).second) consider(window, m_reading);
  }
  const auto isGone = [&](const auto& entry) { return !listed.contains(entry.first); };
  if (std::erase_if(m_known, isGone) > 0) m_isChanged = true;
  std::erase_if(m_drafts, isGone);
  std::erase_if(m_orphans, isGone);
  m_processes.forgetUnused();
}

// What was told of a window, by an event (0) or in this reading.
void SwayWindows::consider(const SwayWindow& told, std::uint64_t reading) {
  const auto orphan = m_orphans.find(told.facts.id);
  if (orphan != m_orphans.end() && orphan->second == told.toldPid) return keep(told, 0, nullptr);
  const auto known = m_known.find(told.facts.id);
  if (known != m_known.end() && known->second.process && known->second.pid == told.toldPid)
    return keep(told, known->second.pid, known->second.process);
  const auto draft = m_drafts.find(told.facts.id);
  if (draft == m_drafts.end() || draft->second.owner.pid != told.toldPid) return meet(told);
  if (reading < draft->second.reading) return;
  const WindowOwner owner = draft->second.owner;
  m_drafts.erase(draft);
  if (!hasEnded(*owner.process)) return keep(told, owner.pid, owner.process);
  m_orphans[told.facts.id] = told.toldPid;
  keep(told, 0, nullptr);
}

void SwayWindows::meet(const SwayWindow& told) {
  const WindowId id = told.facts.id;
  m_drafts.erase(id);
  WindowOwner owner = m_processes.believe(m_kernel, told.toldPid, id == m_active);
  // What belongs to nobody needs no second word.
  if (!owner.process) return keep(told, 0, nullptr);
  if (m_known.erase(id) > 0) m_isChanged = true;
  m_drafts.emplace(id, Draft{std::move(owner), m_reading + 1});
  m_isStale = true;
}

void SwayWindows::keep(const SwayWindow& told, Pid pid, std::shared_ptr<Descriptor> process) {
  WindowFacts facts = told.facts;
  facts.pid = pid;
  facts.process = std::move(process);
  WindowFacts& known = m_known[facts.id];
  if (known == facts) return;
  known = std::move(facts);
  m_isChanged = true;
}

void SwayWindows::endTurn() {
  if (m_isStale && !m_isReading) {
    m_isReading = m_connection.ask(SwayConnection::Request::getTree, "",
                                   [this](const auto& reply) { takeTree(reply); });
    if (m_isReading) ++m_reading;
    m_isStale = !m_isReading;
  }
  if (std::exchange(m_isChanged, false)) m_handlers.changed();
}

void SwayWindows::forget(Pid pid) {
  for (const auto& [id, window] : m_known) {
    if (window.pid == pid) m_orphans[id] = pid;
  }
  // There is a descriptor now for one that got none before.
  std::erase_if(m_known,
                [pid](const auto& entry) { return entry.second.pid == pid || !entry.second.process; });
  std::erase_if(m_drafts, [pid](const auto& entry) { return entry.second.owner.pid == pid; });
  m_processes.forget(pid);
  m_isStale = true;
  m_isChanged = true;
  endTurn();
}

bool SwayWindows::requestClose(const WindowFacts& window) {
  return window.canBeClosed &&
         m_connection.ask(SwayConnection::Request::runCommand,
                          "[con_id=" + std::to_string(window.id) + "] kill", [](const auto& /*reply*/) {});
}

void SwayWindows::lose() {
  m_known.clear();
  m_drafts.clear();
  m_orphans.clear();
  m_processes.clear();
  m_active = 0;
  m_handlers.lost();
}

} // namespace vantle
