// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/AudioActivity.h"
#include "platform/linux/audio/AlsaStatus.h"
#include "platform/linux/audio/PulseAudioQuestion.h"
#include "platform/linux/audio/pipewire/PipeWireQuestion.h"
#include "platform/linux/kernel/ProcKernel.h"
#include "platform/posix/process/Question.h"

#include <chrono>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace vantle {

// Who is heard, on whatever sound system: PipeWire, PulseAudio, JACK, or ALSA without any of them.
//
// PipeWire and PulseAudio are asked at the same time, and both are believed: PipeWire may be there for
// pictures alone. Only what PipeWire's own PulseAudio server says is left out when PipeWire itself answers.
class LinuxAudio final : public AudioActivity {
 public:
  // Where the servers are; empty when there is none of PipeWire's, and where PulseAudio's clients look.
  struct Servers {
    std::string pipeWire;
    std::string pulseAudio = {};
    std::string jackFolder = "/dev/shm"; // where JACK 2 keeps its sockets
  };
  // What somebody asks for the same decision takes in its answers while this waits. The limit is for an
  // emulated machine, which takes its time.
  LinuxAudio(std::shared_ptr<const ProcKernel> kernel, Servers servers, std::vector<Question*> beside = {},
             std::chrono::milliseconds longestWait = std::chrono::milliseconds(200));

  bool isAvailable() const override { return true; }

  // Waits for so long at most in all. A server that did not answer the last question is not waited for again
  // until it has said something since.
  std::set<Pid> runningOutput() override;
  bool hasAnswered() const; // any server, the last question

 private:
  using Moment = std::chrono::steady_clock::time_point;

  std::vector<Player> serverPlayers(Moment deadline);
  void addClaimed(const std::vector<Player>& players, std::set<Pid>& heard) const;
  std::vector<AlsaPlayback> playbacksOfApps(std::set<Pid>& heard) const;
  void addDirect(std::set<Pid>& heard, Moment deadline) const;
  bool isJackRunning() const;

  std::shared_ptr<const ProcKernel> m_kernel;
  std::string m_jackFolder;
  std::vector<Question*> m_beside;
  std::chrono::milliseconds m_longestWait;
  PipeWireQuestion m_pipeWire;
  PulseAudioQuestion m_pulseAudio;
};

} // namespace vantle
