// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/linux/kernel/Kernel.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// The thread that opened a playback stream, from the text of /proc/asound/cardN/pcmMp/subK/status, while the
// stream runs or plays what is left of it. 0 when it is not visible from here; absent when nothing plays.
std::optional<Pid> playingThread(std::string_view status);

// A playback stream of a sound card that runs.
struct AlsaPlayback {
  Pid thread = 0;     // that opened it; others may have joined it since, as ALSA's own mixer does
  std::string device; // its file, "/dev/snd/pcmC0D0p"
};

// All of them, on every card.
std::vector<AlsaPlayback> alsaPlaybacks(const Kernel& kernel);

} // namespace vantle
