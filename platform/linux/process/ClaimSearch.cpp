// SPDX-License-Identifier: MIT
#include "platform/linux/process/ClaimSearch.h"

#include "base/Text.h"
#include "platform/linux/apps/AppEvidence.h"
#include "platform/linux/process/KernelFile.h"
#include "platform/linux/process/NamespacePids.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cstddef>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

constexpr std::size_t longestCommandName = 15; // TASK_COMM_LEN without the zero at its end

std::string pathOf(Pid pid, const char* file) { return "/proc/" + std::to_string(pid) + "/" + file; }

std::optional<Pid> pidOf(const std::string& name) {
  Pid pid = 0;
  const char* end = name.data() + name.size();
  const auto [stop, error] = std::from_chars(name.data(), end, pid);
  if (error != std::errc{} || stop != end || pid < 1) return std::nullopt;
  return pid;
}

// What is no UTF-8 in a name is "_" by the time that a server tells of it; so each of these bytes is here.
std::string asSaid(std::string_view name) {
  std::string said(name);
  std::replace_if(
      said.begin(), said.end(), [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; }, '_');
  return said;
}

bool isMachineId(std::string_view text) {
  constexpr std::size_t digits = 32;
  return text.size() == digits && text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

} // namespace

ClaimSearch::ClaimSearch(const Kernel& kernel, MachineIdentity machine)
    : m_kernel(kernel), m_machine(std::move(machine)) {}

std::vector<Pid> ClaimSearch::find(const ProcessClaim& claim) {
  std::vector<Pid> found;
  if (claim.pid < 1 || claim.program.empty() || !isFromHere(claim)) return found;
  if (!m_numbers) look();
  for (const Numbers& numbers : *m_numbers) {
    if (numbers.inside == claim.pid && runs(numbers, claim.program) &&
        !isInAnotherSandbox(numbers.here, claim.sandbox)) {
      found.push_back(numbers.here);
    }
  }
  return found;
}

// What is no id tells nothing: the images of many containers have an empty one or "uninitialized", and
// PulseAudio's library then gives the machine's name in its place.
bool ClaimSearch::isFromHere(const ProcessClaim& claim) const {
  if (isMachineId(claim.machine)) return claim.machine == m_machine.id;
  const std::string& host = claim.host.empty() ? claim.machine : claim.host;
  return host.empty() || host == m_machine.host;
}

void ClaimSearch::look() {
  m_numbers.emplace();
  const std::optional<std::string> own = m_kernel.link("/proc/self/ns/pid");
  for (const std::string& name : m_kernel.folders("/proc/").value_or(std::vector<std::string>{})) {
    const std::optional<Pid> pid = pidOf(name);
    if (!pid || *pid < firstAppPid) continue;
    if (const Pid inside = numberInside(*pid, own); inside != 0) m_numbers->push_back({*pid, inside});
  }
}

// The status file costs ten times the link, which says for nearly all of the user's processes that they are
// in no sandbox. It may not be read of others, who have nothing to say to this user's servers.
Pid ClaimSearch::numberInside(Pid pid, const std::optional<std::string>& ownNamespace) const {
  if (!m_kernel.isOwnChild(pid)) return 0;
  if (ownNamespace && m_kernel.link(pathOf(pid, "ns/pid")) == ownNamespace) return pid;
  const std::optional<std::string> status = m_kernel.read(pathOf(pid, "status"));
  if (!status) return 0; // gone
  const std::vector<Pid> numbers = namespacePids(*status);
  return numbers.empty() ? pid : numbers.back();
}

// The file's name; of a process that hides its file (games that run with a group's rights do) and of one that
// gave itself the name of what it runs for, the kernel's name as well. A hidden file may have any name, but
// for a number from inside, of which there are many, that is too little.
bool ClaimSearch::runs(const Numbers& numbers, const std::string& program) const {
  const std::string path = withoutDeletedMark(m_kernel.link(pathOf(numbers.here, "exe")).value_or(""));
  if (path.empty() && numbers.here == numbers.inside) return true;
  if (asSaid(fileNameOf(path)) == asSaid(program)) return true;
  const std::optional<ProcessStat> stat = m_kernel.stat(numbers.here);
  if (stat && stat->shortName() == std::string_view(program).substr(0, longestCommandName)) return true;
  return seesNoProc(numbers);
}

// Whoever finds no /proc/self says the name of a thread instead of its program's, or whatever stood in
// memory. Its root is looked into, which the kernel allows for whom it shows the links of. Only for processes
// in this number namespace: of any other, /proc/self is nothing out here, even if there is one.
bool ClaimSearch::seesNoProc(const Numbers& numbers) const {
  if (numbers.here != numbers.inside) return false;
  const std::optional<std::string> space = m_kernel.link(pathOf(numbers.here, "ns/pid"));
  if (!space || space != m_kernel.link("/proc/self/ns/pid")) return false;
  return m_kernel.link(pathOf(numbers.here, "root")) &&
         !m_kernel.link(pathOf(numbers.here, "root/proc/self"));
}

// By the unit that Flatpak made for the sandbox, which nobody inside has a say in. Those of desktops are
// named after what they started, which need not be the sandbox.
bool ClaimSearch::isInAnotherSandbox(Pid pid, const std::string& sandbox) const {
  if (sandbox.empty()) return false;
  const std::string unit = fileNameOf(m_kernel.unifiedPath(pid));
  const std::optional<UnitId> id = unitIdOf(unit);
  return id && unit.starts_with("app-flatpak-") && id->id != sandbox;
}

MachineIdentity thisMachine() {
  MachineIdentity machine;
  std::array<char, HOST_NAME_MAX + 1> name{};
  if (::gethostname(name.data(), name.size() - 1) == 0) machine.host = name.data();
  for (const char* path : {"/etc/machine-id", "/var/lib/dbus/machine-id"}) {
    std::string id = readKernelFile(path).value_or("");
    while (id.ends_with('\n')) id.pop_back();
    if (!isMachineId(id)) continue;
    machine.id = std::move(id);
    break;
  }
  return machine;
}

} // namespace vantle
