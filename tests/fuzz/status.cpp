// SPDX-License-Identifier: MIT
// Any bytes as /proc/PID/status, and any bytes as a process name in it.
#include "platform/linux/process/NamespacePids.h"
#include "tests/fuzz/Target.h"

#include <algorithm>

using namespace vantle;

namespace {

// As the kernel writes it: with no line break of the name's own.
std::string statusOf(const std::string& name, const std::vector<Pid>& numbers) {
  std::string text = "Name:\t";
  for (const char c : name) c == '\n' ? text += "\\n" : text += c;
  text += "\nNSpid:";
  for (const Pid number : numbers) text += "\t" + std::to_string(number);
  return text + "\nNSpgid:\t1\n";
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes = fuzz::textOf(data, size);
  const std::vector<Pid> numbers = namespacePids(bytes);
  fuzz::require(std::all_of(numbers.begin(), numbers.end(), [](Pid pid) { return pid >= 1; }),
                "every number is a process's", bytes);
  if (!numbers.empty()) {
    fuzz::require(namespacePids(statusOf("x", numbers)) == numbers, "what was read reads the same again",
                  bytes);
  }
  const std::vector<Pid> known{4211, 74, 1};
  fuzz::require(namespacePids(statusOf(bytes, known)) == known, "no name misleads", bytes);
  return 0;
}
