// SPDX-License-Identifier: MIT
#include "tests/soak/MainLoopWatch.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <systemd/sd-bus.h>
#include <utility>

namespace vantle::soak {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr auto pause = 50ms;
constexpr std::uint64_t longestAnswer = 30'000'000; // us; somebody stopped the program or the bus

// How long a thread has been ready to run without a processor, in ns.
unsigned long long waitedOfThread(const fs::path& folder) {
  unsigned long long ran = 0;
  unsigned long long waiting = 0;
  std::ifstream(folder / "schedstat") >> ran >> waiting;
  return waiting;
}

unsigned long long waited(Pid process) {
  unsigned long long sum = 0;
  std::error_code error;
  for (fs::directory_iterator entry("/proc/" + std::to_string(process) + "/task", error), end;
       !error && entry != end; entry.increment(error)) {
    sum += waitedOfThread(entry->path());
  }
  return sum;
}

} // namespace

MainLoopWatch::MainLoopWatch(std::string address)
    : m_address(std::move(address)), m_thread([this] { run(); }) {}

MainLoopWatch::~MainLoopWatch() {
  m_isOver = true;
  m_thread.join();
}

void MainLoopWatch::watch(Pid program, Pid bus) {
  m_program = program;
  m_bus = bus;
}

void MainLoopWatch::beginDisturbance() {
  ++m_disturbances;
  m_isDisturbed = true;
}

void MainLoopWatch::endDisturbance() { --m_disturbances; }

MainLoopWatch::Counts MainLoopWatch::counts() const {
  const std::lock_guard lock(m_mutex);
  return m_counts;
}

void MainLoopWatch::note(std::chrono::milliseconds late, bool isDisturbed) {
  const std::lock_guard lock(m_mutex);
  ++m_counts.answers;
  long& longest = isDisturbed ? m_counts.longestDisturbed : m_counts.longest;
  longest = std::max<long>(longest, late.count());
  if (late > allowed) ++(isDisturbed ? m_counts.disturbedStalls : m_counts.stalls);
}

void MainLoopWatch::run() {
  sd_bus* bus = nullptr;
  while (!m_isOver) {
    const Pid program = m_program;
    if (program != 0 && bus == nullptr && sd_bus_new(&bus) >= 0) {
      sd_bus_set_address(bus, m_address.c_str());
      sd_bus_set_bus_client(bus, 1);
      if (sd_bus_start(bus) < 0) bus = sd_bus_unref(bus);
    }
    if (program != 0 && bus != nullptr) ask(bus, program);
    if (bus != nullptr && sd_bus_is_open(bus) <= 0) bus = sd_bus_unref(bus);
    std::this_thread::sleep_for(pause);
  }
  sd_bus_flush_close_unref(bus);
}

void MainLoopWatch::ask(sd_bus* bus, Pid program) {
  const auto waiting = [this, program] {
    return waited(program) + waited(m_bus) + waitedOfThread("/proc/thread-self");
  };
  const bool isQuiet = m_disturbances == 0;
  sd_bus_message* call = nullptr;
  sd_bus_message_new_method_call(bus, &call, "com.halvo.vantle", "/com/halvo/vantle",
                                 "org.freedesktop.Application", "ActivateAction");
  sd_bus_message_append(call, "sava{sv}", "nothing", 0, 0); // an action that there is not
  const auto waitedBefore = waiting();
  const auto begin = std::chrono::steady_clock::now();
  sd_bus_error error{};
  const int result = sd_bus_call(bus, call, longestAnswer, &error, nullptr);
  const auto whole = std::chrono::steady_clock::now() - begin;
  sd_bus_message_unref(call);
  sd_bus_error_free(&error);
  // Not on the bus, or another copy by now, or gone while it was asked.
  if (result < 0 || m_program != program) return;
  const auto late = std::chrono::duration_cast<std::chrono::milliseconds>(
      whole - std::chrono::nanoseconds(waiting() - waitedBefore));
  note(late, m_isDisturbed || !isQuiet);
  if (isQuiet && m_disturbances == 0 && late <= allowed) m_isDisturbed = false;
}

} // namespace vantle::soak
