// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <dispatch/dispatch.h>
#include <functional>
#include <memory>

namespace vantle {

// Events of one kind, on the main queue, which the main thread's loop serves. Ends with the object, which the
// handler may end as well.
class DispatchSource {
 public:
  using Handler = std::function<void(std::uintptr_t events)>;

  // Null when the system makes none.
  static std::unique_ptr<DispatchSource> create(dispatch_source_type_t type, std::uintptr_t about,
                                                std::uintptr_t events, Handler handler);
  // Once, after that time or a tenth more.
  static std::unique_ptr<DispatchSource> after(std::chrono::milliseconds delay,
                                               std::function<void()> handler);
  ~DispatchSource();
  DispatchSource(const DispatchSource&) = delete;
  DispatchSource& operator=(const DispatchSource&) = delete;

 private:
  DispatchSource(dispatch_source_t source, Handler handler);
  static void happened(void* context);

  dispatch_source_t m_source;
  Handler m_handler;
};

} // namespace vantle
