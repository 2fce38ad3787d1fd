// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/audio/SoundQuestion.h"

#include <memory>
#include <string>

namespace vantle {

struct PulseLibrary;

// Who plays audio, through PulseAudio's client library, which is loaded when first asked; nobody where there
// is none.
//
// One connection, made when first asked and kept. It is served only while somebody asks, so it never wakes
// the program; a server that was restarted is found again at the next question. No server is ever started.
class PulseAudioQuestion final : public SoundQuestion {
 public:
  // The address of a server (a path or "unix:PATH"); empty for the session's own. The library as the dynamic
  // linker looks for it: the name of the interface that all of its versions have had since 0.9.11.
  explicit PulseAudioQuestion(std::string server, std::string library = "libpulse.so.0");
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
  std::string m_libraryFile;
  std::unique_ptr<const PulseLibrary> m_library;
  std::unique_ptr<Connection> m_connection;
};

} // namespace vantle
