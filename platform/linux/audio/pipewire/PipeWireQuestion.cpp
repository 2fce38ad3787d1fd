// SPDX-License-Identifier: MIT
#include "platform/linux/audio/pipewire/PipeWireQuestion.h"

#include "base/Names.h"

#include <array>
#include <cerrno>
#include <set>
#include <sys/socket.h>
#include <sys/un.h>
#include <variant>

namespace vantle {

namespace {

constexpr std::int32_t listed = 1; // sequence numbers of the two calls whose answer ends a stage
constexpr std::int32_t looked = 2;

// A busy studio's registry has some hundred kilobytes. More is not read for one question.
constexpr std::size_t mostBytes = std::size_t{16} << 20U;

} // namespace

void PipeWireQuestion::ask() {
  m_players.reset();
  if (m_stage == Stage::overdue && isSilentStill()) return;
  end();
  if (!connect()) return;
  m_stage = Stage::listing;
  m_toSend = pipeWireHello(names::display) + pipeWireSync(listed);
  send();
}

// Whether it still has nothing to say to the question that it let pass. What has hung up is no longer silent.
bool PipeWireQuestion::isSilentStill() const {
  char first = 0;
  return ::recv(m_socket.get(), &first, 1, MSG_PEEK | MSG_DONTWAIT) < 0 &&
         (errno == EAGAIN || errno == EWOULDBLOCK);
}

bool PipeWireQuestion::connect() {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (m_path.empty() || m_path.size() >= sizeof address.sun_path) return false;
  m_path.copy(address.sun_path, m_path.size());
  m_socket = Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  return m_socket && ::connect(m_socket.get(), reinterpret_cast<const sockaddr*>(&address),
                               static_cast<socklen_t>(sizeof address)) == 0;
}

void PipeWireQuestion::send() {
  while (!m_toSend.empty()) {
    const ssize_t sent = ::send(m_socket.get(), m_toSend.data(), m_toSend.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0 && errno != EAGAIN && errno != EWOULDBLOCK) end();
    if (sent < 0) return;
    m_toSend.erase(0, static_cast<std::size_t>(sent));
  }
}

std::vector<pollfd> PipeWireQuestion::watch() {
  const int events = m_toSend.empty() ? POLLIN : POLLIN | POLLOUT;
  return {{m_socket.get(), static_cast<short>(events), 0}};
}

void PipeWireQuestion::advance() {
  constexpr int mostTurns = 16; // of 16 KB: whoever waits looks at the clock in between
  send();
  for (int turn = 0; turn < mostTurns && isAsking() && receive(); ++turn) {
    const auto kind = [this](std::uint32_t object) { return kindOf(object); };
    for (auto event = m_reader.next(kind); event && isAsking(); event = m_reader.next(kind)) take(*event);
  }
}

bool PipeWireQuestion::receive() {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): filled by recv
  std::array<char, std::size_t{16} << 10U> buffer;
  const ssize_t got = ::recv(m_socket.get(), buffer.data(), buffer.size(), 0);
  if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return false;
  if (got < 0 && errno == EINTR) return true;
  m_received += got > 0 ? static_cast<std::size_t>(got) : 0;
  if (got <= 0 || m_received > mostBytes) {
    end();
    return false;
  }
  m_reader.append({buffer.data(), static_cast<std::size_t>(got)});
  return true;
}

void PipeWireQuestion::take(const PipeWireEvent& event) {
  if (const auto* done = std::get_if<PipeWireDone>(&event)) {
    take(*done);
  } else if (const auto* global = std::get_if<PipeWireGlobal>(&event)) {
    m_graph.add(*global);
  } else if (const auto* info = std::get_if<PipeWireInfo>(&event)) {
    take(*info);
  } else if (const auto* loudness = std::get_if<PipeWireLoudness>(&event)) {
    if (loudness->isMuted) m_graph.setMuted(m_bound.at(loudness->object - pipeWireFirstBound).global);
  }
}

void PipeWireQuestion::take(const PipeWireDone& done) {
  if (m_stage == Stage::listing && done.sequence == listed) {
    look();
  } else if (m_stage == Stage::looking && done.sequence == looked) {
    m_players = m_graph.players();
    end();
  }
}

void PipeWireQuestion::take(const PipeWireInfo& info) {
  const Bound& bound = m_bound.at(info.object - pipeWireFirstBound);
  if (bound.kind == PipeWireKind::node) {
    m_graph.addNodeInfo(bound.global, info);
  } else {
    m_graph.addClientInfo(bound.global, info);
  }
}

PipeWireKind PipeWireQuestion::kindOf(std::uint32_t object) const {
  const bool isBound = object >= pipeWireFirstBound && object - pipeWireFirstBound < m_bound.size();
  return isBound ? m_bound[object - pipeWireFirstBound].kind : PipeWireKind::other;
}

void PipeWireQuestion::bind(PipeWireKind kind, std::uint32_t global) {
  const auto object = static_cast<std::uint32_t>(pipeWireFirstBound + m_bound.size());
  m_bound.push_back({kind, global});
  m_toSend += pipeWireBind(global, kind, object);
  if (kind == PipeWireKind::node) m_toSend += pipeWireAskLoudness(object);
}

void PipeWireQuestion::look() {
  m_stage = Stage::looking;
  std::set<std::uint32_t> clients;
  for (const std::uint32_t node : m_graph.worthAsking()) {
    const std::optional<std::uint32_t> client = m_graph.clientOf(node);
    if (!client) continue;
    bind(PipeWireKind::node, node);
    clients.insert(*client);
  }
  for (const std::uint32_t client : clients) bind(PipeWireKind::client, client);
  m_toSend += pipeWireSync(looked);
  send();
}

void PipeWireQuestion::giveUp() { m_stage = Stage::overdue; }

void PipeWireQuestion::end() {
  m_stage = Stage::none;
  m_socket = {};
  m_toSend.clear();
  m_reader = {};
  m_graph = {};
  m_bound.clear();
  m_received = 0;
}

std::string pipeWireSocket(const char* (*environment)(const char* name)) {
  const auto valueOf = [&](const char* name) {
    const char* value = environment(name);
    return std::string(value ? value : "");
  };
  std::string remote = valueOf("PIPEWIRE_REMOTE");
  if (remote.empty()) remote = "pipewire-0";
  if (remote.starts_with('/')) return remote;
  for (const char* name : {"PIPEWIRE_RUNTIME_DIR", "XDG_RUNTIME_DIR"}) {
    if (std::string folder = valueOf(name); !folder.empty()) return folder.append("/").append(remote);
  }
  return {};
}

} // namespace vantle
