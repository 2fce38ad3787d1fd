// SPDX-License-Identifier: MIT
#include "platform/linux/windows/fed/FedWindows.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace vantle {

namespace {

constexpr std::size_t mostWindows = 16'384;
constexpr std::size_t longestName = 128;  // bytes of the shell's name for a window: a UUID, or a number
constexpr std::size_t longestText = 1024; // bytes of a class or an app id; more is cut off

constexpr std::chrono::seconds longestAnswer{25}; // of the bus itself, and of the shell

// The bus's own words: do not queue; the owner, in the queue, already the owner.
constexpr std::uint32_t doNotQueue = 4;
constexpr std::uint32_t isOwner = 1;
constexpr std::uint32_t isInQueue = 2;
constexpr std::uint32_t isAlreadyOwner = 4;

std::optional<WindowKind> kindOf(std::string_view word) {
  if (word == "ordinary") return WindowKind::ordinary;
  if (word == "shell") return WindowKind::shell;
  if (word == "passing") return WindowKind::passing;
  return std::nullopt;
}

std::string cut(const char* text) { return std::string(std::string_view(text).substr(0, longestText)); }

bool isName(std::string_view name) { return !name.empty() && name.size() <= longestName; }

bool is(sd_bus_message* call, const char* member, const char* signature) {
  return sd_bus_message_is_method_call(call, FedWindows::interface, member) > 0 &&
         sd_bus_message_has_signature(call, signature) > 0;
}

// A question about a name to the bus itself.
BusMessage requestTo(BusConnection& bus, const char* member, const std::string& name,
                     std::optional<std::uint32_t> flags = {}) {
  BusMessage message =
      bus.methodCall({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", member});
  if (message && sd_bus_message_append(message.get(), "s", name.c_str()) < 0) return nullptr;
  if (message && flags && sd_bus_message_append(message.get(), "u", *flags) < 0) return nullptr;
  return message;
}

} // namespace

FedWindows::FedWindows(EventLoop& loop, const Kernel& kernel, BusConnection& sessionBus, Options options,
                       std::unique_ptr<FeedCaller> caller)
    : m_loop(loop), m_kernel(kernel), m_bus(sessionBus), m_options(std::move(options)),
      m_caller(std::move(caller)), m_busLost(m_bus.onLost([this] { lose(); })),
      m_object(m_bus.answer(path, [this](sd_bus_message* call) { return take(call); })) {
  // In this order: a caller that waits for the name is known by the time it hears of it.
  watchShell();
  if (m_options.waitsForName) watchOwnName();
  const std::uint32_t flags = m_options.waitsForName ? 0 : doNotQueue;
  const bool areAsked = m_object &&
                        ask(requestTo(m_bus, "GetNameOwner", m_options.shell),
                            [this](sd_bus_message* reply) { takeFirstOwner(reply); }) &&
                        ask(requestTo(m_bus, "RequestName", m_options.ownName, flags),
                            [this](sd_bus_message* reply) { takeOwnName(reply); });
  // Nobody can be told before the start.
  if (!areAsked) m_absence = m_loop.after(std::chrono::milliseconds(0), [this] { lose(); });
}

FedWindows::~FedWindows() { m_bus.send(requestTo(m_bus, "ReleaseName", m_options.ownName)); }

bool FedWindows::ask(BusMessage question, BusConnection::Reply answered) {
  return m_bus.callAsync(
      std::move(question), longestAnswer,
      [life = std::weak_ptr(m_life), answered = std::move(answered)](sd_bus_message* reply) {
        if (!life.expired()) answered(reply);
      });
}

void FedWindows::watchShell() {
  const std::string rule =
      "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + m_options.shell + "'";
  m_ownerChanges = m_bus.match(rule, [this](sd_bus_message* signal) {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* after = nullptr;
    if (sd_bus_message_read(signal, "sss", &name, &before, &after) > 0) takeOwner(after);
  });
}

void FedWindows::takeFirstOwner(sd_bus_message* reply) {
  const char* owner = nullptr;
  if (reply == nullptr || sd_bus_message_read(reply, "s", &owner) <= 0) return lose();
  takeOwner(owner);
}

// When whoever had it has left.
void FedWindows::watchOwnName() {
  const std::string rule =
      "type='signal',sender='org.freedesktop.DBus',member='NameAcquired',arg0='" + m_options.ownName + "'";
  m_ownNameComes = m_bus.match(rule, [this](sd_bus_message*) { haveOwnName(); });
}

// Another copy that has it is the one that is fed: two would take each other's caller away.
void FedWindows::takeOwnName(sd_bus_message* reply) {
  std::uint32_t outcome = 0;
  const bool isRead = reply != nullptr && sd_bus_message_read(reply, "u", &outcome) > 0;
  if (isRead && outcome == isInQueue) return;
  if (!isRead || (outcome != isOwner && outcome != isAlreadyOwner)) return lose();
  haveOwnName();
}

void FedWindows::haveOwnName() {
  if (std::exchange(m_hasName, true)) return;
  meetShell();
}

void FedWindows::takeOwner(const std::string& owner) {
  if (owner == m_owner) return;
  m_owner = owner;
  m_isFed = false;
  m_absence.reset();
  if (owner.empty()) m_absence = m_loop.after(m_options.longestAbsence, [this] { lose(); });
  meetShell();
}

void FedWindows::meetShell() {
  if (m_hasName && !m_owner.empty()) m_caller->meet(m_owner, [this] { lose(); });
}

const char* FedWindows::take(sd_bus_message* call) {
  const char* const sender = sd_bus_message_get_sender(call);
  if (sender == nullptr || m_owner.empty() || m_owner != sender) {
    ++m_refused;
    return SD_BUS_ERROR_ACCESS_DENIED;
  }
  if (takeKnownMethod(call)) return nullptr;
  ++m_refused;
  return SD_BUS_ERROR_INVALID_ARGS;
}

bool FedWindows::takeKnownMethod(sd_bus_message* call) {
  if (is(call, "Window", "sissssb")) return takeWindow(call);
  if (is(call, "Front", "s")) return takeFront(call);
  if (is(call, "Gone", "s")) return takeGone(call);
  if (is(call, "Ready", "s")) return takeReady(), true;
  if (is(call, "Left", "")) return takeLeft(), true;
  if (!is(call, "Stopped", "")) return false;
  m_isFed = false;
  return true;
}

void FedWindows::takeReady() {
  m_isFed = true;
  m_isListed = false;
  m_absence.reset();
  ++m_listing;
  m_caller->begin();
}

void FedWindows::takeLeft() {
  m_isFed = false;
  m_absence = m_loop.after(m_options.longestAbsence, [this] {
    m_absence.reset();
    forgetAll();
    tell();
  });
}

bool FedWindows::takeWindow(sd_bus_message* call) {
  const char* name = nullptr;
  std::int32_t pid = 0;
  const char* className = nullptr;
  const char* instance = nullptr;
  const char* applicationId = nullptr;
  const char* kind = nullptr;
  int isX11 = 0;
  const bool isRead = sd_bus_message_read(call, "sissssb", &name, &pid, &className, &instance, &applicationId,
                                          &kind, &isX11) > 0;
  if (!isRead || !isName(name) || !kindOf(kind)) return false;
  if (!m_isFed) return true;
  if (m_told.size() >= mostWindows && !m_numbers.contains(name)) return false;
  const WindowId id = numberOf(name);
  Told& told = m_told[id];
  told.isOrphan = told.isOrphan && told.pid == pid;
  told.name = name;
  told.pid = pid;
  told.listing = m_listing;
  told.facts = {.id = id,
                .kind = *kindOf(kind),
                .instance = cut(instance),
                .className = cut(className),
                .applicationId = cut(applicationId),
                .canBeClosed = true,
                .isX11 = isX11 != 0};
  const auto known = m_known.find(id);
  if (known != m_known.end() && known->second.process && known->second.pid == pid) {
    keep(told, {pid, known->second.process});
  } else {
    meet(told);
  }
  return true;
}

bool FedWindows::takeFront(sd_bus_message* call) {
  const char* name = nullptr;
  if (sd_bus_message_read(call, "s", &name) <= 0) return false;
  if (*name != '\0' && !isName(name)) return false;
  if (!m_isFed) return true;
  setActive(name);
  if (!m_isListed) endListing();
  // The one in front may have a descriptor where the others may not.
  const auto told = m_told.find(m_active);
  const auto known = m_known.find(m_active);
  if (told != m_told.end() && known != m_known.end() && !known->second.process) meet(told->second);
  askAgain();
  return true;
}

bool FedWindows::takeGone(sd_bus_message* call) {
  const char* name = nullptr;
  if (sd_bus_message_read(call, "s", &name) <= 0) return false;
  const auto number = m_numbers.find(name);
  if (m_isFed && number != m_numbers.end()) remove(number->second);
  return true;
}

void FedWindows::endListing() {
  m_isListed = true;
  std::vector<WindowId> gone;
  for (const auto& [id, told] : m_told) {
    if (told.listing != m_listing) gone.push_back(id);
  }
  for (const WindowId id : gone) remove(id);
  m_processes.forgetUnused();
  tell();
}

WindowId FedWindows::numberOf(const std::string& name) {
  const auto [number, isNew] = m_numbers.try_emplace(name, m_lastNumber + 1);
  if (isNew) ++m_lastNumber;
  return number->second;
}

void FedWindows::setActive(const std::string& name) {
  if (name == m_front) return;
  // Of one that was never told of nothing else is kept.
  if (!m_told.contains(m_active)) m_numbers.erase(m_front);
  m_front = name;
  m_active = name.empty() ? 0 : numberOf(name);
  tell();
}

void FedWindows::remove(WindowId window) {
  if (window == m_active) setActive({});
  const auto told = m_told.find(window);
  if (told == m_told.end()) return;
  m_numbers.erase(told->second.name);
  m_told.erase(told);
  m_drafts.erase(window);
  m_known.erase(window);
  tell();
}

void FedWindows::meet(const Told& told) {
  const WindowId id = told.facts.id;
  const auto draft = m_drafts.find(id);
  if (draft != m_drafts.end() && draft->second.owner.pid == told.pid) return askAgain();
  m_drafts.erase(id);
  WindowOwner owner = told.isOrphan ? WindowOwner{} : m_processes.believe(m_kernel, told.pid, id == m_active);
  // What belongs to nobody needs no second word.
  if (!owner.process) return keep(told, {});
  if (m_known.erase(id) > 0) tell();
  m_drafts.emplace(id, Draft{std::move(owner), m_question + 1});
  askAgain();
}

void FedWindows::keep(const Told& told, WindowOwner owner) {
  WindowFacts facts = told.facts;
  facts.pid = owner.pid;
  facts.process = std::move(owner.process);
  WindowFacts& known = m_known[facts.id];
  if (known == facts) return;
  known = std::move(facts);
  tell();
}

// One question at a time. One that got no answer is asked again with the next event.
void FedWindows::askAgain() {
  if (m_isAsking || m_drafts.empty()) return;
  m_isAsking = true;
  ++m_question;
  m_caller->ask([this, life = std::weak_ptr(m_life)](bool isAnswered) {
    if (!life.expired()) takeAnswer(isAnswered);
  });
}

void FedWindows::takeAnswer(bool isAnswered) {
  m_isAsking = false;
  if (!isAnswered) return;
  for (auto draft = m_drafts.begin(); draft != m_drafts.end();) {
    if (draft->second.question > m_question) {
      ++draft;
      continue;
    }
    Told& told = m_told.at(draft->first);
    WindowOwner owner = std::move(draft->second.owner);
    draft = m_drafts.erase(draft);
    told.isOrphan = hasEnded(*owner.process);
    keep(told, told.isOrphan ? WindowOwner{} : std::move(owner));
  }
  askAgain();
}

void FedWindows::forget(Pid pid) {
  m_processes.forget(pid);
  std::erase_if(m_drafts, [pid](const auto& entry) { return entry.second.owner.pid == pid; });
  for (auto& [id, told] : m_told) {
    const auto known = m_known.find(id);
    const bool isItsOwn = told.pid == pid;
    told.isOrphan = told.isOrphan || isItsOwn;
    // There is a descriptor now for one that got none before.
    if (isItsOwn || (known != m_known.end() && !known->second.process)) meet(told);
  }
  tell();
}

bool FedWindows::requestClose(const WindowFacts& window) {
  const auto told = m_told.find(window.id);
  return m_isFed && told != m_told.end() && window.canBeClosed && m_caller->requestClose(told->second.name);
}

bool FedWindows::requestFront(const WindowFacts& window) {
  const auto told = m_told.find(window.id);
  return m_isFed && told != m_told.end() && m_caller->requestFront(told->second.name);
}

bool FedWindows::settle(std::chrono::milliseconds limit) {
  m_bus.runUntil([this] { return m_isLost || (m_isListed && m_drafts.empty()); },
                 std::chrono::steady_clock::now() + limit);
  if (m_telling) tellNow();
  return m_isListed && m_drafts.empty();
}

// What comes together is told together.
void FedWindows::tell() {
  if (!m_telling) m_telling = m_loop.after(std::chrono::milliseconds(0), [this] { tellNow(); });
}

void FedWindows::tellNow() {
  m_telling.reset();
  m_isComplete = m_isComplete || (m_isListed && m_drafts.empty());
  m_handlers.changed();
}

void FedWindows::forgetAll() {
  m_front.clear();
  m_active = 0;
  m_isFed = false;
  m_isListed = false;
  m_isComplete = false;
  m_numbers.clear();
  m_told.clear();
  m_drafts.clear();
  m_known.clear();
  m_processes.clear();
}

void FedWindows::lose() {
  if (std::exchange(m_isLost, true)) return;
  m_life = std::make_shared<const bool>();
  m_telling.reset();
  m_absence.reset();
  m_object.reset();
  m_ownerChanges.reset();
  m_owner.clear();
  forgetAll();
  m_handlers.lost();
}

} // namespace vantle
