// SPDX-License-Identifier: MIT
#include "engine/SelfTest.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace vantle {

namespace {

using Group = std::vector<std::unique_ptr<Subprocess>>;
using Readings = std::vector<std::optional<std::uint64_t>>; // absent for a process that has none any more

constexpr const char* busyProgram = "/usr/bin/yes"; // runs for ever; its output is discarded
constexpr double worksBelow = 0.5;

// A process that has ended got its time in another span than the others, whatever the system still knows of
// it.
Readings cpuTimes(const ProcessTable& processes, const Group& group) {
  Readings times;
  for (const auto& process : group) {
    times.push_back(process->isRunning() ? processes.cpuTime(process->processIdentifier()) : std::nullopt);
  }
  return times;
}

// Absent when a reading is.
std::optional<double> sumOfDeltas(const Readings& first, const Readings& second) {
  double sum = 0;
  for (std::size_t at = 0; at < first.size(); ++at) {
    if (!first[at] || !second[at]) return std::nullopt;
    sum += static_cast<double>(*second[at]) - static_cast<double>(*first[at]);
  }
  return sum;
}

// With nothing to compare the two groups got the same, which is no effect.
double shareOf(std::optional<double> background, std::optional<double> normal) {
  return background && normal && *normal != 0 ? *background / *normal : 1.0;
}

void endAll(const Group& group) {
  for (const auto& process : group) {
    if (!process->isRunning()) continue;
    process->terminate();
    process->waitUntilExit();
  }
}

std::string priorityText(const ProcessTable& processes, const Group& group) {
  const std::optional<int> priority = processes.schedulerPriority(group.front()->processIdentifier());
  return priority ? std::to_string(*priority) : "?";
}

} // namespace

int SelfTest::run() {
  using namespace std::chrono_literals;
  BackgroundBand& band = m_machine.band;
  const ProcessTable& processes = m_machine.processes;

  m_print("Vantle self-test: takes about 8 seconds, the CPU runs at full load meanwhile.\n");
  const auto n = static_cast<std::size_t>(m_machine.host.activeProcessorCount());
  const std::string count = std::to_string(n);
  Group normal;
  Group background;
  while (normal.size() < n) {
    // A pair counts only when both have started: the first of a broken pair belongs to neither group and is
    // left running, as it always has been.
    std::unique_ptr<Subprocess> first = m_machine.launcher.launch(busyProgram);
    std::unique_ptr<Subprocess> second = first ? m_machine.launcher.launch(busyProgram) : nullptr;
    if (!second) {
      m_print("ERROR: could not start the test processes.");
      endAll(normal);
      endAll(background);
      return 1;
    }
    normal.push_back(std::move(first));
    background.push_back(std::move(second));
  }

  std::size_t succeeded = 0;
  for (const auto& process : background) {
    if (band.enterBackgroundBand(process->processIdentifier())) ++succeeded;
  }
  std::size_t flagged = 0;
  for (const auto& process : background) {
    if (band.isInBackgroundBand(process->processIdentifier()) == true) ++flagged;
  }
  m_print("1. Backgrounding: " + std::to_string(succeeded) + "/" + count + " calls succeeded, flag seen on " +
          std::to_string(flagged) + "/" + count + " processes");
  const std::string normalPriority = priorityText(processes, normal);
  const std::string backgroundPriority = priorityText(processes, background);
  m_print("2. Scheduler priority: normal " + normalPriority + ", background " + backgroundPriority);

  // Some platforms let only a few changes a second through.
  band.settle(10s);
  m_machine.clock.sleep(1s);
  const Readings normalFirst = cpuTimes(processes, normal);
  const Readings backgroundFirst = cpuTimes(processes, background);
  m_machine.clock.sleep(5s);
  const Readings normalSecond = cpuTimes(processes, normal);
  const Readings backgroundSecond = cpuTimes(processes, background);

  const double share =
      shareOf(sumOfDeltas(backgroundFirst, backgroundSecond), sumOfDeltas(normalFirst, normalSecond));
  m_print("3. CPU share: background processes got " + std::to_string(static_cast<std::int64_t>(share * 100)) +
          "% of the CPU the normal ones got");

  std::size_t restored = 0;
  for (const auto& process : background) {
    const Pid pid = process->processIdentifier();
    if (band.leaveBackgroundBand(pid) && band.isInBackgroundBand(pid) != true) ++restored;
  }
  m_print("4. Restore: " + std::to_string(restored) + "/" + count + " processes back to normal");

  const bool works = succeeded == n && flagged == n && share < worksBelow && restored == n;
  m_print(works ? "\nRESULT: Works. Backgrounding is effective on this Mac and can be undone."
                : "\nRESULT: Not as expected.");
  if (!m_desktop.empty()) m_print("Desktop: " + m_desktop);
  endAll(normal);
  endAll(background);
  return works ? 0 : 1;
}

} // namespace vantle
