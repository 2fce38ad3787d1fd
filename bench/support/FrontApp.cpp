// SPDX-License-Identifier: MIT
#include "bench/support/FrontApp.h"

#include "bench/support/ProcessorTime.h"
#include "platform/posix/Descriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <limits>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace vantle::bench {

namespace {

using Clock = std::chrono::steady_clock;
using Millis = std::chrono::duration<double, std::milli>;

void spin(std::uint64_t rounds) {
  volatile std::uint64_t value = 1;
  for (std::uint64_t at = 0; at < rounds; ++at) value = value * 6364136223846793005U + 1;
}

// How many rounds are the given work on a processor of one's own.
std::uint64_t roundsFor(Millis work) {
  constexpr std::uint64_t sample = 1'000'000;
  double least = 1e9;
  for (int attempt = 0; attempt < 20; ++attempt) {
    const double before = processorMillis();
    spin(sample);
    least = std::min(least, processorMillis() - before);
  }
  return static_cast<std::uint64_t>(static_cast<double>(sample) * work.count() / least);
}

bool transfer(int channel, void* data, std::size_t size, bool out) {
  auto* bytes = static_cast<char*>(data);
  while (size > 0) {
    const ssize_t moved = out ? ::write(channel, bytes, size) : ::read(channel, bytes, size);
    if (moved <= 0) return false;
    bytes += moved;
    size -= static_cast<std::size_t>(moved);
  }
  return true;
}

// How long the calling thread has waited for a processor so far: the second number in its schedstat file.
// Unlike the time on the wall it does not grow while a virtual machine's own processor is away.
class ProcessorWait {
 public:
  ProcessorWait() : m_file(::open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC)) {}

  double micros() const {
    std::array<char, 64> text{};
    const ssize_t got = m_file ? ::pread(m_file.get(), text.data(), text.size() - 1, 0) : -1;
    const char* second = got > 0 ? std::strchr(text.data(), ' ') : nullptr;
    if (second == nullptr) return std::numeric_limits<double>::quiet_NaN();
    return static_cast<double>(std::strtoull(second, nullptr, 10)) / 1e3;
  }

 private:
  Descriptor m_file;
};

struct Order {
  std::int64_t frames = 0; // milliseconds
  std::int64_t share = 0;
};

[[noreturn]] void drawFrames(int channel) {
  const std::uint64_t rounds = roundsFor(FrontApp::work);
  const ProcessorWait wait;
  Order order;
  while (transfer(channel, &order, sizeof order, false)) {
    std::vector<Frame> frames;
    // Read before it sleeps: to wait after it was woken counts as well.
    double waited = wait.micros();
    const Clock::time_point begin = Clock::now();
    for (Clock::time_point due = begin; due - begin < std::chrono::milliseconds(order.frames);) {
      const auto since = due.time_since_epoch();
      const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(since);
      const timespec until{seconds.count(), (since - seconds).count()};
      while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
      }
      spin(rounds);
      const double millis = Millis(Clock::now() - due).count();
      const double before = std::exchange(waited, wait.micros());
      frames.push_back({millis, waited - before});
      // A frame that took too long makes the following one start at once, and those in between are lost.
      do due += FrontApp::frame;
      while (due + FrontApp::frame < Clock::now());
    }
    const Clock::time_point wall = Clock::now();
    const double used = processorMillis();
    while (Clock::now() - wall < std::chrono::milliseconds(order.share)) spin(10'000);
    double share = (processorMillis() - used) / Millis(Clock::now() - wall).count();
    std::uint64_t count = frames.size();
    if (!transfer(channel, &count, sizeof count, true) || !transfer(channel, &share, sizeof share, true) ||
        !transfer(channel, frames.data(), count * sizeof(Frame), true)) {
      break;
    }
  }
  ::_exit(0);
}

std::function<void()> placedIn(OwnSession session) {
  return [session] {
    if (session == OwnSession::yes) ::setsid();
  };
}

} // namespace

BusyApp::BusyApp(OwnSession session)
    : m_process(placedIn(session), [] {
        for (;;) spin(1'000'000);
      }) {}

FrontApp::FrontApp(OwnSession session) {
  std::array<int, 2> sockets{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0) std::abort();
  m_channel = sockets[0];
  m_process.emplace(placedIn(session), [&] {
    ::close(sockets[0]);
    drawFrames(sockets[1]);
  });
  ::close(sockets[1]);
  measure({}, {}); // it has found out how much 8 ms are
}

FrontApp::~FrontApp() { ::close(m_channel); }

FrontFigures FrontApp::measure(std::chrono::milliseconds frames, std::chrono::milliseconds share) const {
  FrontFigures figures;
  Order order{frames.count(), share.count()};
  std::uint64_t count = 0;
  if (!transfer(m_channel, &order, sizeof order, true) || !transfer(m_channel, &count, sizeof count, false) ||
      !transfer(m_channel, &figures.share, sizeof figures.share, false)) {
    return figures;
  }
  figures.frames.resize(count);
  transfer(m_channel, figures.frames.data(), count * sizeof(Frame), false);
  return figures;
}

} // namespace vantle::bench
