// SPDX-License-Identifier: MIT
#include "bench/support/SystemCalls.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle::bench {

// How the arguments of a system call are to be handed on, one letter each: n a number, d a descriptor, p a
// path, o output, i input of as many bytes as the argument named by `lengthAt` says (or 4 for -4).
struct CallShape {
  long number;
  const char* name;
  const char* arguments;
  int lengthAt = 0;
  bool makesDescriptor = false;
};

namespace {

// What the bare loop makes. Everything else (memory, signals, threads) is the program's own affair.
constexpr CallShape shapes[] = {
    {SYS_openat, "openat", "dpnn", 0, true},
    {SYS_close, "close", "d"},
    {SYS_read, "read", "don"},
    {SYS_pread64, "pread64", "donn"},
    {SYS_write, "write", "din", 2},
    {SYS_lseek, "lseek", "dnn"},
    {SYS_fcntl, "fcntl", "dnn"},
    {SYS_fchmod, "fchmod", "dn"},
    {SYS_fdatasync, "fdatasync", "d"},
    {SYS_getdents64, "getdents64", "don"},
    {SYS_newfstatat, "newfstatat", "dpon"},
    {SYS_faccessat, "faccessat", "dpn"},
    {SYS_readlinkat, "readlinkat", "dpon"},
    {SYS_ioprio_get, "ioprio_get", "nn"},
    {SYS_ioprio_set, "ioprio_set", "nnn"},
    {SYS_sched_getscheduler, "sched_getscheduler", "n"},
    {SYS_sched_setscheduler, "sched_setscheduler", "nni", -4},
    {SYS_sched_getaffinity, "sched_getaffinity", "nno"},
    {SYS_sched_setaffinity, "sched_setaffinity", "nni", 1},
    {SYS_getpriority, "getpriority", "nn"},
    {SYS_prlimit64, "prlimit64", "nnoo"},
    {SYS_kill, "kill", "nn"},
    {SYS_getpid, "getpid", ""},
#ifdef SYS_open // the calls that older architectures have beside the newer ones
    {SYS_stat, "stat", "po"},
    {SYS_lstat, "lstat", "po"},
    {SYS_fstat, "fstat", "do"},
    {SYS_access, "access", "pn"},
    {SYS_readlink, "readlink", "pon"},
    {SYS_mkdir, "mkdir", "pn"},
    {SYS_rename, "rename", "pp"},
    {SYS_unlink, "unlink", "p"},
#endif
    {SYS_mkdirat, "mkdirat", "dpn"},
    {SYS_renameat, "renameat", "dpdp"},
    {SYS_unlinkat, "unlinkat", "dpn"},
};

constexpr std::size_t largestOutput = std::size_t{256} << 10U;
constexpr long phaseMark = 0x7654'3210; // no system call has this number

const CallShape* shapeOf(long number) {
  const auto* found = std::find_if(std::begin(shapes), std::end(shapes),
                                   [number](const CallShape& shape) { return shape.number == number; });
  return found == std::end(shapes) ? nullptr : found;
}

[[noreturn]] void fail(const char* what) {
  std::perror(what);
  std::exit(1);
}

std::string copyFrom(pid_t child, std::uint64_t address, std::size_t length) {
  std::string bytes(length, '\0');
  const iovec here{bytes.data(), bytes.size()};
  const iovec there{reinterpret_cast<void*>(address), bytes.size()};
  const ssize_t got = ::process_vm_readv(child, &here, 1, &there, 1, 0);
  bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  return bytes;
}

std::string pathFrom(pid_t child, std::uint64_t address) {
  // Up to the end of the page first: what lies behind it may not be mapped.
  std::string path;
  while (path.size() < 8192) {
    const std::string part = copyFrom(child, address + path.size(), 4096 - (address + path.size()) % 4096);
    const std::size_t end = part.find('\0');
    path += part.substr(0, end);
    if (end != std::string::npos || part.empty()) break;
  }
  return path;
}

RecordedCall recorded(pid_t child, const CallShape& shape, const std::uint64_t* arguments) {
  RecordedCall call;
  call.number = shape.number;
  call.shape = &shape;
  for (std::size_t at = 0; shape.arguments[at] != '\0'; ++at) {
    call.arguments[at] = arguments[at];
    if (arguments[at] == 0) continue;
    if (shape.arguments[at] == 'p') call.text[at] = pathFrom(child, arguments[at]);
    if (shape.arguments[at] == 'i') {
      const std::size_t length = shape.lengthAt < 0 ? 4 : arguments[shape.lengthAt];
      call.text[at] = copyFrom(child, arguments[at], length);
    }
  }
  return call;
}

std::string withoutNumbers(const std::string& path) {
  std::string general;
  for (const char c : path) {
    const bool isDigit = c >= '0' && c <= '9';
    if (!isDigit) general += c;
    if (isDigit && !general.ends_with('N')) general += 'N';
  }
  return general;
}

std::map<int, std::string> openDescriptors(pid_t pid) {
  std::map<int, std::string> open;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/fd")) {
    std::error_code gone;
    open[std::stoi(entry.path().filename())] = std::filesystem::read_symlink(entry.path(), gone);
  }
  return open;
}

class Watcher {
 public:
  explicit Watcher(pid_t child) : m_child(child) {}

  void watch(Recordings& out) {
    m_out = &out;
    int status = 0;
    ::waitpid(m_child, &status, 0);
    if (::ptrace(PTRACE_SETOPTIONS, m_child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) != 0) {
      fail("ptrace");
    }
    long signal = 0;
    while (::ptrace(PTRACE_SYSCALL, m_child, nullptr, signal) == 0 &&
           ::waitpid(m_child, &status, 0) == m_child) {
      if (WIFEXITED(status) || WIFSIGNALED(status)) break;
      const int stop = WSTOPSIG(status);
      signal = stop == (SIGTRAP | 0x80) || stop == SIGTRAP || stop == SIGSTOP ? 0 : stop;
      if (stop == (SIGTRAP | 0x80)) atSystemCall();
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) fail("the watched program");
    if (!out.phases.empty()) out.phases.pop_back(); // what follows the last phase mark
  }

 private:
  void atSystemCall() {
    __ptrace_syscall_info info{};
    ::ptrace(static_cast<__ptrace_request>(PTRACE_GET_SYSCALL_INFO), m_child, sizeof info, &info);
    if (info.op == PTRACE_SYSCALL_INFO_ENTRY) {
      atEntry(static_cast<long>(info.entry.nr), reinterpret_cast<const std::uint64_t*>(info.entry.args));
    } else if (info.op == PTRACE_SYSCALL_INFO_EXIT && m_isRecorded) {
      m_out->phases.back().calls.back().result = info.exit.rval;
    }
  }

  void atEntry(long number, const std::uint64_t* arguments) {
    m_isRecorded = false;
    if (number == phaseMark) {
      if (m_out->phases.empty()) m_out->openAtStart = openDescriptors(m_child);
      m_out->phases.emplace_back();
      return;
    }
    if (m_out->phases.empty()) return;
    Recording& phase = m_out->phases.back();
    ++phase.counts[nameOf(number)];
    if (const CallShape* shape = shapeOf(number)) {
      phase.calls.push_back(recorded(m_child, *shape, arguments));
      if (number == SYS_openat) ++phase.opened[withoutNumbers(phase.calls.back().text[1])];
      m_isRecorded = true;
    } else {
      ++phase.leftOut[nameOf(number)];
    }
  }

  pid_t m_child;
  Recordings* m_out = nullptr;
  bool m_isRecorded = false;
};

} // namespace

std::string nameOf(long systemCall) {
  if (const CallShape* shape = shapeOf(systemCall)) return shape->name;
  switch (systemCall) {
  case SYS_brk:
    return "brk";
  case SYS_mmap:
    return "mmap";
  case SYS_munmap:
    return "munmap";
  case SYS_mremap:
    return "mremap";
  case SYS_madvise:
    return "madvise";
  case SYS_futex:
    return "futex";
  default:
    return "call " + std::to_string(systemCall);
  }
}

std::uint64_t processorNanos() {
  timespec used{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
  return static_cast<std::uint64_t>(used.tv_sec) * 1'000'000'000 + static_cast<std::uint64_t>(used.tv_nsec);
}

Recordings record(const Program& program) {
  const pid_t child = ::fork();
  if (child == 0) {
    if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) fail("ptrace");
    ::raise(SIGSTOP);
    program([] { ::syscall(phaseMark); });
    ::_exit(0);
  }
  Recordings recordings;
  Watcher(child).watch(recordings);
  return recordings;
}

BareLoop::BareLoop(const Recording& recording, const std::map<int, std::string>& openAtStart)
    : m_calls(recording.calls), m_descriptors(1024, -1), m_scratch(largestOutput) {
  for (const auto& [number, path] : openAtStart) {
    const int here = path.starts_with('/') ? ::open(path.c_str(), O_RDONLY | O_CLOEXEC) : -1;
    m_descriptors.at(static_cast<std::size_t>(number)) = here;
  }
  for (RecordedCall& call : m_calls) {
    for (std::size_t at = 0; call.shape->arguments[at] != '\0'; ++at) {
      if (call.arguments[at] == 0) continue;
      const char kind = call.shape->arguments[at];
      if (kind == 'p' || kind == 'i')
        call.arguments[at] = reinterpret_cast<std::uint64_t>(call.text[at].data());
      if (kind == 'o') call.arguments[at] = reinterpret_cast<std::uint64_t>(m_scratch.data());
    }
  }
}

void BareLoop::make(const RecordedCall& call) {
  std::array<std::uint64_t, 6> arguments{};
  std::copy(std::begin(call.arguments), std::end(call.arguments), arguments.begin());
  for (std::size_t at = 0; call.shape->arguments[at] != '\0'; ++at) {
    if (call.shape->arguments[at] != 'd') continue;
    const int number = static_cast<int>(arguments[at]);
    if (number >= 0)
      arguments[at] = static_cast<std::uint64_t>(m_descriptors[static_cast<std::size_t>(number)]);
  }
  const long result = ::syscall(call.number, arguments[0], arguments[1], arguments[2], arguments[3],
                                arguments[4], arguments[5]);
  if (call.shape->makesDescriptor && call.result >= 0) {
    m_descriptors[static_cast<std::size_t>(call.result)] = static_cast<int>(result);
  }
  m_differences += (result < 0) != (call.result < 0) ? 1 : 0;
}

void BareLoop::run() {
  m_differences = 0;
  for (const RecordedCall& call : m_calls) make(call);
}

std::map<std::string, std::uint64_t> BareLoop::runTimed() {
  std::map<long, std::uint64_t> byNumber;
  m_differences = 0;
  for (const RecordedCall& call : m_calls) {
    const std::uint64_t before = processorNanos();
    make(call);
    byNumber[call.number] += processorNanos() - before;
  }
  std::map<std::string, std::uint64_t> byName;
  for (const auto& [number, nanos] : byNumber) byName[nameOf(number)] += nanos;
  return byName;
}

} // namespace vantle::bench
