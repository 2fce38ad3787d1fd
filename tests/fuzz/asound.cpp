// SPDX-License-Identifier: MIT
// Any bytes as the status of a sound card's stream.
#include "platform/linux/audio/AlsaStatus.h"
#include "tests/fuzz/Target.h"

using namespace vantle;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes = fuzz::textOf(data, size);
  if (const std::optional<Pid> thread = playingThread(bytes)) {
    fuzz::require(*thread >= 0, "a thread has no negative number", bytes);
    fuzz::require(bytes.find("RUNNING") != std::string::npos || bytes.find("DRAINING") != std::string::npos,
                  "what plays says so", bytes);
  }
  return 0;
}
