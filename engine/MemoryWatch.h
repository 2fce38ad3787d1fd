// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"
#include "engine/AppUsage.h"
#include "engine/Backgrounder.h"
#include "engine/MemoryPressure.h"
#include "engine/NoticeWords.h"
#include "engine/ports/Machine.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vantle {

// What is done about memory: the notices, the polite quitting, and the figures that are shown.
class MemoryWatch {
 public:
  // What only the Boost cycle knows.
  struct Boost {
    std::function<bool()> isRunning;
    // The Boost app, another one, or what started the one that runs: never asked to quit.
    std::function<bool(const RunningApplication&)> isPartOfIt;
  };

  MemoryWatch(const Machine& machine, const AppSettings& settings, const Backgrounder& backgrounder,
              Boost boost);

  void startPressureMonitor();
  void speak(NoticeWords words) { m_words = std::move(words); }

  // Acts on one memory-pressure event: tells the person which apps in the background use most, or asks the
  // apps to quit that the person marked. At most once in 300 seconds, only during a Boost.
  void handleMemoryPressure(bool isCritical);

  std::vector<AppUsage> usageList() const;
  MemoryPressure::Level currentPressureLevel() const;
  std::uint64_t ownFootprint() const;

 private:
  bool quitMarkedApps(std::uint64_t now);
  bool quitIfAllowed(RunningApplication& app, const std::set<std::string>& quittable) const;
  void postMemoryNotice(const std::string& title, const std::string& body);

  Machine m_machine;
  const AppSettings& m_settings;
  const Backgrounder& m_backgrounder;
  Boost m_boost;
  NoticeWords m_words;
  std::unique_ptr<MemoryPressureEvents::Source> m_pressureSource;
  std::optional<std::uint64_t> m_lastPressureNotice; // processMicros; absent until the first notice
};

} // namespace vantle
