// SPDX-License-Identifier: MIT
#include "platform/linux/power/SessionInhibitors.h"

#include "base/Text.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <set>
#include <utility>

namespace vantle {

namespace {

constexpr const char* managerName = "org.gnome.SessionManager";
constexpr const char* managerPath = "/org/gnome/SessionManager";
constexpr const char* inhibitorInterface = "org.gnome.SessionManager.Inhibitor";
constexpr const char* clientInterface = "org.gnome.SessionManager.Client";

// Of GNOME's session manager; the others are logging out, switching the user and mounting media.
constexpr std::uint32_t flagSuspend = 4;
constexpr std::uint32_t flagIdle = 8;

constexpr std::size_t mostInhibitors = 64; // a session has a handful

std::optional<std::uint32_t> number(sd_bus_message* reply) {
  std::uint32_t value = 0;
  if (!reply || sd_bus_message_read(reply, "u", &value) <= 0) return std::nullopt;
  return value;
}

std::optional<Pid> processId(sd_bus_message* reply) {
  const std::optional<std::uint32_t> value = number(reply);
  if (!value || *value < 1 || *value > static_cast<std::uint32_t>(std::numeric_limits<Pid>::max())) {
    return std::nullopt;
  }
  return static_cast<Pid>(*value);
}

std::string text(sd_bus_message* reply, char type) {
  const char* value = nullptr;
  if (!reply || sd_bus_message_read_basic(reply, type, static_cast<void*>(&value)) <= 0) return {};
  return value;
}

std::string_view behindLast(std::string_view value, char separator) {
  return value.substr(value.rfind(separator) + 1); // npos + 1 is 0
}

} // namespace

bool isProgramOfApp(std::string_view path, std::string_view appId) {
  const std::string program = asciiLowered(behindLast(path, '/'));
  const std::string whole = asciiLowered(behindLast(appId, '/'));
  for (const std::string_view name : {std::string_view(whole), behindLast(whole, '.')}) {
    if (name.empty() || !std::string_view(program).starts_with(name)) continue;
    if (program.size() == name.size() || program[name.size()] == '-') return true;
  }
  return false;
}

struct SessionInhibitors::Inhibitor {
  InhibitorKinds kinds;
  std::string client;
  std::string appId;
};

BusMessage SessionInhibitors::bus(const char* member, const char* name) {
  BusMessage message =
      m_bus.methodCall({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", member});
  if (message) sd_bus_message_append(message.get(), "s", name);
  return message;
}

std::optional<Pid> SessionInhibitors::manager(BusDeadline deadline) {
  if (m_nameQuestion && !m_nameQuestion->wait({})) return std::nullopt;
  m_nameQuestion.emplace(m_bus);
  m_nameQuestion->add(bus("GetConnectionUnixProcessID", managerName));
  m_nameQuestion->wait(deadline);
  return processId(m_nameQuestion->reply(0));
}

std::vector<std::string> SessionInhibitors::inhibitorPaths(BusDeadline deadline) {
  std::vector<std::string> paths;
  if (m_managerQuestion && !m_managerQuestion->wait({})) return paths;
  m_managerQuestion.emplace(m_bus);
  m_managerQuestion->add(m_bus.methodCall({managerName, managerPath, managerName, "GetInhibitors"}));
  m_managerQuestion->wait(deadline);
  sd_bus_message* reply = m_managerQuestion->reply(0);
  const char* path = nullptr;
  if (!reply || sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "o") < 0) return paths;
  while (paths.size() < mostInhibitors && sd_bus_message_read(reply, "o", &path) > 0)
    paths.emplace_back(path);
  return paths;
}

std::vector<InhibitorHolder> SessionInhibitors::holders(BusDeadline deadline) {
  const std::vector<std::string> paths = inhibitorPaths(deadline);
  constexpr std::size_t questions = 3;
  BusBatch details(m_bus);
  for (const std::string& path : paths) {
    for (const char* member : {"GetFlags", "GetClientId", "GetAppId"}) {
      details.add(m_bus.methodCall({managerName, path.c_str(), inhibitorInterface, member}));
    }
  }
  details.wait(deadline);
  std::vector<Inhibitor> inhibitors;
  for (std::size_t at = 0; at < paths.size() * questions; at += questions) {
    const std::uint32_t flags = number(details.reply(at)).value_or(0);
    const InhibitorKinds kinds{(flags & flagSuspend) != 0, (flags & flagIdle) != 0};
    if (!kinds.sleep && !kinds.idle) continue;
    inhibitors.push_back({kinds, text(details.reply(at + 1), 'o'), text(details.reply(at + 2), 's')});
  }

  BusBatch processes(m_bus);
  for (const Inhibitor& inhibitor : inhibitors) {
    const bool hasClient = inhibitor.client.size() > 1; // "/" stands for none
    processes.add(hasClient ? m_bus.methodCall({managerName, inhibitor.client.c_str(), clientInterface,
                                                "GetUnixProcessId"})
                            : nullptr);
    processes.add(bus("GetConnectionUnixProcessID", inhibitor.appId.c_str()));
  }
  processes.wait(deadline);
  std::vector<InhibitorHolder> holders;
  for (std::size_t at = 0; at < inhibitors.size(); ++at) {
    std::optional<Pid> pid = processId(processes.reply(2 * at));
    if (!pid) pid = processId(processes.reply(2 * at + 1));
    const std::vector<Pid> pids = pid ? std::vector<Pid>{*pid} : programsCalled(inhibitors[at].appId);
    for (const Pid found : pids) holders.push_back({found, inhibitors[at].kinds});
  }
  return holders;
}

// Rather one process too many at full speed than a download slowed down.
std::vector<Pid> SessionInhibitors::programsCalled(const std::string& appId) const {
  std::vector<Pid> pids;
  if (appId.empty()) return pids;
  for (const ProcessRecord& process : m_processes.scan()) {
    const std::optional<std::string> path = m_processes.executablePathBytes(process.pid);
    if (path && isProgramOfApp(*path, appId)) pids.push_back(process.pid);
  }
  return pids;
}

} // namespace vantle
