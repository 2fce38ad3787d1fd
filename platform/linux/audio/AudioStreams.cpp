// SPDX-License-Identifier: MIT
#include "platform/linux/audio/AudioStreams.h"

#include <charconv>
#include <cstddef>
#include <utility>

namespace vantle {

namespace {

constexpr std::size_t mostStreams = 4096; // a desktop has a handful; nobody says when a server's list ends

} // namespace

std::optional<Pid> pidFromText(std::string_view text) {
  Pid pid = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, pid);
  if (error != std::errc() || rest != end || pid < 1) return std::nullopt;
  return pid;
}

ProcessClaim completed(ProcessClaim stream, const ProcessClaim& client) {
  if (stream.pid == 0) return client;
  if (stream.program.empty()) stream.program = client.program;
  if (stream.machine.empty()) stream.machine = client.machine;
  if (stream.host.empty()) stream.host = client.host;
  if (stream.sandbox.empty()) stream.sandbox = client.sandbox;
  return stream;
}

void AudioStreams::addInput(std::uint32_t client, ProcessClaim own) {
  if (m_inputs.size() < mostStreams) m_inputs.emplace_back(client, std::move(own));
}

void AudioStreams::addClient(std::uint32_t index, ProcessClaim claim) {
  if (m_clients.size() < mostStreams) m_clients.insert_or_assign(index, std::move(claim));
}

std::vector<Player> AudioStreams::players() const {
  std::vector<Player> players;
  for (const auto& [client, own] : m_inputs) {
    const auto known = m_clients.find(client);
    const ProcessClaim claim = known == m_clients.end() ? own : completed(own, known->second);
    if (claim.pid != 0) players.push_back({0, claim});
  }
  return players;
}

} // namespace vantle
