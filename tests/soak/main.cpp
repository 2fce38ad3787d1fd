// SPDX-License-Identifier: MIT
#include "tests/soak/Evening.h"
#include "tests/support/Isolation.h"

#include <array>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <iostream>
#include <poll.h>
#include <random>
#include <string_view>
#include <unistd.h>

namespace {

using namespace vantle;

// Who watches over the isolated evening hears of a signal as well as the evening itself.
std::array<int, 2> cut{-1, -1};

void noteSignal(int) {
  const char one = 1;
  [[maybe_unused]] const ssize_t written = ::write(cut[1], &one, 1);
}

bool isPauseOver(std::chrono::milliseconds length) {
  pollfd waiting{cut[0], POLLIN, 0};
  return ::poll(&waiting, 1, static_cast<int>(length.count())) <= 0;
}

template <class Number> bool read(std::string_view text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

int usage() {
  std::cerr << "usage: soak [--root] MINUTES [SEED]\n";
  return 2;
}

} // namespace

int main(int argc, char** argv) {
  std::vector<std::string_view> words(argv + 1, argv + argc);
  soak::Evening::Options options;
  const bool asRoot = !words.empty() && words.front() == "--root";
  if (asRoot) words.erase(words.begin());
  double minutes = 0;
  options.seed = std::random_device()();
  if (words.empty() || words.size() > 2 || !read(words[0], minutes) || !(minutes > 0) || minutes > 100'000 ||
      (words.size() == 2 && !read(words[1], options.seed))) {
    return usage();
  }
  if (asRoot && ::geteuid() != 0) {
    std::cerr << "soak: only root can run as root\n";
    return 2;
  }
  constexpr uid_t somebody = 65534;
  if (::geteuid() == 0 && !asRoot) options.user = somebody;
  options.length = std::chrono::seconds(static_cast<long>(minutes * 60));
  options.pause = isPauseOver;
  std::cout << "soak: seed " << options.seed << std::endl;

  if (::pipe2(cut.data(), O_CLOEXEC | O_NONBLOCK) != 0) return 2;
  std::signal(SIGQUIT, SIG_DFL); // a shell gives its background jobs another
  struct sigaction action {};
  action.sa_handler = noteSignal;
  action.sa_flags = SA_RESTART;
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) ::sigaction(number, &action, nullptr);
  return desktop::runIsolated([&] {
    soak::Evening evening(options);
    bool isComplete = true;
    try {
      evening.run();
    } catch (const std::exception& failure) {
      std::cout << "soak: the stage itself failed: " << failure.what() << std::endl;
      isComplete = false;
    }
    evening.report();
    return isComplete && evening.holds() ? 0 : 1;
  });
}
