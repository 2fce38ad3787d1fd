// SPDX-License-Identifier: MIT
#include "tests/support/SoundServer.h"

#include <cmath>
#include <cstdint>
#include <numbers>
#include <stdexcept>

namespace vantle::desktop {

namespace fs = std::filesystem;

namespace {

void append(std::string& bytes, std::uint32_t value, int count) {
  for (int at = 0; at < count; ++at) bytes += static_cast<char>(value >> (8 * at) & 0xff);
}

// 16 bits, one channel, 440 Hz.
std::string wave() {
  constexpr std::uint32_t rate = 48000;
  constexpr std::uint32_t samples = rate * 60;
  constexpr double loudness = 500;
  std::string bytes = "RIFF";
  append(bytes, 36 + samples * 2, 4);
  bytes += "WAVEfmt ";
  append(bytes, 16, 4);
  append(bytes, 1, 2); // plain samples
  append(bytes, 1, 2); // channels
  append(bytes, rate, 4);
  append(bytes, rate * 2, 4);
  append(bytes, 2, 2);
  append(bytes, 16, 2);
  bytes += "data";
  append(bytes, samples * 2, 4);
  for (std::uint32_t at = 0; at < samples; ++at) {
    const double value = loudness * std::sin(2 * std::numbers::pi * 440 * at / rate);
    append(bytes, static_cast<std::uint32_t>(static_cast<std::int32_t>(value)), 2);
  }
  return bytes;
}

std::string padded(std::string text, std::size_t size) {
  text.resize(size);
  return text;
}

void appendBigEndian(std::string& bytes, std::uint32_t value) {
  bytes += static_cast<char>(value >> 8 & 0xff);
  bytes += static_cast<char>(value & 0xff);
}

// A module of four tracks: one pattern with one note, of one instrument that sounds on.
std::string module() {
  constexpr std::uint32_t words = 512;
  std::string bytes = padded("song", 20);
  for (int instrument = 0; instrument < 31; ++instrument) {
    bytes += padded(instrument == 0 ? "tone" : "", 22);
    appendBigEndian(bytes, instrument == 0 ? words : 0);
    append(bytes, instrument == 0 ? 0x0400 : 0, 2); // not out of tune, quiet
    appendBigEndian(bytes, 0);                      // repeats from its beginning
    appendBigEndian(bytes, instrument == 0 ? words : 1);
  }
  append(bytes, 1, 1); // pattern in the song
  append(bytes, 127, 1);
  bytes += padded("", 128) + "M.K.";
  constexpr std::uint32_t note = 428; // C
  std::string pattern;
  appendBigEndian(pattern, note);
  append(pattern, 1 << 4, 1); // the first instrument
  bytes += padded(pattern, 1024);
  for (std::uint32_t at = 0; at < words * 2; ++at) {
    const double value = 100 * std::sin(2 * std::numbers::pi * at / 32);
    append(bytes, static_cast<std::uint32_t>(static_cast<std::int32_t>(value)), 1);
  }
  return bytes;
}

} // namespace

SoundServer::SoundServer(PrivateSession& session)
    : m_session(session), m_pulseSocket(session.runtimeDir() / "pulse/native"),
      m_tone(session.folder().write("tone.wav", wave())) {
  m_server = &m_session.launch({"pipewire"});
  require("PipeWire", [&] { return fs::is_socket(pipeWire()); });
  // Its part for Bluetooth ends the whole of it on a machine without logind.
  const fs::path bluetooth = m_session.configHome() / "wireplumber/bluetooth.lua.d";
  if (!m_session.run({"sh", "-c",
                      "mkdir -p " + bluetooth.string() + " && echo 'bluez_monitor.enabled = false' > " +
                          (bluetooth / "60-none.lua").string()})) {
    throw std::runtime_error("no folder for settings");
  }
  m_session.launch({"wireplumber"});
  startPulse();
  // Each version of SDL has other names for its drivers, and is silent when it does not know the name.
  m_session.unsetEnvironment("SDL_AUDIODRIVER");
}

fs::path SoundServer::song() const { return m_session.folder().write("song.mod", module()); }

std::string SoundServer::pipeWire() const { return m_session.runtimeDir() / "pipewire-0"; }

void SoundServer::startPulse() {
  fs::remove(m_pulseSocket);
  m_pulse = &m_session.launch({"pipewire-pulse"});
  require("the sound server", [this] { return fs::is_socket(m_pulseSocket); });
  // Its socket is there before anybody listens at it.
  require("a sink", [this] {
    return m_session.run({"pactl", "load-module", "module-null-sink", "sink_name=null0"});
  });
  // Known to the session manager as well: what plays earlier may never be connected to it.
  require("a sink for everybody", [this] {
    return m_session.run({"sh", "-c", "test \"$(pactl get-default-sink)\" = null0"});
  });
}

} // namespace vantle::desktop
