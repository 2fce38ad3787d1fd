// SPDX-License-Identifier: MIT
// What a person starts. A command is answered here, without the toolkit, whose libraries alone would take
// longer to load than the answer takes; for everything else this process becomes the program itself.
#include "base/Text.h"
#include "command/Command.h"
#include "command/linux/BusCopy.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <span>
#include <string>
#include <system_error>
#include <unistd.h>
#include <variant>

namespace vantle {
namespace {

// Returns only when there is no program.
int becomeProgram(char** argv) {
  std::error_code error;
  const std::string own = std::filesystem::read_symlink("/proc/self/exe", error).string();
  // Its place is the same wherever all of it is installed; a build keeps it below.
  const std::string folder = folderOf(own);
  // What is to be started at login is this one.
  std::string name = own;
  argv[0] = name.data();
  for (const char* place : {VANTLE_PROGRAM_FROM_BIN, "libexec/vantle"}) {
    ::execv((folder + "/" + place).c_str(), argv);
    if (errno != ENOENT && errno != ENOTDIR) break;
  }
  std::fprintf(stderr, "vantle: the program itself cannot be started: %s.\n", std::strerror(errno));
  return exitStatus::failed;
}

// A stream that was closed must not become the connection to the bus: the answer would be written to that.
// What is written to these instead fails, or goes nowhere.
void occupyStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (::fcntl(stream, F_GETFD) < 0) ::open("/dev/null", O_RDONLY);
  }
}

int run(std::span<char*> arguments) {
  const auto parsed = parseCommandLine(arguments.subspan(1));
  if (const auto* const error = std::get_if<UsageError>(&parsed)) {
    std::fprintf(stderr, "vantle: %s\n", error->text.c_str());
    return exitStatus::usage;
  }
  if (std::holds_alternative<StartProgram>(parsed)) return becomeProgram(arguments.data());
  occupyStreams();
  BusCopy copy;
  return runCommand(std::get<Request>(parsed), copy, VANTLE_VERSION);
}

} // namespace
} // namespace vantle

int main(int argc, char** argv) {
  if (argc < 1) return vantle::exitStatus::usage; // Linux 5.18 and later give everybody a name
  return vantle::run({argv, static_cast<std::size_t>(argc)});
}
