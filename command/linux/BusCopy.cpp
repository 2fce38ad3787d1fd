// SPDX-License-Identifier: MIT
#include "command/linux/BusCopy.h"

#include "base/Names.h"
#include "command/linux/BusDictionaries.h"
#include "status/Interface.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <optional>
#include <poll.h>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace vantle {
namespace {

using Steady = std::chrono::steady_clock;

constexpr std::chrono::seconds longestAnswer{5};
constexpr std::chrono::milliseconds forEver = std::chrono::milliseconds::max();

constexpr const char* properties = "org.freedesktop.DBus.Properties";

struct UnrefSlot {
  void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
using Slot = std::unique_ptr<sd_bus_slot, UnrefSlot>;

Failure failureOf(const sd_bus_error& error) {
  const std::string_view name = error.name != nullptr ? error.name : "";
  if (name == "org.freedesktop.DBus.Error.ServiceUnknown" ||
      name == "org.freedesktop.DBus.Error.NameHasNoOwner") {
    return {Failure::Kind::notRunning, {}};
  }
  // It is about to end: it answers for nothing any more, or has left while the bus waited for its answer.
  if (name == "org.freedesktop.DBus.Error.UnknownObject" ||
      name == "org.freedesktop.DBus.Error.UnknownInterface" || name == "org.freedesktop.DBus.Error.NoReply") {
    return {Failure::Kind::notRunning, {}};
  }
  if (name == "org.freedesktop.DBus.Error.Disconnected") return {Failure::Kind::silent, {}};
  return {Failure::Kind::refused, error.message != nullptr ? error.message : std::string(name)};
}

Failure noBus() { return {Failure::Kind::notRunning, "there is no session bus here to ask on."}; }
Failure notUnderstood() { return {Failure::Kind::refused, "the running Vantle answers in another way."}; }

int keepReply(sd_bus_message* message, void* data, sd_bus_error*) {
  *static_cast<sd_bus_message**>(data) = sd_bus_message_ref(message);
  return 1;
}

// What a copy that is followed tells by itself.
struct News {
  std::string copy; // its name on the bus
  Status status;
  const std::function<bool(const Status&)>& tell;
  bool hasEnded = false;
  bool isOdd = false;
  bool isUnheard = false;

  void pass() { isUnheard = !tell(status); }
  bool isOver() const { return hasEnded || isOdd || isUnheard; }
};

int takeChange(sd_bus_message* message, void* data, sd_bus_error*) {
  News& news = *static_cast<News*>(data);
  const char* const sender = sd_bus_message_get_sender(message);
  const char* interface = nullptr;
  if (sender == nullptr || news.copy != sender) return 0;
  if (sd_bus_message_read_basic(message, 's', &interface) < 0) return 0;
  if (std::string_view(interface) != boost1::interface) return 0;
  news.isOdd = !readStatus(message, news.status);
  if (!news.isOdd && !news.isOver()) news.pass();
  return 0;
}

int takeOwner(sd_bus_message* message, void* data, sd_bus_error*) {
  News& news = *static_cast<News*>(data);
  const char* name = nullptr;
  const char* before = nullptr;
  const char* after = nullptr;
  if (sd_bus_message_read(message, "sss", &name, &before, &after) < 0) return 0;
  if (std::string_view(name) == names::identifier && news.copy != after) news.hasEnded = true;
  return 0;
}

} // namespace

bool BusCopy::awaitNews(std::chrono::milliseconds limit) {
  std::uint64_t due = 0;
  if (sd_bus_get_timeout(m_bus.get(), &due) > 0 && due != UINT64_MAX) {
    const auto wait = std::chrono::microseconds(due) - Steady::now().time_since_epoch();
    limit =
        std::clamp(std::chrono::ceil<std::chrono::milliseconds>(wait), std::chrono::milliseconds(0), limit);
  }
  const int events = sd_bus_get_events(m_bus.get());
  // Of the output only its end is of interest, which nobody has to ask for.
  std::array<pollfd, 2> descriptors{pollfd{sd_bus_get_fd(m_bus.get()), static_cast<short>(events), 0},
                                    pollfd{STDOUT_FILENO, 0, 0}};
  const int wait = limit == forEver ? -1 : static_cast<int>(limit.count());
  if (::poll(descriptors.data(), descriptors.size(), wait) < 0) return errno == EINTR;
  return (descriptors[1].revents & (POLLERR | POLLHUP)) == 0;
}

bool BusCopy::serve(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  const auto begin = Steady::now();
  while (!condition()) {
    const int processed = sd_bus_process(m_bus.get(), nullptr);
    if (processed < 0) return condition();
    if (processed > 0) continue;
    std::chrono::milliseconds left = limit;
    if (limit != forEver) {
      left -= std::chrono::duration_cast<std::chrono::milliseconds>(Steady::now() - begin);
      if (left.count() <= 0) return false;
    }
    if (!awaitNews(left)) return false;
  }
  return true;
}

Answer<BusCopy::Message> BusCopy::ask(const char* interface, const char* member, const Fill& fill) {
  if (!m_bus) {
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0) return noBus();
    m_bus.reset(bus);
  }
  sd_bus_message* call = nullptr;
  if (sd_bus_message_new_method_call(m_bus.get(), &call, names::identifier, names::busPath, interface,
                                     member) < 0) {
    return noBus();
  }
  const Message owned(call);
  sd_bus_message_set_auto_start(call, 0);
  if (fill && fill(call) < 0) return Failure{Failure::Kind::refused, "the argument is no text."};
  sd_bus_message* reply = nullptr;
  sd_bus_slot* slot = nullptr;
  if (sd_bus_call_async(m_bus.get(), &slot, call, keepReply, &reply, 0) < 0) return noBus();
  const Slot waiting(slot);
  const bool isThere = serve([&] { return reply != nullptr; }, longestAnswer);
  Message answer(reply);
  if (!isThere) return Failure{Failure::Kind::silent, {}};
  if (sd_bus_message_is_method_error(reply, nullptr) > 0) return failureOf(*sd_bus_message_get_error(reply));
  return answer;
}

Done BusCopy::order(const char* member, const Fill& fill) {
  Answer<Message> answer = ask(boost1::interface, member, fill);
  if (auto* const failure = std::get_if<Failure>(&answer)) return std::move(*failure);
  return std::monostate{};
}

Answer<BusCopy::Message> BusCopy::askAll() {
  return ask(properties, "GetAll",
             [](sd_bus_message* call) { return sd_bus_message_append(call, "s", boost1::interface); });
}

Answer<Status> BusCopy::status() {
  Answer<Message> answer = askAll();
  if (auto* const failure = std::get_if<Failure>(&answer)) return std::move(*failure);
  Status status;
  if (!readStatus(std::get<Message>(answer).get(), status)) return notUnderstood();
  return status;
}

Failure BusCopy::follow(const std::function<bool(const Status&)>& tell) {
  // Whoever has asked is told of every change after the answer.
  Answer<Message> answer = askAll();
  if (auto* const failure = std::get_if<Failure>(&answer)) return std::move(*failure);
  sd_bus_message* const reply = std::get<Message>(answer).get();
  News news{sd_bus_message_get_sender(reply), {}, tell};
  if (!readStatus(reply, news.status)) return notUnderstood();
  sd_bus_slot* changes = nullptr;
  sd_bus_slot* owners = nullptr;
  const bool isListening =
      sd_bus_match_signal_async(m_bus.get(), &changes, nullptr, names::busPath, properties,
                                "PropertiesChanged", takeChange, nullptr, &news) >= 0 &&
      sd_bus_match_signal_async(m_bus.get(), &owners, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                "org.freedesktop.DBus", "NameOwnerChanged", takeOwner, nullptr, &news) >= 0;
  const Slot changeSlot(changes);
  const Slot ownerSlot(owners);
  if (!isListening) return noBus();
  news.pass();
  serve([&] { return news.isOver(); }, forEver);
  if (news.isOdd) return notUnderstood();
  const bool hasBus = sd_bus_is_open(m_bus.get()) > 0;
  return {news.hasEnded || !hasBus ? Failure::Kind::notRunning : Failure::Kind::unheard, {}};
}

Answer<std::vector<AppStatus>> BusCopy::why(const std::string& target) {
  Answer<Message> answer = ask(boost1::interface, boost1::why, [&](sd_bus_message* call) {
    return sd_bus_message_append(call, "s", target.c_str());
  });
  if (auto* const failure = std::get_if<Failure>(&answer)) return std::move(*failure);
  std::vector<AppStatus> apps;
  if (!readApps(std::get<Message>(answer).get(), apps)) return notUnderstood();
  return apps;
}

Done BusCopy::boost(const std::string& target) {
  return order(boost1::boost,
               [&](sd_bus_message* call) { return sd_bus_message_append(call, "s", target.c_str()); });
}

Done BusCopy::off() { return order(boost1::off); }

Done BusCopy::pause(std::chrono::seconds duration) {
  const auto seconds = static_cast<std::uint32_t>(duration.count());
  return order(boost1::pause,
               [&](sd_bus_message* call) { return sd_bus_message_append(call, "u", seconds); });
}

Answer<std::string> BusCopy::report(bool withNames) {
  Answer<Message> answer = ask(boost1::interface, boost1::report, [&](sd_bus_message* call) {
    return sd_bus_message_append(call, "b", withNames ? 1 : 0);
  });
  if (auto* const failure = std::get_if<Failure>(&answer)) return std::move(*failure);
  const char* text = nullptr;
  if (sd_bus_message_read_basic(std::get<Message>(answer).get(), 's', &text) < 0) return notUnderstood();
  return std::string(text);
}

} // namespace vantle
