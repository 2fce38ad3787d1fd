// SPDX-License-Identifier: MIT
#include "platform/linux/windows/toplevels/SocketPeers.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/unix_diag.h>
#include <optional>
#include <sys/socket.h>

namespace vantle {

namespace {

constexpr std::uint32_t established = 1; // TCP_ESTABLISHED, which Unix sockets share

struct Question {
  nlmsghdr header;
  unix_diag_req request;
};

// The kernel writes its records one behind the other, each at a multiple of four bytes.
template <class Record> std::optional<Record> recordAt(std::string_view bytes, std::size_t at) {
  if (at > bytes.size() || bytes.size() - at < sizeof(Record)) return std::nullopt;
  Record record{};
  std::memcpy(&record, bytes.data() + at, sizeof record);
  return record;
}

std::size_t aligned(std::size_t length) { return (length + 3) & ~std::size_t{3}; }

// A path ends with a zero there, a name that is no path begins with one.
std::string readable(std::string_view name) {
  while (name.ends_with('\0')) name.remove_suffix(1);
  return std::string(name);
}

} // namespace

SocketPeers::SocketPeers()
    : m_kernel(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_SOCK_DIAG)) {
  if (!ask()) m_kernel = Descriptor();
}

bool SocketPeers::ask() {
  Question question{};
  question.header.nlmsg_len = sizeof question;
  question.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
  question.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  question.request.sdiag_family = AF_UNIX;
  question.request.udiag_states = 1U << established;
  question.request.udiag_show = UDIAG_SHOW_NAME | UDIAG_SHOW_PEER;
  return ::send(m_kernel.get(), &question, sizeof question, 0) == static_cast<ssize_t>(sizeof question);
}

// The kernel writes the next part of its answer while this one is taken: there is nothing to wait for.
bool SocketPeers::advance(std::chrono::steady_clock::time_point end) {
  std::array<char, 32 * 1024> bytes; // NOLINT(cppcoreguidelines-pro-type-member-init)
  while (m_kernel) {
    const ssize_t count = ::recv(m_kernel.get(), bytes.data(), bytes.size(), 0);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0 || takeReply({bytes.data(), static_cast<std::size_t>(count)})) m_kernel = Descriptor();
    if (std::chrono::steady_clock::now() >= end) break;
  }
  return !m_kernel;
}

bool SocketPeers::takeReply(std::string_view reply) {
  while (const auto header = recordAt<nlmsghdr>(reply, 0)) {
    if (header->nlmsg_type == NLMSG_DONE || header->nlmsg_type == NLMSG_ERROR) return true;
    const std::size_t length = header->nlmsg_len;
    if (length < sizeof *header || length > reply.size()) return true;
    take(reply.substr(sizeof *header, length - sizeof *header));
    reply.remove_prefix(std::min(aligned(length), reply.size()));
  }
  return false;
}

void SocketPeers::take(std::string_view message) {
  std::string name;
  std::uint32_t peer = 0;
  std::size_t at = aligned(sizeof(unix_diag_msg));
  while (const auto attribute = recordAt<rtattr>(message, at)) {
    if (attribute->rta_len < sizeof *attribute || attribute->rta_len > message.size() - at) break;
    const std::string_view value =
        message.substr(at + sizeof *attribute, attribute->rta_len - sizeof *attribute);
    if (attribute->rta_type == UNIX_DIAG_NAME) name = readable(value);
    if (attribute->rta_type == UNIX_DIAG_PEER) peer = recordAt<std::uint32_t>(value, 0).value_or(0);
    at += aligned(attribute->rta_len);
  }
  if (!name.empty() && peer != 0) m_clients[name].push_back(peer);
}

std::vector<SocketInode> SocketPeers::clientsOf(const std::string& name) const {
  const auto found = m_clients.find(name);
  return found == m_clients.end() ? std::vector<SocketInode>() : found->second;
}

std::string SocketPeers::nameBehind(SocketInode client) const {
  for (const auto& [name, clients] : m_clients) {
    if (std::find(clients.begin(), clients.end(), client) != clients.end()) return name;
  }
  return {};
}

} // namespace vantle
