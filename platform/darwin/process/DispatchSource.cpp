// SPDX-License-Identifier: MIT
#include "platform/darwin/process/DispatchSource.h"

#include <utility>

namespace vantle {

std::unique_ptr<DispatchSource> DispatchSource::create(dispatch_source_type_t type, std::uintptr_t about,
                                                       std::uintptr_t events, Handler handler) {
  const dispatch_source_t source = ::dispatch_source_create(type, about, events, dispatch_get_main_queue());
  if (source == nullptr) return nullptr;
  return std::unique_ptr<DispatchSource>(new DispatchSource(source, std::move(handler)));
}

std::unique_ptr<DispatchSource> DispatchSource::after(std::chrono::milliseconds delay,
                                                      std::function<void()> handler) {
  const dispatch_source_t source =
      ::dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, dispatch_get_main_queue());
  if (source == nullptr) return nullptr;
  const std::int64_t nanoseconds = std::chrono::nanoseconds(delay).count();
  ::dispatch_source_set_timer(source, ::dispatch_time(DISPATCH_TIME_NOW, nanoseconds), DISPATCH_TIME_FOREVER,
                              static_cast<std::uint64_t>(nanoseconds / 10));
  return std::unique_ptr<DispatchSource>(
      new DispatchSource(source, [handler = std::move(handler)](std::uintptr_t /*fired*/) { handler(); }));
}

// A source must run before it is released.
DispatchSource::DispatchSource(dispatch_source_t source, Handler handler)
    : m_source(source), m_handler(std::move(handler)) {
  ::dispatch_set_context(m_source, this);
  ::dispatch_source_set_event_handler_f(m_source, &DispatchSource::happened);
  ::dispatch_resume(m_source);
}

// On the thread that serves the queue, so no handler is under way, and one that waits is not called any more.
DispatchSource::~DispatchSource() {
  ::dispatch_source_cancel(m_source);
  ::dispatch_release(m_source);
}

void DispatchSource::happened(void* context) {
  const auto* self = static_cast<DispatchSource*>(context);
  const auto events = ::dispatch_source_get_data(self->m_source);
  const auto handler = self->m_handler; // which may end the source
  handler(events);
}

} // namespace vantle
