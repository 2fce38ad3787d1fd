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

  // The desktop is how the machine sees the apps, in words, and is told after the verdict; unless it is
  // empty.
  SelfTest(Machine& machine, Print print, std::string desktop = {})
      : m_machine(machine), m_print(std::move(print)), m_desktop(std::move(desktop)) {}

  // The exit status of the process: 0 when backgrounding works, otherwise 1.
  int run();

 private:
  Machine& m_machine;
  Print m_print;
  std::string m_desktop;
};

} // namespace vantle
