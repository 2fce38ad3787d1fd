// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/PrivateSession.h"

#include <filesystem>
#include <string>

namespace vantle::desktop {

// The sound of a private desktop: PipeWire with its session manager and its PulseAudio server, and one sink
// that nobody hears.
class SoundServer {
 public:
  explicit SoundServer(PrivateSession& session); // ready to play

  std::string pipeWire() const; // where PipeWire's clients find it
  Program& server() { return *m_server; }
  // Where PulseAudio's clients find it.
  std::string address() const { return "unix:" + m_pulseSocket.string(); }
  Program& pulse() { return *m_pulse; } // the server that answers them
  void startPulse();                    // again, after it was killed

  // A minute of a quiet tone as a WAV file.
  const std::filesystem::path& tone() const { return m_tone; }
  // The same tone as a song for trackers, which play it over and over.
  std::filesystem::path song() const;

 private:
  PrivateSession& m_session;
  std::filesystem::path m_pulseSocket;
  std::filesystem::path m_tone;
  Program* m_server = nullptr;
  Program* m_pulse = nullptr;
};

} // namespace vantle::desktop
