// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/AudioActivity.h"

#include <memory>
#include <set>
#include <string>

namespace vantle {

// Who plays audio, through PulseAudio's client library. It sees every client: PulseAudio's own, and under
// PipeWire the native ones and those of ALSA as well.
//
// One connection, made when first asked and kept. It is served only while somebody asks, so it never wakes
// the program; a server that was restarted is found again at the next question. No server is ever started.
class PulseAudioActivity final : public AudioActivity {
 public:
  // The address of a server (a path or "unix:PATH"); empty for the session's own.
  explicit PulseAudioActivity(std::string server = {});
  ~PulseAudioActivity() override;
  PulseAudioActivity(const PulseAudioActivity&) = delete;
  PulseAudioActivity& operator=(const PulseAudioActivity&) = delete;

  bool isAvailable() const override { return true; }

  // Waits 200 ms at most in all. A server that did not answer the last question is not waited for again: as
  // long as it stays silent the answer is empty at once.
  std::set<Pid> runningOutput() override;

 private:
  class Connection;
  std::string m_server;
  std::unique_ptr<Connection> m_connection;
};

} // namespace vantle
