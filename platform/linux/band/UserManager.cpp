// SPDX-License-Identifier: MIT
#include "platform/linux/band/UserManager.h"

#include <cstdlib>
#include <utility>

namespace vantle {

namespace {

constexpr const char* service = "org.freedesktop.systemd1";
constexpr const char* managerPath = "/org/freedesktop/systemd1";
constexpr const char* managerInterface = "org.freedesktop.systemd1.Manager";

// An order that takes longer has failed. Nobody waits that long for it, but a machine that swaps may.
constexpr std::chrono::seconds orderLimit{25};

std::string interfaceOf(const std::string& unit) {
  if (unit.ends_with(".scope")) return "org.freedesktop.systemd1.Scope";
  if (unit.ends_with(".slice")) return "org.freedesktop.systemd1.Slice";
  return "org.freedesktop.systemd1.Service";
}

std::string objectPath(const std::string& unit) {
  char* encoded = nullptr;
  if (sd_bus_path_encode("/org/freedesktop/systemd1/unit", unit.c_str(), &encoded) < 0) return {};
  std::string path(encoded);
  std::free(encoded); // NOLINT(cppcoreguidelines-no-malloc): sd-bus allocates it so
  return path;
}

BusConnection::Reply succeeded(UserManager::Done done) {
  return [done = std::move(done)](sd_bus_message* reply) { done(reply != nullptr); };
}

} // namespace

UserManager::UserManager(EventLoop& loop, const std::string& address) {
  if (!address.empty()) m_bus.emplace(loop, address);
}

BusMessage UserManager::managerCall(const char* member) {
  return m_bus ? m_bus->methodCall({service, managerPath, managerInterface, member}) : nullptr;
}

void UserManager::send(BusMessage message, BusConnection::Reply reply) {
  if (!message) return reply(nullptr);
  // Where nobody has the name there is no manager, and none is to be started for this.
  sd_bus_message_set_auto_start(message.get(), 0);
  ++*m_open;
  auto handler = std::make_shared<BusConnection::Reply>(std::move(reply));
  const bool queued =
      m_bus->callAsync(std::move(message), orderLimit, [open = m_open, handler](sd_bus_message* answer) {
        --*open;
        (*handler)(answer);
      });
  if (!queued) {
    --*m_open;
    (*handler)(nullptr);
  }
}

void UserManager::getWeight(const std::string& unit, Weight weight) {
  const std::string path = objectPath(unit);
  const std::string interface = interfaceOf(unit);
  BusMessage message =
      m_bus && !path.empty()
          ? m_bus->methodCall({service, path.c_str(), "org.freedesktop.DBus.Properties", "Get"})
          : nullptr;
  if (message && sd_bus_message_append(message.get(), "ss", interface.c_str(), "CPUWeight") < 0) {
    message.reset();
  }
  send(std::move(message), [weight = std::move(weight)](sd_bus_message* reply) {
    std::uint64_t value = 0;
    const bool isRead = reply && sd_bus_message_read(reply, "v", "t", &value) > 0;
    weight(isRead ? std::optional(value) : std::nullopt);
  });
}

void UserManager::setWeight(const std::string& unit, std::uint64_t weight, Done done) {
  constexpr int runtimeOnly = 1;
  BusMessage message = managerCall("SetUnitProperties");
  if (message && sd_bus_message_append(message.get(), "sba(sv)", unit.c_str(), runtimeOnly, 1, "CPUWeight",
                                       "t", weight) < 0) {
    message.reset();
  }
  send(std::move(message), succeeded(std::move(done)));
}

void UserManager::startScope(const std::string& unit, std::span<const Pid> pids, Done done) {
  BusMessage message = managerCall("StartTransientUnit");
  const auto append = [&] {
    sd_bus_message* to = message.get();
    if (sd_bus_message_append(to, "ss", unit.c_str(), "fail") < 0) return false;
    if (sd_bus_message_open_container(to, 'a', "(sv)") < 0 ||
        sd_bus_message_open_container(to, 'r', "sv") < 0 || sd_bus_message_append(to, "s", "PIDs") < 0 ||
        sd_bus_message_open_container(to, 'v', "au") < 0 ||
        sd_bus_message_append_array(to, 'u', pids.data(), pids.size_bytes()) < 0 ||
        sd_bus_message_close_container(to) < 0 || sd_bus_message_close_container(to) < 0) {
      return false;
    }
    // Without delegation the manager would not let the app's later processes be attached.
    return sd_bus_message_append(to, "(sv)(sv)", "Slice", "s", "app.slice", "Delegate", "b", 1) >= 0 &&
           sd_bus_message_close_container(to) >= 0 && sd_bus_message_append(to, "a(sa(sv))", 0) >= 0;
  };
  if (message && !append()) message.reset();
  send(std::move(message), succeeded(std::move(done)));
}

void UserManager::attach(const std::string& unit, Pid pid, Done done) {
  BusMessage message = managerCall("AttachProcessesToUnit");
  if (message && sd_bus_message_append(message.get(), "ssau", unit.c_str(), "", 1, pid) < 0) message.reset();
  send(std::move(message), succeeded(std::move(done)));
}

void UserManager::barrier(Done done) {
  // A weight takes effect between two messages, so the answer to a later one says that it has.
  BusMessage message =
      m_bus ? m_bus->methodCall({service, managerPath, "org.freedesktop.DBus.Peer", "Ping"}) : nullptr;
  send(std::move(message), succeeded(std::move(done)));
}

bool UserManager::finish(Deadline deadline) {
  if (!m_bus || *m_open == 0) return true;
  m_bus->runUntil([this] { return *m_open == 0; }, deadline);
  m_isLate = *m_open > 0;
  return !m_isLate;
}

} // namespace vantle
