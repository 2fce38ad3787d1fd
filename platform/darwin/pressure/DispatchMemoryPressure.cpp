// SPDX-License-Identifier: MIT
#include "platform/darwin/pressure/DispatchMemoryPressure.h"

#include "platform/darwin/process/DispatchSource.h"
#include "platform/darwin/process/SystemValue.h"

#include <cstdint>
#include <utility>

namespace vantle {

namespace {

class PressureSource final : public MemoryPressureEvents::Source {
 public:
  explicit PressureSource(std::unique_ptr<DispatchSource> source) : m_source(std::move(source)) {}

 private:
  std::unique_ptr<DispatchSource> m_source;
};

} // namespace

std::unique_ptr<MemoryPressureEvents::Source>
DispatchMemoryPressure::watch(std::function<void(bool)> handler) {
  auto source = DispatchSource::create(DISPATCH_SOURCE_TYPE_MEMORYPRESSURE, 0,
                                       DISPATCH_MEMORYPRESSURE_WARN | DISPATCH_MEMORYPRESSURE_CRITICAL,
                                       [handler = std::move(handler)](std::uintptr_t events) {
                                         handler((events & DISPATCH_MEMORYPRESSURE_CRITICAL) != 0);
                                       });
  return source ? std::make_unique<PressureSource>(std::move(source)) : nullptr;
}

std::optional<int> DispatchMemoryPressure::level() const {
  return systemNumber("kern.memorystatus_vm_pressure_level");
}

} // namespace vantle
