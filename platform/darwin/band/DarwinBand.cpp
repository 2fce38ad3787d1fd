// SPDX-License-Identifier: MIT
#include "platform/darwin/band/DarwinBand.h"

#include "platform/darwin/process/DarwinClock.h"
#include "platform/darwin/process/LibprocProcessTable.h"

#include <algorithm>
#include <cstdint>
#include <sys/resource.h>
#include <utility>

namespace vantle {

namespace {

constexpr int outOfTheBand = 0;

// More than an exec or a fork takes. At the program's end nobody waits for that long.
constexpr std::chrono::seconds aWhile{1};
constexpr std::chrono::milliseconds shortWhile{300};

// Each look finds only what was born during the one before.
constexpr int mostLooks = 8;

// The call takes 0 for this program itself.
bool setBand(Pid pid, int band) {
  return pid > 0 && ::setpriority(PRIO_DARWIN_PROCESS, static_cast<id_t>(pid), band) == 0;
}

} // namespace

class DarwinBand::LeavingTogether final : public Leaving {
 public:
  explicit LeavingTogether(DarwinBand& band) : m_band(band) {}

  // What is asked to leave for its age may be of somebody whom the person keeps in the band.
  bool leave(Pid pid) override {
    const std::optional<BandLook> look = m_band.lookForMemory(pid);
    if (look && m_band.m_memory->isOthers(*look)) return true;
    m_hasLeavers = true;
    return m_band.takeOut(pid, look);
  }

  std::vector<Pid> finish() override {
    if (!m_hasLeavers || !m_band.m_memory) return {};
    m_band.takeOutAll([&memory = *m_band.m_memory](const BandLook& look) {
      memory.seen(look);
      return memory.isBornOfLeaver(look);
    });
    m_band.lookAgainLater();
    return {};
  }

 private:
  DarwinBand& m_band;
  bool m_hasLeavers = false;
};

std::optional<BandLook> DarwinBand::lookForMemory(Pid pid) const {
  return m_memory ? lookAt(pid) : std::nullopt;
}

bool DarwinBand::enterBackgroundBand(Pid pid) {
  const std::optional<BandLook> look = lookForMemory(pid);
  if (look && m_memory->isOthers(*look)) return false; // put there since it was chosen
  if (!setBand(pid, PRIO_DARWIN_BG)) return false;
  if (m_memory) m_memory->entered(pid, look);
  return true;
}

bool DarwinBand::leaveBackgroundBand(Pid pid) {
  takeOver(); // the journal of an earlier program is worked off before anything is reclaimed
  return takeOut(pid, lookForMemory(pid));
}

bool DarwinBand::takeOut(Pid pid, const std::optional<BandLook>& look) {
  if (!setBand(pid, outOfTheBand)) return false;
  if (m_memory && look) m_memory->left(*look);
  return true;
}

std::optional<bool> DarwinBand::isInBackgroundBand(Pid pid) const {
  const std::optional<BandLook> look = lookAt(pid);
  if (!look) return std::nullopt;
  if (m_memory) m_memory->seen(*look);
  return look->isIn;
}

bool DarwinBand::carriesOwnMark(Pid pid) const {
  const std::optional<BandLook> look = lookForMemory(pid);
  return look && m_memory->isOwn(*look);
}

std::vector<std::vector<BandAnswer>> DarwinBand::enter(const BandPass& pass) {
  if (m_memory && !m_isSlowing) lookAgain();
  if (!m_memory || m_memory->isOfAnEarlierProgram()) remember(pass.view);
  m_isSlowing = true;
  return BackgroundBand::enter(pass);
}

// From the last moment at which all that is in the band is somebody else's doing.
void DarwinBand::remember(const ProcessView& view) {
  const std::uint64_t now = DarwinClock().processMicros();
  std::vector<Pid> pids = everyPid();
  if (pids.empty()) {
    for (const ProcessRecord& process : view.all()) pids.push_back(process.pid);
  }
  m_memory = std::make_unique<BandMemory>(now);
  std::vector<ProcessIdentity> older;
  for (const Pid pid : pids) {
    const std::optional<BandLook> look = lookAt(pid);
    m_memory->lived(pid, look);
    if (look && startMicros(look->process) >= now) older.push_back(look->process);
  }
  m_firstSlowing.note(now, older);
}

std::unique_ptr<BackgroundBand::Leaving> DarwinBand::leaving(const ProcessView& /*view*/) {
  return std::make_unique<LeavingTogether>(*this);
}

void DarwinBand::takeOver() {
  if (std::exchange(m_hasTakenOver, true) || m_memory) return;
  if (auto earlier = m_firstSlowing.memory()) m_memory = std::make_unique<BandMemory>(std::move(*earlier));
}

void DarwinBand::reclaim(const ProcessView* /*recent*/) {
  takeOver();
  if (m_memory) {
    const bool isDone = takeOutAll([this](const BandLook& look) { return m_memory->isOwn(look); });
    if (!isDone) return; // nobody tells who there is: another time
    m_isSlowing = false;
    lookAgainLater();
  } else {
    m_firstSlowing.forget();
  }
}

void DarwinBand::lookAgainLater() {
  m_lateLook = DispatchSource::after(aWhile, [this] { lookAgain(); });
  if (!m_lateLook) lookAgain(); // nobody tells when it is time
}

bool DarwinBand::settle(std::chrono::milliseconds limit) {
  if (!m_lateLook) return true;
  DarwinClock().sleep(std::min<std::chrono::milliseconds>(limit, shortWhile));
  lookAgain();
  return m_isSlowing || !m_memory;
}

void DarwinBand::lookAgain() {
  m_lateLook.reset();
  if (!m_memory) return;
  if (m_isSlowing) {
    for (const Pid pid : m_memory->takenOut()) {
      const std::optional<BandLook> look = lookAt(pid);
      if (look && m_memory->isInAgain(*look)) takeOut(pid, look);
    }
    m_memory->forgetWhoWasTakenOut();
    return;
  }
  const auto isOwn = [this](const BandLook& look) {
    return m_memory->isInAgain(look) || m_memory->isOwn(look);
  };
  if (!takeOutAll(isOwn)) return;
  m_memory.reset();
  m_firstSlowing.forget();
}

// Looks until nobody is left whom it concerns. False when there was no look at all.
template <class Which> bool DarwinBand::takeOutAll(Which which) {
  bool hasLooked = false;
  for (int looks = 0; looks < mostLooks; ++looks) {
    bool hasTakenOut = false;
    const std::vector<Pid> pids = everyPid();
    hasLooked = hasLooked || !pids.empty();
    for (const Pid pid : pids) {
      const std::optional<BandLook> look = lookAt(pid);
      if (look && which(*look)) hasTakenOut = takeOut(pid, look) || hasTakenOut;
    }
    if (!hasTakenOut && !pids.empty()) break;
  }
  return hasLooked;
}

} // namespace vantle
