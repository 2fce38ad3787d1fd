// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/audio/SoundQuestion.h"

#include <memory>
#include <string>

namespace vantle {

// Who plays audio, through PulseAudio's client library.
//
// One connection, made when first asked and kept. It is served only while somebody asks, so it never wakes
// the program; a server that was restarted is found again at the next question. No server is ever started.
class PulseAudioQuestion final : public SoundQuestion {
 public:
  // The address of a server (a path or "unix:PATH"); empty for the session's own.
  explicit PulseAudioQuestion(std::string server);
  ~PulseAudioQuestion() override;
  PulseAudioQuestion(const PulseAudioQuestion&) = delete;
  PulseAudioQuestion& operator=(const PulseAudioQuestion&) = delete;

  void ask() override;
  bool isAsking() const override;
  std::vector<pollfd> watch() override;
  void advance() override;
  void giveUp() override;
  std::optional<std::vector<Player>> players() const override;

  // Whether the server that answered is PipeWire's, which knows less of what PipeWire plays than PipeWire.
  bool isPipeWire() const;

 private:
  class Connection;
  std::string m_server;
  std::unique_ptr<Connection> m_connection;
};

} // namespace vantle
