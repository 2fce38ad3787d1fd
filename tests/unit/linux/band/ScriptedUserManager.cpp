// SPDX-License-Identifier: MIT
#include "tests/unit/linux/band/ScriptedUserManager.h"

#include "platform/linux/bus/BusTypes.h"
#include "tests/support/Wait.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <poll.h>
#include <set>
#include <sstream>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace vantle::test {

namespace {

namespace fs = std::filesystem;

void write(const fs::path& path, const std::string& text) { std::ofstream(path) << text; }

std::string managerFolder() {
  const std::string user = std::to_string(::geteuid());
  return "/user.slice/user-" + user + ".slice/user@" + user + ".service";
}

struct CloseBus {
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};

} // namespace

FakeControlGroups::FakeControlGroups() {
  const fs::path root = below("");
  fs::create_directories(root);
  write(root / "cgroup.controllers", "cpu io memory pids\n");
  for (const std::string& path : {appSlice(), loginSession()}) {
    fs::create_directories(below(path));
    write(below(path) / "cgroup.procs", "");
    write(below(path) / "cpu.weight", "100\n");
  }
  write(below(managerFolder()) / "cgroup.controllers", "cpu memory pids\n");
  fs::create_directories(procRoot());
  for (const char* link : {"loadavg", "sys", "self"}) {
    fs::create_symlink(fs::path("/proc") / link, fs::path(procRoot()) / link);
  }
}

std::string FakeControlGroups::appSlice() { return managerFolder() + "/app.slice"; }

std::string FakeControlGroups::loginSession() {
  return "/user.slice/user-" + std::to_string(::geteuid()) + ".slice/session-3.scope";
}

fs::path FakeControlGroups::below(const std::string& path) const {
  return m_folder.path() / ("sys/fs/cgroup" + path);
}

void FakeControlGroups::place(Pid pid, const std::string& path) {
  const std::lock_guard lock(m_mutex);
  const fs::path process = fs::path(procRoot()) / std::to_string(pid);
  const fs::path real = fs::path("/proc") / std::to_string(pid);
  fs::create_directories(process);
  std::error_code known;
  for (const char* link : {"stat", "status", "task", "autogroup"}) {
    fs::create_symlink(real / link, process / link, known);
  }
  write(process / "cgroup", "0::" + path + "\n");
  if (!fs::exists(below(path))) {
    fs::create_directories(below(path));
    write(below(path) / "cpu.weight", "100\n");
    write(below(path) / "cpu.idle", "0\n");
  }
  const std::string before = std::exchange(m_paths[pid], path);
  if (!before.empty()) writeMembers(before);
  writeMembers(path);
}

void FakeControlGroups::setComputing(Pid pid, bool computes) const {
  const fs::path process = fs::path(procRoot()) / std::to_string(pid);
  const fs::path thread = fs::path("task") / std::to_string(pid);
  const fs::path file = fs::path("/proc") / std::to_string(pid) / thread / "stat";
  if (fs::is_symlink(process / "task")) fs::remove(process / "task");
  fs::create_directories(process / thread);
  const fs::path next = process / "next";
  if (computes) {
    std::string text;
    std::ifstream stat(file);
    std::getline(stat, text);
    write(next, text.replace(text.rfind(") ") + 2, 1, "R") + "\n");
  } else {
    fs::create_symlink(file, next);
  }
  fs::rename(next, process / thread / "stat"); // in one step: somebody may be reading
}

void FakeControlGroups::writeMembers(const std::string& path) {
  std::string pids;
  for (const auto& [pid, at] : m_paths) {
    if (at == path) pids += std::to_string(pid) + "\n";
  }
  write(below(path) / "cgroup.procs", pids);
}

std::string FakeControlGroups::pathOf(Pid pid) {
  const std::lock_guard lock(m_mutex);
  return m_paths[pid];
}

void FakeControlGroups::setIdle(const std::string& path, bool idle) {
  if (fs::exists(below(path))) write(below(path) / "cpu.idle", idle ? "1\n" : "0\n");
}

std::string FakeControlGroups::idle(const std::string& path) {
  std::ifstream file(below(path) / "cpu.idle");
  std::string text;
  std::getline(file, text);
  return text;
}

void FakeControlGroups::removeFolder(const std::string& path) { fs::remove_all(below(path)); }

ScriptedUserManager::ScriptedUserManager(std::string address, FakeControlGroups& groups)
    : m_address(std::move(address)), m_groups(groups) {
  connect();
}

ScriptedUserManager::~ScriptedUserManager() { disconnect(); }

void ScriptedUserManager::connect() {
  m_stop = ::eventfd(0, EFD_CLOEXEC);
  m_thread = std::thread([this, stop = m_stop] { run(stop); });
  desktop::require("the manager's name", [this] { return m_hasName.load(); });
}

void ScriptedUserManager::disconnect() {
  if (!m_thread.joinable()) return;
  const std::uint64_t one = 1;
  (void)!::write(m_stop, &one, sizeof one);
  m_thread.join();
  ::close(m_stop);
  m_hasName = false;
}

void ScriptedUserManager::run(int stop) {
  sd_bus* opened = nullptr;
  sd_bus_new(&opened);
  const std::unique_ptr<sd_bus, CloseBus> bus(opened);
  sd_bus_set_address(opened, m_address.c_str());
  sd_bus_set_bus_client(opened, 1);
  if (sd_bus_start(opened) < 0 || sd_bus_add_filter(opened, nullptr, serve, this) < 0 ||
      sd_bus_request_name(opened, "org.freedesktop.systemd1", 0) < 0) {
    return;
  }
  m_hasName = true;
  for (;;) {
    const int processed = sd_bus_process(opened, nullptr);
    if (processed > 0) continue;
    std::array<pollfd, 2> waits{{{stop, POLLIN, 0}, {sd_bus_get_fd(opened), POLLIN, 0}}};
    const int events = sd_bus_get_events(opened);
    waits[1].events = static_cast<short>(events < 0 ? 0 : events);
    if (processed < 0) waits[1].fd = -1; // the bus has gone; only the test ends this thread
    ::poll(waits.data(), waits.size(), -1);
    if ((waits[0].revents & POLLIN) != 0) return;
  }
}

int ScriptedUserManager::serve(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
  if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) return 0;
  auto& manager = *static_cast<ScriptedUserManager*>(self);
  std::this_thread::sleep_for(manager.m_delay.load()); // a slow manager is what some tests are about
  if (manager.m_mood == Mood::silent) return 1;
  const std::string_view member = sd_bus_message_get_member(message);
  if (member != "Ping" && manager.m_mood == Mood::refusing) {
    return sd_bus_reply_method_errorf(message, SD_BUS_ERROR_ACCESS_DENIED, "no");
  }
  if (manager.answer(message) < 0) {
    return sd_bus_reply_method_errorf(message, "org.freedesktop.systemd1.NoSuchUnit", "no such unit");
  }
  return 1;
}

int ScriptedUserManager::answer(sd_bus_message* message) {
  const std::string_view member = sd_bus_message_get_member(message);
  if (member == "SetUnitProperties") return setProperties(message);
  if (member == "StartTransientUnit") return startScope(message);
  if (member == "AttachProcessesToUnit") return attach(message);
  if (member == "Get") return getProperty(message);
  return sd_bus_reply_method_return(message, "");
}

int ScriptedUserManager::setProperties(sd_bus_message* message) {
  const char* unit = nullptr;
  const char* property = nullptr;
  int runtime = 0;
  std::uint64_t weight = 0;
  if (sd_bus_message_read(message, "sb", &unit, &runtime) < 0 ||
      sd_bus_message_enter_container(message, 'a', "(sv)") < 0 ||
      sd_bus_message_read(message, "(sv)", &property, "t", &weight) < 0) {
    return -1;
  }
  note(std::string("SetUnitProperties ") + unit + (runtime != 0 ? " runtime " : " persistent ") + property +
       " " + (weight == notSet ? "unset" : std::to_string(weight)));
  {
    const std::lock_guard lock(m_mutex);
    if (m_weights.find(unit) == m_weights.end()) return -1;
  }
  if (m_mood != Mood::lying) setWeight(unit, weight);
  return sd_bus_reply_method_return(message, "");
}

int ScriptedUserManager::startScope(sd_bus_message* message) {
  const char* unit = nullptr;
  const char* mode = nullptr;
  const char* property = nullptr;
  const void* data = nullptr;
  std::size_t size = 0;
  if (sd_bus_message_read(message, "ss", &unit, &mode) < 0 ||
      sd_bus_message_enter_container(message, 'a', "(sv)") < 0 ||
      sd_bus_message_enter_container(message, 'r', "sv") < 0 ||
      sd_bus_message_read(message, "s", &property) < 0 ||
      sd_bus_message_enter_container(message, 'v', "au") < 0 ||
      sd_bus_message_read_array(message, 'u', &data, &size) < 0) {
    return -1;
  }
  const auto* first = static_cast<const Pid*>(data);
  const std::vector<Pid> pids(first, first + size / sizeof(Pid));
  note(std::string("StartTransientUnit ") + unit + " " + mode + " " + std::to_string(pids.size()));
  for (const Pid pid : pids) {
    if (::kill(pid, 0) != 0) return -1;
  }
  addUnit(unit);
  if (!move(unit, pids)) return -1;
  return sd_bus_reply_method_return(message, "o", "/org/freedesktop/systemd1/job/1");
}

int ScriptedUserManager::attach(sd_bus_message* message) {
  const char* unit = nullptr;
  const char* inner = nullptr;
  const void* data = nullptr;
  std::size_t size = 0;
  if (sd_bus_message_read(message, "ss", &unit, &inner) < 0 ||
      sd_bus_message_read_array(message, 'u', &data, &size) < 0) {
    return -1;
  }
  const auto* first = static_cast<const Pid*>(data);
  note(std::string("AttachProcessesToUnit ") + unit);
  if (!move(unit, {first, first + size / sizeof(Pid)})) return -1;
  return sd_bus_reply_method_return(message, "");
}

int ScriptedUserManager::getProperty(sd_bus_message* message) {
  char* decoded = nullptr;
  if (sd_bus_path_decode(sd_bus_message_get_path(message), "/org/freedesktop/systemd1/unit", &decoded) <= 0) {
    return -1;
  }
  const std::string unit(decoded);
  std::free(decoded); // NOLINT(cppcoreguidelines-no-malloc)
  note("Get " + unit);
  std::uint64_t weight = notSet; // also of a unit that is not there, as the real one has it
  {
    const std::lock_guard lock(m_mutex);
    const auto known = m_weights.find(unit);
    if (known != m_weights.end()) weight = known->second;
  }
  return sd_bus_reply_method_return(message, "v", "t", weight);
}

bool ScriptedUserManager::move(const std::string& unit, const std::vector<Pid>& pids) {
  for (const Pid pid : pids) m_groups.place(pid, FakeControlGroups::appSlice() + "/" + unit);
  return true;
}

void ScriptedUserManager::addUnit(const std::string& name, std::uint64_t weight) {
  const std::lock_guard lock(m_mutex);
  m_weights[name] = weight;
}

std::uint64_t ScriptedUserManager::weight(const std::string& name) {
  const std::lock_guard lock(m_mutex);
  const auto known = m_weights.find(name);
  return known == m_weights.end() ? notSet : known->second;
}

void ScriptedUserManager::setWeight(const std::string& name, std::uint64_t weight) {
  {
    const std::lock_guard lock(m_mutex);
    m_weights[name] = weight;
  }
  m_groups.setIdle(FakeControlGroups::appSlice() + "/" + name, weight == 0);
}

void ScriptedUserManager::note(std::string order) {
  const std::lock_guard lock(m_mutex);
  m_orders.push_back(std::move(order));
}

std::vector<std::string> ScriptedUserManager::takeOrders() {
  const std::lock_guard lock(m_mutex);
  return std::exchange(m_orders, {});
}

} // namespace vantle::test
