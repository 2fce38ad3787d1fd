// SPDX-License-Identifier: MIT
#include "platform/linux/hooks/PersonsHooks.h"

#include "platform/linux/hooks/HookProcess.h"
#include "platform/posix/files/OwnFolder.h"
#include "platform/posix/process/ExecPointers.h"
#include "platform/posix/process/SignalsBlocked.h"

#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <set>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace vantle {
namespace {

constexpr std::chrono::milliseconds longestLook{100};

// The user's own group may write to what is the user's.
mode_t othersMayWrite(const struct stat& file) {
  return S_IWOTH | (file.st_gid == ::getegid() ? 0U : S_IWGRP);
}

// Whoever may write to a folder on the way can exchange what is below, unless the sticky bit keeps them from
// it.
bool isClosedToOthers(const Descriptor& below) {
  Descriptor folder(::fcntl(below.get(), F_DUPFD_CLOEXEC, 0));
  struct stat about {};
  if (!folder || ::fstat(folder.get(), &about) != 0) return false;
  while ((about.st_mode & S_ISVTX) != 0 || (about.st_mode & othersMayWrite(about)) == 0) {
    Descriptor above(::openat(folder.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat next {};
    if (!above || ::fstat(above.get(), &next) != 0) return false;
    if (next.st_ino == about.st_ino && next.st_dev == about.st_dev) return true;
    folder = std::move(above);
    about = next;
  }
  return false;
}

// Nobody but this user and root can have put it there or changed it. A link is none: what it leads to may be
// anybody's.
bool isOwnProgram(const std::string& folder, const std::string& name) {
  const Descriptor own = openOwnFolder(folder);
  struct stat file {};
  if (!own || !isClosedToOthers(own)) return false;
  if (::fstatat(own.get(), name.c_str(), &file, AT_SYMLINK_NOFOLLOW) != 0) return false;
  return S_ISREG(file.st_mode) && (file.st_uid == 0 || file.st_uid == ::geteuid()) &&
         (file.st_mode & othersMayWrite(file)) == 0 && (file.st_mode & S_IXUSR) != 0;
}

// Everything of this program's own, and these.
std::vector<std::string> environmentWith(const Hooks::Variables& variables) {
  std::vector<std::string> all;
  for (char** one = environ; *one != nullptr; ++one) all.emplace_back(*one);
  for (const auto& [name, value] : variables) all.emplace_back(name).append("=").append(value);
  return all;
}

// A number may become another process's at any moment, so the one that is ended is held by a descriptor.
bool killIfOf(Pid session, Pid pid) {
  if (::getsid(pid) != session) return false;
  const Descriptor process(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
  return process && ::getsid(pid) == session &&
         ::syscall(SYS_pidfd_send_signal, process.get(), SIGKILL, nullptr, 0) == 0;
}

// Shells with job control and timeout(1) give what they start groups of its own. What a process started right
// before its end is met by the next look; one that was told to end starts nothing more.
void killSession(Pid session) {
  constexpr int mostLooks = 16;
  std::set<Pid> told;
  bool isNew = true;
  for (int looks = 0; isNew && looks < mostLooks; ++looks) {
    isNew = false;
    std::error_code error;
    std::filesystem::directory_iterator entry("/proc", error);
    for (const std::filesystem::directory_iterator last; !error && entry != last; entry.increment(error)) {
      const std::string name = entry->path().filename().string();
      Pid pid = 0;
      const auto [rest, failure] = std::from_chars(name.data(), name.data() + name.size(), pid);
      if (failure != std::errc() || rest != name.data() + name.size() || told.contains(pid)) continue;
      if (killIfOf(session, pid)) isNew = told.insert(pid).second;
    }
  }
}

} // namespace

PersonsHooks::~PersonsHooks() { letGo(); }

bool PersonsHooks::start(const std::string& name, const Variables& variables, std::function<void()> ended) {
  cut();
  const auto look = [folder = m_folder, name] { return isOwnProgram(folder, name); };
  if (!m_file.answer(longestLook, look).value_or(false)) return false;
  std::vector<std::string> arguments{m_folder + "/" + name};
  std::vector<std::string> environment = environmentWith(variables);
  const std::vector<char*> argumentPointers = execPointers(arguments);
  const std::vector<char*> environmentPointers = execPointers(environment);
  std::optional<SignalsBlocked> blocked(std::in_place);
  const Pid pid = ::fork();
  if (pid == 0) leadHook(argumentPointers.data(), environmentPointers.data(), m_longestRun);
  blocked.reset();
  if (pid < 0) return false;
  m_running = pid;
  m_process = Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
  const auto finish = [this, then = std::move(ended)] {
    const std::function<void()> tell = then; // this one ends with the watch
    cut();
    tell();
  };
  if (m_process) m_end = m_loop.watch(m_process.get(), EventLoop::Readiness::readable, finish);
  m_limit = m_loop.after(m_longestRun, [this, name, finish] {
    std::fprintf(stderr, "vantle: the hook %s takes too long, and is ended.\n", name.c_str());
    // Its end is heard of; without a descriptor to spare it is not.
    m_process ? kill() : finish();
  });
  return true;
}

// All of its session, in whatever groups. The number stays its own until it was waited for.
void PersonsHooks::kill() const {
  ::kill(-m_running, SIGKILL);
  ::kill(m_running, SIGKILL); // right after its birth it leads no group yet
  killSession(m_running);
}

void PersonsHooks::cut() {
  if (m_running == 0) return;
  kill();
  letGo();
}

void PersonsHooks::letGo() {
  m_end.reset();
  m_limit.reset();
  m_process = Descriptor();
  if (m_running != 0) ::waitpid(m_running, nullptr, WNOHANG);
  m_running = 0;
}

} // namespace vantle
