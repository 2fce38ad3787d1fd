// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Machine.h"

#include <functional>
#include <string>

namespace vantle {

// Measures on this machine whether the band takes effect and can be undone: keeps every processor busy twice
// over, puts half of the load into the band, compares what each half gets, puts it back. Takes about eight
// seconds and blocks meanwhile. Needs only the machine's processes, band, clock, launcher and host.
class SelfTest {
 public:
  using Print = std::function<void(const std::string& line)>; // each line without its final newline

  SelfTest(Machine& machine, Print print) : m_machine(machine), m_print(std::move(print)) {}

  // The exit status of the process: 0 when backgrounding works, otherwise 1.
  int run();

 private:
  Machine& m_machine;
  Print m_print;
};

} // namespace vantle
