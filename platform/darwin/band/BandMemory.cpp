// SPDX-License-Identifier: MIT
#include "platform/darwin/band/BandMemory.h"

namespace vantle {

namespace {

constexpr int mostGenerations = 64; // nobody's tree is deeper, and a pid may come back while it is climbed

} // namespace

BandMemory BandMemory::ofAnEarlierProgram(std::uint64_t since, std::span<const ProcessIdentity> older) {
  BandMemory memory(since);
  memory.m_since = since;
  memory.m_older.insert(older.begin(), older.end());
  return memory;
}

void BandMemory::lived(Pid pid, const std::optional<BandLook>& look) {
  Known& known = m_known[pid];
  if (look) known.process = look->process;
}

void BandMemory::entered(Pid pid, const std::optional<BandLook>& look) {
  Known& known = m_known[pid];
  if (look) known.process = look->process;
  known.standing = Standing::own;
  known.wasTakenOut = false;
}

// One that was not in, as the program may have died before it put it there, has handed down nothing.
void BandMemory::left(const BandLook& look) {
  if (look.isIn) {
    m_known[look.process.pid] = {look.process, Standing::left, true};
  } else {
    seen(look);
  }
}

void BandMemory::seen(const BandLook& look) {
  if (look.isIn) return;
  const std::optional<Standing> known = standingOf(look);
  // Whoever is in it later was put there by somebody else.
  if (known == Standing::own) m_known[look.process.pid] = {look.process, Standing::left};
  if (!known) m_known[look.process.pid] = {look.process, m_since ? Standing::left : Standing::stranger};
}

bool BandMemory::isOwn(const BandLook& look) {
  seen(look);
  return look.isIn && judge(look) == Standing::own;
}

bool BandMemory::isOthers(const BandLook& look) {
  seen(look);
  return look.isIn && judge(look) == Standing::stranger;
}

bool BandMemory::isBornOfLeaver(const BandLook& look) const {
  return look.isIn && !standingOf(look) && origin(look) == Standing::left;
}

bool BandMemory::isInAgain(const BandLook& look) const {
  const Known* const one = look.isIn ? known(look.process) : nullptr;
  return one != nullptr && one->wasTakenOut;
}

std::vector<Pid> BandMemory::takenOut() const {
  std::vector<Pid> pids;
  for (const auto& [pid, one] : m_known) {
    if (one.wasTakenOut) pids.push_back(pid);
  }
  return pids;
}

void BandMemory::forgetWhoWasTakenOut() {
  for (auto& [pid, one] : m_known) one.wasTakenOut = false;
}

// One that could not be read, as it was another user's for a while, is the same if it is as old.
const BandMemory::Known* BandMemory::known(const ProcessIdentity& process) const {
  const auto found = m_known.find(process.pid);
  if (found == m_known.end()) return nullptr;
  const auto& [pid, one] = *found;
  const bool isSame = one.process ? *one.process == process : startMicros(process) < m_began;
  return isSame ? &one : nullptr;
}

std::optional<BandMemory::Standing> BandMemory::standingOf(const BandLook& look) const {
  if (const Known* const one = known(look.process)) return one->standing;
  // That program's journal has taken out whom it had put in; who lived before and is in was not of these.
  if (!m_since || (startMicros(look.process) >= *m_since && !m_older.contains(look.process)))
    return std::nullopt;
  return look.isIn ? Standing::stranger : Standing::left;
}

// What the nearest one above it that is known has handed down. One that was never in the band by this program
// and still lives has handed down nothing of it.
BandMemory::Standing BandMemory::origin(const BandLook& look) const {
  Pid above = look.parent;
  for (int generation = 0; generation < mostGenerations && above > firstProcess; ++generation) {
    const std::optional<BandLook> parent = lookAt(above);
    if (parent) {
      if (const auto known = standingOf(*parent)) return *known;
      if (!parent->isIn) return m_since ? Standing::left : Standing::stranger;
      above = parent->parent;
      continue;
    }
    // Another user's, as the login of a terminal or what runs as root for somebody. It hands down what it was
    // born with.
    const auto known = m_known.find(above);
    if (known != m_known.end()) return known->second.standing;
    above = parentOf(above).value_or(firstProcess);
  }
  return Standing::own;
}

BandMemory::Standing BandMemory::judge(const BandLook& look) {
  if (const auto known = standingOf(look)) return *known;
  const Standing standing = origin(look) == Standing::stranger ? Standing::stranger : Standing::own;
  m_known[look.process.pid] = {look.process, standing};
  return standing;
}

} // namespace vantle
