// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/BackgroundBand.h"
#include "engine/ports/FileStore.h"
#include "platform/darwin/band/BandMemory.h"
#include "platform/darwin/band/FirstSlowing.h"
#include "platform/darwin/process/DispatchSource.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace vantle {

// The system's own background band, process by process. The kernel keeps who is in it but not who put it
// there; while anybody is slowed, this program remembers that.
//
// What is under way when a process is taken out is not told of: an exec goes on with the band that it had,
// and a child may be listed only later. So a while after anybody was taken out it looks once more, on the
// main queue.
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
  bool settle(std::chrono::milliseconds limit) override;
  std::size_t owed() const override { return m_lateLook ? 1 : 0; }

 private:
  class LeavingTogether;

  void takeOver();
  void remember(const ProcessView& view);
  std::optional<BandLook> lookForMemory(Pid pid) const;
  bool takeOut(Pid pid, const std::optional<BandLook>& look);
  template <class Which> bool takeOutAll(Which which);
  void lookAgainLater();
  void lookAgain();

  FirstSlowing m_firstSlowing;
  std::unique_ptr<BandMemory> m_memory;       // null: nobody is slowed, nor was just now
  bool m_hasTakenOver = false;                // what a program before this one left
  bool m_isSlowing = false;                   // otherwise what it remembers is over
  std::unique_ptr<DispatchSource> m_lateLook; // null: nobody was taken out just now
};

} // namespace vantle
