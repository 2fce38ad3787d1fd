// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/AudioActivity.h"
#include "platform/posix/process/BoundedWait.h"

namespace vantle {

// Who is heard, as CoreAudio tells of processes from macOS 14.2 on. Nothing is recorded, so nobody is asked
// for permission.
class CoreAudioActivity final : public AudioActivity {
 public:
  bool isAvailable() const override;
  std::set<Pid> runningOutput() override;
  // Reaches the audio server ahead of the first question, without waiting.
  void askAhead() const;

 private:
  BoundedWait m_wait{1}; // while one question hangs, there is no second
};

} // namespace vantle
