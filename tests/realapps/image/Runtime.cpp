// SPDX-License-Identifier: MIT
// Stands in for what an AppImage begins with, as its documentation describes it: a process of the image's own
// file serves the file system that is in it, without a session and for as long as the app runs; the one that
// a person has started becomes the app. squashfuse does the serving below it, on NAME.squashfs beside the
// image.
#include <array>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

[[noreturn]] void serve(const std::string& image, const std::string& folder, int app) {
  ::setsid();
  if (::fork() != 0) ::_exit(0); // to nobody, and never a session's first process
  const pid_t server = ::fork();
  if (server == 0) {
    ::close(app);
    const std::string system = fs::path(image).replace_extension("squashfs").string();
    ::execlp("squashfuse", "squashfuse", "-f", system.c_str(), folder.c_str(), nullptr);
    ::_exit(127);
  }
  char byte = 0;
  while (::read(app, &byte, 1) > 0) {
  } // its end is that of the last process of the app
  ::kill(server, SIGTERM);
  ::waitpid(server, nullptr, 0);
  ::rmdir(folder.c_str());
  ::_exit(0);
}

} // namespace

int main(int /*argc*/, char** argv) {
  std::array<char, PATH_MAX> path{};
  if (::readlink("/proc/self/exe", path.data(), path.size() - 1) <= 0) return 1;
  const std::string image(path.data());
  const char* temporary = std::getenv("TMPDIR");
  std::string folder = std::string(temporary == nullptr ? "/tmp" : temporary) + "/.mount_" +
                       fs::path(image).stem().string().substr(0, 6) + "XXXXXX";
  std::array<int, 2> pipe{};
  if (::mkdtemp(folder.data()) == nullptr || ::pipe(pipe.data()) != 0) return 1;
  const pid_t server = ::fork();
  if (server == 0) {
    ::close(pipe[1]);
    serve(image, folder, pipe[0]);
  }
  ::close(pipe[0]);
  ::waitpid(server, nullptr, 0);
  const std::string start = folder + "/AppRun";
  for (int turn = 0; ::access(start.c_str(), X_OK) != 0; ++turn) {
    if (turn == 1000) return 1;
    ::usleep(10'000);
  }
  ::setenv("APPIMAGE", image.c_str(), 1);
  ::setenv("APPDIR", folder.c_str(), 1);
  ::execv(start.c_str(), argv);
  return 127;
}
