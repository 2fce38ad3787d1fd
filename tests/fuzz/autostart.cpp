// SPDX-License-Identifier: MIT
// Any bytes as an autostart file: what a desktop, a package or the person has written there.
#include "platform/linux/login/AutostartEntry.h"
#include "tests/fuzz/Target.h"

#include <optional>
#include <vector>

using namespace vantle;

namespace {

const std::vector<std::string> desktops{"ubuntu", "GNOME"};

std::string startedBy(const std::string& bytes) {
  const std::optional<AutostartEntry> entry = AutostartEntry::parse(bytes);
  return entry ? entry->startedProgram(desktops) : std::string();
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes = fuzz::textOf(data, size);
  const std::string before = startedBy(bytes);
  fuzz::require(before.empty() || before.front() == '/', "a program has a path", bytes);

  std::optional<AutostartEntry> entry = AutostartEntry::parse(bytes);
  if (!entry) entry.emplace();
  entry->enable("/bin/sh", desktops);
  fuzz::require(startedBy(entry->text()) == "/bin/sh", "what was enabled is started", bytes);
  entry->hide();
  fuzz::require(startedBy(entry->text()).empty(), "what was hidden is not", bytes);
  return 0;
}
