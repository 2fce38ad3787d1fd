// SPDX-License-Identifier: MIT
#include "platform/linux/audio/pipewire/SoundGraph.h"

#include "platform/linux/audio/AudioStreams.h"

#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>
#include <utility>

namespace vantle {

namespace {

constexpr std::size_t mostObjects = 16384; // of a kind; a studio has some hundreds
constexpr std::uint32_t stateRunning = 3;  // PW_NODE_STATE_RUNNING

std::string valueOf(const PipeWireProperties& properties, std::string_view name) {
  const auto found = properties.find(name);
  return found == properties.end() ? std::string() : found->second;
}

std::optional<std::uint32_t> numberOf(const PipeWireProperties& properties, std::string_view name) {
  const std::string text = valueOf(properties, name);
  std::uint32_t number = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (text.empty() || error != std::errc{} || stop != text.data() + text.size()) return std::nullopt;
  return number;
}

// What holds a filter's nodes together; empty for what stands alone. The first letter keeps a group apart
// that is named like a client.
std::string groupOf(const PipeWireProperties& properties, std::optional<std::uint32_t> client) {
  if (const std::string group = valueOf(properties, "node.link-group"); !group.empty()) return "g" + group;
  return client ? "c" + std::to_string(*client) : "";
}

// Nobody's when it names no process.
ProcessClaim claimIn(const PipeWireProperties& properties) {
  return {pidFromText(valueOf(properties, "application.process.id")).value_or(0),
          valueOf(properties, "application.process.binary"),
          valueOf(properties, "application.process.machine-id"),
          valueOf(properties, "pipewire.access.portal.app_id"),
          valueOf(properties, "application.process.host")};
}

} // namespace

void SoundGraph::add(const PipeWireGlobal& global) {
  const PipeWireProperties& properties = global.properties;
  if (global.kind == PipeWireKind::node && m_nodes.size() < mostObjects) {
    const std::string media = valueOf(properties, "media.class");
    // A duplex device is both sides of one.
    const bool isSink = media == "Audio/Sink" || media == "Audio/Duplex";
    const bool isCapture = media == "Stream/Input/Audio";
    m_nodes[global.id] = {isSink, isCapture, numberOf(properties, "client.id"), false, false, {}};
  } else if (global.kind == PipeWireKind::link && m_sources.size() < mostObjects) {
    const std::optional<std::uint32_t> from = numberOf(properties, "link.output.node");
    const std::optional<std::uint32_t> to = numberOf(properties, "link.input.node");
    if (from && to) m_sources.emplace(*to, *from);
  }
}

SoundGraph::Filters SoundGraph::filters() const {
  Filters filters;
  for (const auto& [id, node] : m_nodes) {
    const std::string group = node.isCapture ? groupOf(node.properties, node.client) : "";
    if (!group.empty()) filters.emplace(group, id);
  }
  return filters;
}

// Everything that leads to one of these. Each filter is passed once.
std::set<std::uint32_t> SoundGraph::behind(std::vector<std::uint32_t> ahead, Filters filters) const {
  std::set<std::uint32_t> found;
  const auto add = [&](std::uint32_t id) {
    if (found.insert(id).second) ahead.push_back(id);
  };
  while (!ahead.empty()) {
    const std::uint32_t at = ahead.back();
    ahead.pop_back();
    const auto [first, last] = m_sources.equal_range(at);
    for (auto source = first; source != last; ++source) {
      if (m_nodes.contains(source->second)) add(source->second);
    }
    const Node& node = m_nodes.at(at);
    if (!found.contains(at) || !isHeard(node)) continue;
    const auto [begin, end] = filters.equal_range(groupOf(node.properties, node.client));
    for (auto capture = begin; capture != end; ++capture) add(capture->second);
    filters.erase(begin, end);
  }
  return found;
}

std::set<std::uint32_t> SoundGraph::worthAsking() const {
  std::vector<std::uint32_t> ends;
  std::set<std::uint32_t> captures;
  for (const auto& [id, node] : m_nodes) {
    if (node.isSink || node.isCapture) ends.push_back(id);
    if (node.isCapture && m_sources.contains(id)) captures.insert(id);
  }
  std::set<std::uint32_t> found = behind(std::move(ends), {});
  found.merge(captures);
  return found;
}

std::set<std::uint32_t> SoundGraph::leadingToSinks() const {
  std::vector<std::uint32_t> sinks;
  for (const auto& [id, node] : m_nodes) {
    if (node.isSink) sinks.push_back(id);
  }
  return behind(std::move(sinks), filters());
}

std::optional<std::uint32_t> SoundGraph::clientOf(std::uint32_t node) const {
  const auto found = m_nodes.find(node);
  return found == m_nodes.end() ? std::nullopt : found->second.client;
}

void SoundGraph::addNodeInfo(std::uint32_t node, const PipeWireInfo& info) {
  const auto found = m_nodes.find(node);
  if (found == m_nodes.end()) return;
  if (info.state) found->second.isRunning = *info.state == stateRunning;
  found->second.properties = info.properties;
}

void SoundGraph::setMuted(std::uint32_t node) {
  const auto found = m_nodes.find(node);
  if (found != m_nodes.end()) found->second.isMuted = true;
}

void SoundGraph::addClientInfo(std::uint32_t client, const PipeWireInfo& info) {
  if (m_clients.size() < mostObjects) m_clients[client] = info.properties;
}

// The number that the server found on its socket is right whatever sandbox the client is in. For PulseAudio's
// clients that is the server which speaks for them; what they say of themselves is handed on, by the stream
// or by the client.
Player SoundGraph::playerOf(const Node& node) const {
  const auto client = node.client ? m_clients.find(*node.client) : m_clients.end();
  if (client == m_clients.end()) return {};
  ProcessClaim claim = claimIn(client->second);
  if (valueOf(client->second, "client.api") != "pipewire-pulse") {
    const Pid pid = pidFromText(valueOf(client->second, "pipewire.sec.pid")).value_or(0);
    return {pid, std::move(claim)};
  }
  return {0, completed(claimIn(node.properties), claim)};
}

std::vector<Player> SoundGraph::players() const {
  std::vector<Player> players;
  for (const std::uint32_t id : leadingToSinks()) {
    const Node& node = m_nodes.at(id);
    if (!isHeard(node)) continue;
    Player player = playerOf(node);
    if (player.pid != 0 || player.claim.pid != 0) players.push_back(std::move(player));
  }
  return players;
}

} // namespace vantle
