// SPDX-License-Identifier: MIT
#include "platform/linux/pressure/PsiMemoryPressure.h"

#include "platform/posix/Descriptor.h"

#include <array>
#include <charconv>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

// "some": at least one task stood still; "full": all that were not idle did, so no work was done at all.
// Stall and window in microseconds; ordinary users may only name windows of whole multiples of 2 s.
constexpr std::string_view warningTrigger = "some 150000 2000000";
constexpr std::string_view criticalTrigger = "full 300000 2000000";

// The same shares of time, in percent, for the averages over 10 s.
constexpr double warningSome = 7.5;
constexpr double criticalFull = 15.0;

constexpr int levelNormal = 1;
constexpr int levelWarning = 2;
constexpr int levelCritical = 4;

Descriptor openTrigger(const std::string& path, std::string_view trigger) {
  Descriptor file(::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
  if (!file) return file;
  const std::string text(trigger); // the kernel wants the terminating zero as well
  const ssize_t written = ::write(file.get(), text.c_str(), text.size() + 1);
  return written < 0 ? Descriptor(-1) : std::move(file);
}

// Set by the kernel when what was measured is gone; it never goes away again.
bool isDead(int descriptor) {
  pollfd state{descriptor, 0, 0};
  return ::poll(&state, 1, 0) > 0 && (state.revents & (POLLERR | POLLNVAL)) != 0;
}

class TriggerSource final : public MemoryPressureEvents::Source {
 public:
  TriggerSource(EventLoop& loop, Descriptor warning, Descriptor critical, std::function<void(bool)> handler)
      : m_loop(loop), m_warning(std::move(warning)), m_critical(std::move(critical)),
        m_handler(std::move(handler)) {
    m_criticalWatch =
        m_loop.watch(m_critical.get(), EventLoop::Readiness::priority, [this] { critically(); });
    m_warningWatch = m_loop.watch(m_warning.get(), EventLoop::Readiness::priority, [this] { warned(); });
  }

 private:
  // The kernel looks at both triggers at once. What is critical must not come second, as a mere repetition of
  // a warning just given: a warning is held back until the loop has seen everything that fired with it.
  void warned() {
    if (isDead(m_warning.get())) {
      m_warningWatch.reset();
    } else {
      m_heldBack = m_loop.after(std::chrono::milliseconds(0), [this] {
        const auto done = std::move(m_heldBack);
        m_handler(false);
      });
    }
  }

  void critically() {
    if (isDead(m_critical.get())) {
      m_criticalWatch.reset();
    } else {
      m_heldBack.reset();
      m_handler(true);
    }
  }

  EventLoop& m_loop;
  Descriptor m_warning;
  Descriptor m_critical;
  std::function<void(bool)> m_handler;
  std::unique_ptr<EventLoop::Handle> m_criticalWatch;
  std::unique_ptr<EventLoop::Handle> m_warningWatch;
  std::unique_ptr<EventLoop::Handle> m_heldBack;
};

// The value behind "avg10=" in the line of that kind.
std::optional<double> averageOf(std::string_view text, std::string_view kind) {
  constexpr std::string_view key = " avg10=";
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (!line.starts_with(kind) || !line.substr(kind.size()).starts_with(key)) continue;
    line.remove_prefix(kind.size() + key.size());
    double value = 0;
    const auto [rest, error] = std::from_chars(line.data(), line.data() + line.size(), value);
    if (error == std::errc()) return value;
  }
  return std::nullopt;
}

} // namespace

PsiMemoryPressure::PsiMemoryPressure(EventLoop& loop, std::string path)
    : m_loop(loop), m_path(std::move(path)) {}

std::unique_ptr<MemoryPressureEvents::Source>
PsiMemoryPressure::watch(std::function<void(bool isCritical)> handler) {
  Descriptor warning = openTrigger(m_path, warningTrigger);
  // The kernel examines the youngest trigger first, so the critical one is made last.
  Descriptor critical = openTrigger(m_path, criticalTrigger);
  if (!warning || !critical) return nullptr;
  return std::make_unique<TriggerSource>(m_loop, std::move(warning), std::move(critical), std::move(handler));
}

std::optional<int> PsiMemoryPressure::level() const {
  const Descriptor file(::open(m_path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file) return std::nullopt;
  std::array<char, 512> buffer{}; // two lines of at most 80 characters
  const ssize_t size = ::read(file.get(), buffer.data(), buffer.size());
  if (size <= 0) return std::nullopt;
  return levelFromPressureText({buffer.data(), static_cast<std::size_t>(size)});
}

std::optional<int> levelFromPressureText(std::string_view text) {
  const std::optional<double> some = averageOf(text, "some");
  if (!some) return std::nullopt;
  if (averageOf(text, "full").value_or(0) >= criticalFull) return levelCritical;
  return *some >= warningSome ? levelWarning : levelNormal;
}

} // namespace vantle
