// SPDX-License-Identifier: MIT
#include "platform/linux/band/SessionWeights.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

constexpr std::chrono::milliseconds kernelStep{100}; // HZ / 10 in the kernel's autogroup code

template <typename Number> bool takeNumber(std::string_view& text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return error == std::errc{};
}

bool takeWord(std::string_view& text, std::string_view word) {
  if (!text.starts_with(word)) return false;
  text.remove_prefix(word.size());
  return true;
}

// The descriptor of one /proc/PID/autogroup: it stays bound to that very process.
class AutogroupFile {
 public:
  AutogroupFile(const ProcessFiles& files, Pid pid, int flags)
      : m_file(files.open(pid, "autogroup", flags)) {}

  std::optional<Autogroup> read() const {
    std::array<char, 64> text; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by read
    const ssize_t got = m_file ? ::read(m_file.get(), text.data(), text.size()) : -1;
    if (got <= 0) return std::nullopt;
    return Autogroup::parse({text.data(), static_cast<std::size_t>(got)});
  }
  bool write(int nice) const { // errno says why not
    const std::string text = std::to_string(nice);
    return ::write(m_file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
  }

 private:
  Descriptor m_file;
};

} // namespace

std::optional<Autogroup> Autogroup::parse(std::string_view text) {
  Autogroup group;
  if (!takeWord(text, "/autogroup-") || !takeNumber(text, group.id) || !takeWord(text, " nice ") ||
      !takeNumber(text, group.nice)) {
    return std::nullopt;
  }
  return group;
}

std::optional<Autogroup> SessionWeights::read(Pid pid) const {
  return AutogroupFile(m_files, pid, O_RDONLY).read();
}

std::optional<Autogroup> SessionWeights::readWritable(Pid pid) const {
  // Opening for writing is the whole permission check: after it the kernel only asks for patience.
  return AutogroupFile(m_files, pid, O_RDWR).read();
}

std::vector<SessionWeights::Change>::iterator SessionWeights::find(long autogroup) {
  return std::find_if(m_queue.begin(), m_queue.end(),
                      [autogroup](const Change& change) { return change.autogroup == autogroup; });
}

void SessionWeights::lower(const Autogroup& session, const std::vector<Pid>& members, const Load& load) {
  if (const auto waiting = find(session.id); waiting != m_queue.end()) m_queue.erase(waiting);
  if (session.nice == own) m_queue.push_back({session.id, own, lowered, load, members});
}

SessionWeights::Outcome SessionWeights::raise(const std::vector<Pid>& members) {
  std::optional<Autogroup> group;
  for (auto member = members.begin(); !group && member != members.end(); ++member) group = read(*member);
  if (!group) return Outcome::done; // gone, or in no session of its own any more

  auto waiting = find(group->id);
  if (waiting != m_queue.end() && waiting->to == lowered) {
    m_queue.erase(waiting);
    waiting = m_queue.end();
  }
  if (group->nice != lowered) return Outcome::done; // never lowered, or somebody else's choice by now
  if (waiting == m_queue.end()) {
    const Change change{group->id, lowered, own, {}, members};
    const Outcome outcome = write(change);
    if (outcome != Outcome::queued) return outcome;
    m_queue.push_back(change);
    apply();
    return find(group->id) == m_queue.end() ? Outcome::done : Outcome::queued;
  }
  for (const Pid member : members) {
    const auto known = std::find(waiting->members.begin(), waiting->members.end(), member);
    if (known == waiting->members.end()) waiting->members.push_back(member);
  }
  return Outcome::queued;
}

SessionWeights::Outcome SessionWeights::write(const Change& change) const {
  for (const Pid member : change.members) {
    const AutogroupFile file(m_files, member, O_RDWR);
    const std::optional<Autogroup> group = file.read();
    if (!group || group->id != change.autogroup) continue; // gone, or in a session of its own by now
    if (group->nice != change.from) return Outcome::done;  // somebody else's choice by now
    if (file.write(change.to)) return Outcome::done;
    if (errno == EAGAIN) return Outcome::queued;
  }
  return Outcome::impossible;
}

void SessionWeights::apply() {
  std::stable_sort(m_queue.begin(), m_queue.end(), [](const Change& left, const Change& right) {
    if (left.to != right.to) return left.to == own;
    return left.load > right.load;
  });
  m_timer.reset();
  while (!m_queue.empty()) {
    if (write(m_queue.front()) == Outcome::queued) {
      m_timer = m_loop.after(kernelStep, [this] { apply(); });
      return;
    }
    const Change change = std::move(m_queue.front());
    m_queue.erase(m_queue.begin());
    if (change.to == own && m_raised) m_raised(change.members);
  }
}

bool SessionWeights::settle(std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  for (apply(); !m_queue.empty(); apply()) {
    const auto now = std::chrono::steady_clock::now();
    if (now >= end) return false;
    std::this_thread::sleep_for(std::min<std::chrono::steady_clock::duration>(kernelStep, end - now));
  }
  return true;
}

} // namespace vantle
