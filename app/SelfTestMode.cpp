// SPDX-License-Identifier: MIT
#include "app/SelfTestMode.h"

#include "engine/SelfTest.h"
#include "platform/linux/LinuxMachine.h"
#include "platform/linux/files/XdgFolders.h"

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <string>
#include <unistd.h>

namespace vantle {

namespace {

// The list of this process's children, opened before anything can happen.
int childrenFile = -1;

// In a session of their own, the test processes hear nothing of a Ctrl-C that ends this one, and would keep
// every processor busy from then on. Only calls that a handler may make.
void endChildrenAndDie(int signal) {
  std::array<char, 512> text{};
  pid_t child = 0;
  for (ssize_t size = 0; (size = ::read(childrenFile, text.data(), text.size())) > 0;) {
    for (std::size_t at = 0; at < static_cast<std::size_t>(size); ++at) {
      const char letter = text.at(at);
      if (letter >= '0' && letter <= '9') {
        child = child * 10 + (letter - '0');
      } else if (child > 0) {
        ::kill(child, SIGKILL);
        child = 0;
      }
    }
  }
  ::raise(signal); // it has its default action again
}

void takeChildrenAlong() {
  childrenFile =
      ::open(("/proc/self/task/" + std::to_string(::getpid()) + "/children").c_str(), O_RDONLY | O_CLOEXEC);
  if (childrenFile < 0) return;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE}) {
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler == SIG_IGN) continue; // started with nohup, say
    action.sa_handler = endChildrenAndDie;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigfillset(&action.sa_mask);
    ::sigaction(signal, &action, nullptr);
  }
}

} // namespace

int runSelfTestMode() {
  takeChildrenAlong();
  const std::unique_ptr<LinuxMachine> linuxMachine = LinuxMachine::forSelfTest(XdgFolders::fromEnvironment());
  Machine machine = linuxMachine->machine();
  return SelfTest(machine,
                  [](const std::string& line) {
                    std::puts(line.c_str());
                    std::fflush(stdout);
                  })
      .run();
}

} // namespace vantle
