// SPDX-License-Identifier: MIT
#include "platform/linux/audio/AudioStreams.h"

#include <charconv>
#include <cstddef>

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

void AudioStreams::addInput(std::uint32_t client, std::string_view processId) {
  if (m_inputs.size() >= mostStreams) return;
  m_inputs.emplace_back(client, pidFromText(processId));
}

void AudioStreams::addClient(std::uint32_t index, std::string_view processId) {
  if (m_clients.size() >= mostStreams) return;
  if (const std::optional<Pid> pid = pidFromText(processId)) m_clients.insert_or_assign(index, *pid);
}

std::set<Pid> AudioStreams::playing() const {
  std::set<Pid> pids;
  for (const auto& [client, own] : m_inputs) {
    if (own) {
      pids.insert(*own);
    } else if (const auto found = m_clients.find(client); found != m_clients.end()) {
      pids.insert(found->second);
    }
  }
  return pids;
}

} // namespace vantle
