// SPDX-License-Identifier: MIT
#include "platform/darwin/pressure/DispatchMemoryPressure.h"

#include "platform/darwin/process/SystemValue.h"

#include <dispatch/dispatch.h>
#include <utility>

namespace vantle {

namespace {

class PressureSource final : public MemoryPressureEvents::Source {
 public:
  // A source must run before it is released.
  PressureSource(dispatch_source_t source, std::function<void(bool)> handler)
      : m_source(source), m_handler(std::move(handler)) {
    ::dispatch_set_context(m_source, this);
    ::dispatch_source_set_event_handler_f(m_source, &PressureSource::happened);
    ::dispatch_resume(m_source);
  }
  // On the thread that serves the queue, so no handler is under way, and one that waits is not called any
  // more.
  ~PressureSource() override {
    ::dispatch_source_cancel(m_source);
    ::dispatch_release(m_source);
  }
  PressureSource(const PressureSource&) = delete;
  PressureSource& operator=(const PressureSource&) = delete;

 private:
  static void happened(void* context) {
    const auto* self = static_cast<PressureSource*>(context);
    const auto events = ::dispatch_source_get_data(self->m_source);
    const auto handler = self->m_handler; // which may end the source
    handler((events & DISPATCH_MEMORYPRESSURE_CRITICAL) != 0);
  }

  dispatch_source_t m_source;
  std::function<void(bool)> m_handler;
};

} // namespace

std::unique_ptr<MemoryPressureEvents::Source>
DispatchMemoryPressure::watch(std::function<void(bool)> handler) {
  const dispatch_source_t source = ::dispatch_source_create(
      DISPATCH_SOURCE_TYPE_MEMORYPRESSURE, 0, DISPATCH_MEMORYPRESSURE_WARN | DISPATCH_MEMORYPRESSURE_CRITICAL,
      dispatch_get_main_queue());
  if (source == nullptr) return nullptr;
  return std::make_unique<PressureSource>(source, std::move(handler));
}

std::optional<int> DispatchMemoryPressure::level() const {
  return systemNumber("kern.memorystatus_vm_pressure_level");
}

} // namespace vantle
