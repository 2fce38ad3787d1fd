// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/MemoryPressureEvents.h"
#include "platform/shared/EventLoop.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vantle {

// Memory pressure as the kernel measures it (PSI): the share of time in which work stood still because memory
// had to be fetched or freed first. The events are two of the kernel's own triggers; nothing runs until one
// of them fires. docs/memory.md gives the reasons for the thresholds.
class PsiMemoryPressure final : public MemoryPressureEvents {
 public:
  explicit PsiMemoryPressure(EventLoop& loop, std::string path = "/proc/pressure/memory");

  // Null where the kernel measures no pressure or does not let this user set triggers.
  std::unique_ptr<Source> watch(std::function<void(bool isCritical)> handler) override;
  std::optional<int> level() const override;

 private:
  EventLoop& m_loop;
  std::string m_path;
};

// The level (1, 2 or 4) of the text of a pressure file, from its averages over 10 s; absent when it is none.
std::optional<int> levelFromPressureText(std::string_view text);

} // namespace vantle
