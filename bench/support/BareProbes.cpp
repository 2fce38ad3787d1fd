// SPDX-License-Identifier: MIT
#include "bench/support/BareProbes.h"

#include <array>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <pulse/pulseaudio.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

namespace vantle::bench {

namespace {

void readFile(const char* path) {
  std::array<char, 4096> text{};
  const int file = ::open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return;
  (void)!::read(file, text.data(), text.size());
  ::close(file);
}

void readFileOf(const char* pid, const char* name) {
  std::array<char, 300> path{};
  std::snprintf(path.data(), path.size(), "/proc/%s/%s", pid, name);
  readFile(path.data());
}

bool isRunning(pa_operation* operation) { return pa_operation_get_state(operation) == PA_OPERATION_RUNNING; }

} // namespace

BareSound::BareSound(const std::string& server)
    : m_loop(pa_mainloop_new()), m_context(pa_context_new(pa_mainloop_get_api(m_loop), "bench")) {
  pa_context_connect(m_context, server.c_str(), PA_CONTEXT_NOAUTOSPAWN, nullptr);
  while (PA_CONTEXT_IS_GOOD(pa_context_get_state(m_context)) &&
         pa_context_get_state(m_context) != PA_CONTEXT_READY) {
    pa_mainloop_iterate(m_loop, 1, nullptr);
  }
}

BareSound::~BareSound() {
  pa_context_disconnect(m_context);
  pa_context_unref(m_context);
  pa_mainloop_free(m_loop);
}

void BareSound::ask() {
  pa_operation* inputs = pa_context_get_sink_input_info_list(
      m_context, [](pa_context*, const pa_sink_input_info*, int, void*) {}, nullptr);
  pa_operation* clients = pa_context_get_client_info_list(
      m_context, [](pa_context*, const pa_client_info*, int, void*) {}, nullptr);
  if (!inputs || !clients) return;
  while (isRunning(inputs) || isRunning(clients)) pa_mainloop_iterate(m_loop, 1, nullptr);
  pa_operation_unref(inputs);
  pa_operation_unref(clients);
}

BareInhibitors::BareInhibitors(const std::string& busAddress) {
  sd_bus_new(&m_bus);
  sd_bus_set_address(m_bus, busAddress.c_str());
  sd_bus_set_bus_client(m_bus, 1);
  sd_bus_start(m_bus);
}

BareInhibitors::~BareInhibitors() { sd_bus_flush_close_unref(m_bus); }

void BareInhibitors::ask() {
  sd_bus_message* reply = nullptr;
  sd_bus_call_method(m_bus, "org.freedesktop.login1", "/org/freedesktop/login1",
                     "org.freedesktop.login1.Manager", "ListInhibitors", nullptr, &reply, nullptr);
  sd_bus_message_unref(reply);
}

void readBareRefresh(const std::vector<pid_t>& ofSlowedApps) {
  DIR* folder = ::opendir("/proc");
  while (const dirent* entry = folder ? ::readdir(folder) : nullptr) {
    if (entry->d_name[0] >= '1' && entry->d_name[0] <= '9') readFileOf(entry->d_name, "stat");
  }
  if (folder) ::closedir(folder);
  for (const pid_t pid : ofSlowedApps) readFileOf(std::to_string(pid).c_str(), "status");
  readFile("/proc/pressure/memory");
  readFile("/proc/self/status");
}

} // namespace vantle::bench
