// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/BackgroundBand.h"
#include "engine/ports/FileStore.h"
#include "platform/darwin/band/BandMemory.h"
#include "platform/darwin/band/FirstSlowing.h"

#include <memory>
#include <optional>
#include <vector>

namespace vantle {

// The system's own background band, process by process. The kernel keeps who is in it but not who put it
// there; while anybody is slowed, this program remembers that.
class DarwinBand final : public BackgroundBand {
 public:
  // What keeps that beyond a death of the program; null: nothing does. It outlives the band.
  explicit DarwinBand(FileStore* files = nullptr) : m_firstSlowing(files) {}

  bool enterBackgroundBand(Pid pid) override;
  bool leaveBackgroundBand(Pid pid) override;
  std::optional<bool> isInBackgroundBand(Pid pid) const override;
  bool carriesOwnMark(Pid pid) const override;
  std::vector<std::vector<BandAnswer>> enter(const BandPass& pass) override;
  std::unique_ptr<Leaving> leaving(const ProcessView& view) override;
  void reclaim(const ProcessView* recent) override;

 private:
  class LeavingTogether;

  void remember(const ProcessView& view);
  std::optional<BandLook> lookForMemory(Pid pid) const;
  bool takeOut(Pid pid, const std::optional<BandLook>& look);
  template <class Which> bool takeOutAll(Which which);

  FirstSlowing m_firstSlowing;
  std::unique_ptr<BandMemory> m_memory; // null: nobody is slowed
  bool m_hasReclaimed = false;          // what a program before this one left
};

} // namespace vantle
