// SPDX-License-Identifier: MIT
#include "platform/linux/power/LogindPowerAssertions.h"

#include <chrono>
#include <cstdint>
#include <cstring>
#include <limits>

namespace vantle {

namespace {

constexpr std::chrono::milliseconds longestWait{200};

constexpr BusMethod listInhibitors{"org.freedesktop.login1", "/org/freedesktop/login1",
                                   "org.freedesktop.login1.Manager", "ListInhibitors"};

void append(std::vector<PowerAssertions::Assertion>& assertions, const InhibitorHolder& holder) {
  if (holder.kinds.sleep) assertions.push_back({holder.pid, "PreventSystemSleep"});
  if (holder.kinds.idle) {
    assertions.push_back({holder.pid, "PreventUserIdleSystemSleep"});
    assertions.push_back({holder.pid, "PreventUserIdleDisplaySleep"});
  }
}

} // namespace

InhibitorKinds kindsFromList(std::string_view what) {
  InhibitorKinds kinds;
  while (!what.empty()) {
    const std::size_t end = what.find(':');
    const std::string_view kind = what.substr(0, end);
    kinds.sleep = kinds.sleep || kind == "sleep";
    kinds.idle = kinds.idle || kind == "idle";
    what.remove_prefix(end == std::string_view::npos ? what.size() : end + 1);
  }
  return kinds;
}

LogindPowerAssertions::LogindPowerAssertions(BusConnection& systemBus, BusConnection& sessionBus,
                                             const ProcessTable& processes)
    : m_systemBus(systemBus), m_session(sessionBus, processes) {}

std::vector<InhibitorHolder> LogindPowerAssertions::inhibitors(BusDeadline deadline) {
  std::vector<InhibitorHolder> holders;
  if (m_question && !m_question->wait({})) return holders;
  m_question.emplace(m_systemBus);
  m_question->add(m_systemBus.methodCall(listInhibitors));
  m_question->wait(deadline);
  sd_bus_message* reply = m_question->reply(0);
  if (!reply || sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "(ssssuu)") < 0) return holders;

  const char* what = nullptr;
  const char* who = nullptr;
  const char* why = nullptr;
  const char* mode = nullptr;
  std::uint32_t user = 0;
  std::uint32_t pid = 0;
  while (sd_bus_message_read(reply, "(ssssuu)", &what, &who, &why, &mode, &user, &pid) > 0) {
    const InhibitorKinds kinds = kindsFromList(what);
    const bool isProcess = pid >= 1 && pid <= static_cast<std::uint32_t>(std::numeric_limits<Pid>::max());
    if (!isProcess || std::strcmp(mode, "block") != 0 || (!kinds.sleep && !kinds.idle)) continue;
    holders.push_back({static_cast<Pid>(pid), kinds});
  }
  return holders;
}

std::vector<PowerAssertions::Assertion> LogindPowerAssertions::assertions() {
  const BusDeadline deadline = std::chrono::steady_clock::now() + longestWait;
  const std::vector<InhibitorHolder> held = inhibitors(deadline);
  const std::optional<Pid> manager = m_session.manager(deadline);
  std::vector<Assertion> assertions;
  for (const InhibitorHolder& holder : held) {
    if (holder.pid != manager) append(assertions, holder);
  }
  // Not all that a session manager was asked for reaches logind: GNOME's keeps idleness to itself.
  if (manager) {
    for (const InhibitorHolder& holder : m_session.holders(deadline)) append(assertions, holder);
  }
  return assertions;
}

} // namespace vantle
