// SPDX-License-Identifier: MIT
#include "tests/simulation/darwin/SimulatedKernel.h"

#include "base/Invariant.h"

#include <CoreAudio/CoreAudio.h>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <dispatch/dispatch.h>
#include <fcntl.h>
#include <functional>
#include <libproc.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/sysctl.h>
#include <sys/time.h>
#include <unistd.h>
#include <utility>

struct dispatch_queue_s {};
struct dispatch_source_type_s {
  const char* name;
};
struct dispatch_source_s {
  dispatch_source_type_t type = nullptr;
  std::optional<vantle::ProcessIdentity> process; // that it is about, unless that had ended before
  void* context = nullptr;
  dispatch_function_t handler = nullptr;
  std::uintptr_t mask = 0;
  std::uintptr_t data = 0;
  std::optional<std::uint64_t> due; // in nanoseconds
  bool runs = false;
  bool isCancelled = false;
};

namespace vantle {

namespace {

SimulatedKernel* kernel = nullptr;
std::vector<dispatch_source_s*> allSources;

int failWith(int error) {
  errno = error;
  return -1;
}

std::string inWords(std::uint64_t number, const std::map<std::uint64_t, const char*>& names) {
  const auto found = names.find(number);
  return found == names.end() ? std::to_string(number) : found->second;
}

// The length of one record, as another version of the system may have it.
int answered(std::size_t size) { return static_cast<int>(size) + kernel->recordBytesOff; }

std::uint32_t toldParent(const SimulatedProcess& process) {
  const auto tracer = kernel->tracers.find(process.pid);
  return static_cast<std::uint32_t>(tracer == kernel->tracers.end() ? process.parent : tracer->second);
}

constexpr std::uint32_t flagOfTheBand = 0x10000; // which no header has that is handed out

std::uint32_t flagsOf(const SimulatedProcess& process) {
  const std::uint32_t traced = kernel->tracers.contains(process.pid) ? PROC_FLAG_TRACED : 0;
  return traced | (process.band == BandState::normal ? 0 : flagOfTheBand);
}

std::uint64_t nanosecondsNow() {
  constexpr std::uint64_t nanosecondsInOne = 1'000; // microsecond
  const auto now = kernel->desktop.clock.now().time_since_epoch();
  return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(now).count()) *
         nanosecondsInOne;
}

int writeFull(const SimulatedProcess& process, void* buffer) {
  proc_bsdinfo info{};
  info.pbi_pid = static_cast<std::uint32_t>(process.pid);
  info.pbi_ppid = toldParent(process);
  info.pbi_uid = 501;
  info.pbi_flags = flagsOf(process);
  info.pbi_start_tvsec = process.identity().startSec;
  info.pbi_start_tvusec = process.identity().startUsec;
  std::memcpy(buffer, &info, sizeof info);
  return answered(sizeof info);
}

int writeShort(const SimulatedProcess& process, void* buffer) {
  proc_bsdshortinfo info{};
  info.pbsi_pid = static_cast<std::uint32_t>(process.pid);
  info.pbsi_ppid = toldParent(process);
  info.pbsi_flags = flagsOf(process);
  info.pbsi_uid = kernel->foreign.contains(process.pid) ? 0 : 501;
  std::memcpy(buffer, &info, sizeof info);
  return answered(sizeof info);
}

int writeTask(const SimulatedProcess& process, void* buffer) {
  constexpr int normal = 31;
  constexpr int inTheBand = 4;
  proc_taskinfo info{};
  info.pti_priority = process.band == BandState::normal ? normal : inTheBand;
  std::memcpy(buffer, &info, sizeof info);
  return answered(sizeof info);
}

constexpr int firstAudioObject = 1000; // an object is that and its process

std::vector<AudioObjectID> audioObjects() {
  std::set<Pid> pids = kernel->desktop.audio.heard;
  pids.insert(kernel->silent.begin(), kernel->silent.end());
  std::vector<AudioObjectID> objects;
  objects.reserve(pids.size());
  for (const Pid pid : pids) objects.push_back(static_cast<AudioObjectID>(firstAudioObject + pid));
  return objects;
}

std::string inWords(const AudioObjectPropertyAddress& address) {
  const auto four = [](UInt32 code) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>((code >> shift) & 0xffU);
    return text;
  };
  return four(address.mSelector) + " " + four(address.mScope) + " " + std::to_string(address.mElement);
}

void fail(const std::string& what) {
  if (!kernel->fault) kernel->fault = what;
}

// Whoever hears of it may end any source.
void tell(dispatch_source_type_t type, std::uintptr_t event,
          const std::function<bool(const dispatch_source_s&)>& concerns) {
  const std::vector<dispatch_source_s*> all = allSources;
  for (dispatch_source_s* source : all) {
    const bool isThere = std::find(allSources.begin(), allSources.end(), source) != allSources.end();
    if (!isThere || !source->runs || source->isCancelled) continue;
    if (source->type != type || (source->mask & event) == 0 || !concerns(*source)) continue;
    source->data = event;
    source->handler(source->context);
  }
}

} // namespace

SimulatedKernel::SimulatedKernel(SimulatedMachine& onDesktop) : desktop(onDesktop) {
  invariant(kernel == nullptr, "two simulated kernels");
  kernel = this;
}

SimulatedKernel::~SimulatedKernel() {
  for (const dispatch_source_s* source : allSources) delete source;
  allSources.clear();
  kernel = nullptr;
}

void SimulatedKernel::startTrace() {
  m_isTracing = true;
  m_trace.clear();
  desktop.calls.watcher = [this](const SimulatedCall& call) {
    if (call.operation == Operation::writeFile) note("write " + std::string(call.detail));
  };
}

std::vector<std::string> SimulatedKernel::takeTrace() { return std::exchange(m_trace, {}); }

void SimulatedKernel::note(const std::string& line) {
  if (m_isTracing) m_trace.push_back(line);
}

SimulatedProcess* SimulatedKernel::living(Pid pid) const {
  SimulatedProcess* process = desktop.processes.find(pid);
  return process == nullptr || process->isZombie ? nullptr : process;
}

void SimulatedKernel::raisePressure(unsigned long event) {
  tell(DISPATCH_SOURCE_TYPE_MEMORYPRESSURE, event, [](const dispatch_source_s&) { return true; });
}

void SimulatedKernel::tellOfExits() {
  tell(DISPATCH_SOURCE_TYPE_PROC, DISPATCH_PROC_EXIT, [this](const dispatch_source_s& source) {
    const SimulatedProcess* process = source.process ? living(source.process->pid) : nullptr;
    const bool hasEnded = process == nullptr || process->identity() != *source.process;
    return hasEnded && source.data == 0; // once
  });
}

void SimulatedKernel::tellOfTime() {
  const std::vector<dispatch_source_s*> all = allSources;
  for (dispatch_source_s* source : all) {
    const bool isThere = std::find(allSources.begin(), allSources.end(), source) != allSources.end();
    if (!isThere || !source->runs || source->isCancelled) continue;
    if (!source->due || *source->due > nanosecondsNow()) continue;
    source->due.reset();
    source->data = 1;
    source->handler(source->context);
  }
}

std::size_t SimulatedKernel::timers() const {
  return static_cast<std::size_t>(std::count_if(allSources.begin(), allSources.end(),
                                                [](const auto* source) { return source->due.has_value(); }));
}

std::size_t SimulatedKernel::sources() const { return allSources.size(); }

} // namespace vantle

using vantle::failWith;
using vantle::kernel;
using vantle::Operation;
using vantle::SimulatedProcess;

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" {

int proc_listallpids(void* buffer, int size) {
  kernel->note("proc_listallpids(" + std::string(buffer == nullptr ? "NULL" : "buffer") + ", " +
               std::to_string(size) + ")");
  auto& processes = kernel->desktop.processes;
  if (!kernel->desktop.calls.read({.operation = Operation::scanProcesses})) return failWith(EPERM);
  const auto listed = static_cast<int>(processes.all().size());
  if (buffer == nullptr) {
    for (int count = 0; count < kernel->bornWhileListed; ++count) processes.spawn({});
    return listed;
  }
  auto* pids = static_cast<int*>(buffer);
  int written = 0;
  for (const auto& [pid, process] : processes.all()) {
    if (written == size / static_cast<int>(sizeof(int))) break;
    pids[written++] = pid;
  }
  return written;
}

int proc_pidinfo(int pid, int flavor, std::uint64_t argument, void* buffer, int size) {
  kernel->note("proc_pidinfo(" + std::to_string(pid) + ", " +
               vantle::inWords(static_cast<std::uint64_t>(flavor),
                               {{PROC_PIDTBSDINFO, "PROC_PIDTBSDINFO"},
                                {PROC_PIDTASKINFO, "PROC_PIDTASKINFO"},
                                {PROC_PIDT_SHORTBSDINFO, "PROC_PIDT_SHORTBSDINFO"}}) +
               ", " + std::to_string(argument) + ", " + std::to_string(size) + ")");
  struct Kind {
    std::size_t size;
    bool isForEverybody;
    Operation operation;
    int (*write)(const SimulatedProcess&, void*);
  };
  static const std::map<int, Kind> kinds{
      {PROC_PIDTBSDINFO, {sizeof(proc_bsdinfo), false, Operation::readRecord, vantle::writeFull}},
      {PROC_PIDTASKINFO, {sizeof(proc_taskinfo), false, Operation::readPriority, vantle::writeTask}},
      {PROC_PIDT_SHORTBSDINFO,
       {sizeof(proc_bsdshortinfo), true, Operation::scanProcesses, vantle::writeShort}}};
  const auto kind = kinds.find(flavor);
  errno = EINVAL;
  if (kind == kinds.end()) return 0;
  const bool isShort = flavor == PROC_PIDT_SHORTBSDINFO; // the scan was admitted as a whole
  if (!isShort && !kernel->desktop.calls.read({.operation = kind->second.operation, .pid = pid})) return 0;
  const SimulatedProcess* process = kernel->living(pid);
  errno = ESRCH;
  if (process == nullptr) return 0;
  errno = EPERM;
  if (!kind->second.isForEverybody && kernel->foreign.contains(pid)) return 0;
  errno = ENOMEM;
  if (size < static_cast<int>(kind->second.size)) return 0;
  return kind->second.write(*process, buffer);
}

int proc_pidpath(int pid, void* buffer, std::uint32_t size) {
  kernel->note("proc_pidpath(" + std::to_string(pid) + ", " + std::to_string(size) + ")");
  const bool isRead = kernel->desktop.calls.read({.operation = Operation::readExecutablePath, .pid = pid});
  const SimulatedProcess* process = kernel->living(pid);
  errno = ESRCH;
  if (!isRead || process == nullptr) return 0;
  errno = ENOMEM;
  if (process->executable.size() > size) return 0;
  std::memset(buffer, 'x', size); // no byte beyond the path means anything, but for a zero where one fits
  std::memcpy(buffer, process->executable.data(), process->executable.size());
  if (process->executable.size() < size) static_cast<char*>(buffer)[process->executable.size()] = '\0';
  return static_cast<int>(process->executable.size());
}

int proc_pid_rusage(int pid, int flavor, rusage_info_t* buffer) {
  kernel->note("proc_pid_rusage(" + std::to_string(pid) + ", " +
               vantle::inWords(static_cast<std::uint64_t>(flavor), {{RUSAGE_INFO_V4, "RUSAGE_INFO_V4"}}) +
               ")");
  const bool isRead = kernel->desktop.calls.read({.operation = Operation::readFootprint, .pid = pid});
  const SimulatedProcess* process = kernel->living(pid);
  if (flavor != RUSAGE_INFO_V4) return failWith(EINVAL);
  if (!isRead || process == nullptr) return failWith(ESRCH);
  if (kernel->foreign.contains(pid)) return failWith(EPERM);
  rusage_info_v4 usage{};
  usage.ri_phys_footprint = process->footprint;
  usage.ri_user_time = process->cpuTime / 3;
  usage.ri_system_time = process->cpuTime - usage.ri_user_time;
  usage.ri_resident_size = process->footprint / 2;
  std::memcpy(static_cast<void*>(buffer), &usage, sizeof usage);
  return 0;
}

int setpriority(int which, id_t who, int priority) {
  const auto pid = static_cast<int>(who);
  kernel->note(
      "setpriority(" +
      vantle::inWords(static_cast<std::uint64_t>(which), {{PRIO_DARWIN_PROCESS, "PRIO_DARWIN_PROCESS"}}) +
      ", " + std::to_string(pid) + ", " +
      vantle::inWords(static_cast<std::uint64_t>(priority), {{PRIO_DARWIN_BG, "PRIO_DARWIN_BG"}}) + ")");
  if (which != PRIO_DARWIN_PROCESS || (priority != 0 && priority != PRIO_DARWIN_BG)) return failWith(EINVAL);
  if (pid == 0) vantle::fail("the program has put itself into the band");
  const bool enters = priority == PRIO_DARWIN_BG;
  if (kernel->foreign.contains(pid)) return failWith(EPERM);
  if (kernel->living(pid) == nullptr) return failWith(ESRCH);
  auto& band = kernel->desktop.band;
  if (enters) kernel->slowed.insert(kernel->living(pid)->identity());
  const bool isDone = enters ? band.enterBackgroundBand(pid) : band.leaveBackgroundBand(pid);
  return isDone ? 0 : failWith(EPERM);
}

int sysctlbyname(const char* name, void* value, std::size_t* size, void* newValue, std::size_t /*newSize*/) {
  if (kernel == nullptr) return failWith(ENOENT);
  kernel->note("sysctlbyname(" + std::string(name) + ", " + std::to_string(*size) + ")");
  if (newValue != nullptr) vantle::fail("the program has changed the system");
  std::string bytes;
  if (std::strcmp(name, "kern.memorystatus_vm_pressure_level") == 0) {
    const bool isRead = kernel->desktop.calls.read({.operation = Operation::readPressureLevel});
    const auto level = kernel->desktop.pressure.kernelLevel;
    if (!isRead || !level) return failWith(ENOENT);
    const int number = *level;
    bytes.assign(reinterpret_cast<const char*>(&number), sizeof number);
  } else if (const auto number = kernel->numbers.find(name); number != kernel->numbers.end()) {
    bytes.assign(reinterpret_cast<const char*>(&number->second), sizeof number->second);
  } else if (const auto text = kernel->texts.find(name); text != kernel->texts.end()) {
    bytes.assign(text->second.c_str(), text->second.size() + 1);
  } else {
    return failWith(ENOENT);
  }
  const std::size_t room = *size;
  *size = bytes.size();
  std::memcpy(value, bytes.data(), std::min(room, bytes.size()));
  return bytes.size() <= room ? 0 : failWith(ENOMEM);
}

int gettimeofday(timeval* now, void* zone) noexcept {
  if (kernel == nullptr) return static_cast<int>(::syscall(SYS_gettimeofday, now, zone));
  kernel->note("gettimeofday()");
  constexpr std::uint64_t microsPerSecond = 1'000'000;
  const std::uint64_t micros = kernel->desktop.clock.processMicros();
  now->tv_sec = static_cast<time_t>(micros / microsPerSecond);
  now->tv_usec = static_cast<suseconds_t>(micros % microsPerSecond);
  return 0;
}

// All limits but one are the program's own. A sanitizer asks for them before it is ready to look on.
__attribute__((no_sanitize("address", "undefined"))) int getrlimit(int resource, rlimit* limit) {
  if (kernel == nullptr || resource != RLIMIT_NOFILE)
    return static_cast<int>(::syscall(SYS_prlimit64, 0, resource, nullptr, limit));
  *limit = {kernel->descriptors, kernel->descriptorsToAskFor};
  return 0;
}

int setrlimit(int resource, const rlimit* limit) {
  if (kernel == nullptr || resource != RLIMIT_NOFILE)
    return static_cast<int>(::syscall(SYS_prlimit64, 0, resource, limit, nullptr));
  if (limit->rlim_cur > limit->rlim_max || limit->rlim_cur > kernel->mostDescriptors) return failWith(EINVAL);
  kernel->descriptors = limit->rlim_cur;
  kernel->descriptorsToAskFor = limit->rlim_max;
  return 0;
}

// This one is every file's as well, of the whole program.
int fcntl(int descriptor, int command, ...) {
  std::va_list arguments;
  va_start(arguments, command);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  if (command == F_GETPATH) {
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = ::readlink(link.c_str(), static_cast<char*>(argument), 1023);
    if (length < 0) return -1;
    static_cast<char*>(argument)[length] = '\0';
    return 0;
  }
  if (command == F_FULLFSYNC) {
    if (kernel != nullptr) kernel->note("fcntl(F_FULLFSYNC)");
    return ::fsync(descriptor);
  }
  return static_cast<int>(::syscall(SYS_fcntl, descriptor, command, argument));
}

extern const dispatch_source_type_s _dispatch_source_type_memorypressure{"MEMORYPRESSURE"};
extern const dispatch_source_type_s _dispatch_source_type_proc{"PROC"};
extern const dispatch_source_type_s _dispatch_source_type_timer{"TIMER"};
dispatch_queue_s _dispatch_main_q{};

dispatch_source_t dispatch_source_create(dispatch_source_type_t type, std::uintptr_t handle,
                                         std::uintptr_t mask, dispatch_queue_t queue) {
  kernel->note(std::string("dispatch_source_create(") + type->name + ", " + std::to_string(handle) + ", " +
               std::to_string(mask) + ", " + (queue == dispatch_get_main_queue() ? "main" : "another") + ")");
  const bool isOfPressure = type == DISPATCH_SOURCE_TYPE_MEMORYPRESSURE;
  if (!kernel->makesSources) return nullptr;
  if (isOfPressure && !kernel->desktop.calls.read({.operation = Operation::watchPressure})) return nullptr;
  auto* const source = new dispatch_source_s;
  source->type = type;
  source->mask = mask;
  const bool isOfProcess = type == DISPATCH_SOURCE_TYPE_PROC;
  const SimulatedProcess* process = isOfProcess ? kernel->living(static_cast<int>(handle)) : nullptr;
  if (process != nullptr) source->process = process->identity();
  vantle::allSources.push_back(source);
  return source;
}

void dispatch_set_context(dispatch_source_t source, void* context) {
  kernel->note("dispatch_set_context()");
  source->context = context;
}

void dispatch_source_set_event_handler_f(dispatch_source_t source, dispatch_function_t handler) {
  kernel->note("dispatch_source_set_event_handler_f()");
  source->handler = handler;
}

dispatch_time_t dispatch_time(dispatch_time_t when, std::int64_t nanoseconds) {
  if (when != DISPATCH_TIME_NOW) vantle::fail("a time that is not from now on");
  return vantle::nanosecondsNow() + static_cast<std::uint64_t>(nanoseconds);
}

void dispatch_source_set_timer(dispatch_source_t source, dispatch_time_t start, std::uint64_t interval,
                               std::uint64_t leeway) {
  constexpr std::uint64_t nanosecondsInOne = 1'000'000; // millisecond
  kernel->note("dispatch_source_set_timer(" +
               std::to_string((start - vantle::nanosecondsNow()) / nanosecondsInOne) + " ms, " +
               vantle::inWords(interval, {{DISPATCH_TIME_FOREVER, "FOREVER"}}) + ", " +
               std::to_string(leeway / nanosecondsInOne) + " ms)");
  if (source->type != DISPATCH_SOURCE_TYPE_TIMER) vantle::fail("a time for what is no timer");
  if (interval != DISPATCH_TIME_FOREVER) vantle::fail("a timer that wakes the program for ever");
  source->due = start;
}

std::uintptr_t dispatch_source_get_data(dispatch_source_t source) { return source->data; }

void dispatch_resume(dispatch_source_t source) {
  kernel->note("dispatch_resume()");
  if (source->runs) vantle::fail("a source was resumed twice");
  if (source->handler == nullptr) vantle::fail("a source runs without a handler");
  if (source->type == DISPATCH_SOURCE_TYPE_TIMER && !source->due) vantle::fail("a timer without a time");
  source->runs = true;
}

void dispatch_source_cancel(dispatch_source_t source) {
  kernel->note("dispatch_source_cancel()");
  source->isCancelled = true;
}

void dispatch_release(dispatch_source_t source) {
  kernel->note("dispatch_release()");
  if (!source->runs) vantle::fail("a source was released that never ran");
  if (!source->isCancelled) vantle::fail("a source was released that still runs");
  std::erase(vantle::allSources, source);
  delete source;
}

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        UInt32 qualifierSize, const void* qualifier, UInt32* size) {
  const std::lock_guard answering(kernel->audioServer);
  kernel->note("AudioObjectGetPropertyDataSize(" + std::to_string(object) + ", " + vantle::inWords(*address) +
               ")");
  ++kernel->audioAnswers;
  const bool isList = object == kAudioObjectSystemObject && vantle::inWords(*address) == "prs# glob 0";
  const bool isRead = kernel->desktop.calls.read({.operation = Operation::probeAudio});
  *size = sizeof(AudioObjectID); // nothing says what a failure leaves there
  if (!isList || !isRead || qualifierSize != 0 || qualifier != nullptr) return -1;
  *size = static_cast<UInt32>(vantle::audioObjects().size() * sizeof(AudioObjectID));
  return 0;
}

OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierSize, const void* qualifier, UInt32* size, void* value) {
  kernel->note("AudioObjectGetPropertyData(" + std::to_string(object) + ", " + vantle::inWords(*address) +
               ", " + std::to_string(*size) + ")");
  if (qualifierSize != 0 || qualifier != nullptr) return -1;
  const std::string wanted = vantle::inWords(*address);
  if (object == kAudioObjectSystemObject) {
    const std::vector<AudioObjectID> objects = vantle::audioObjects();
    if (wanted != "prs# glob 0") return -1;
    *size = std::min(*size, static_cast<UInt32>(objects.size() * sizeof(AudioObjectID)));
    std::memcpy(value, objects.data(), *size);
    return 0;
  }
  const auto pid = static_cast<int>(object) - vantle::firstAudioObject;
  if (kernel->audioGone.contains(pid) || *size < sizeof(UInt32)) return -1;
  const bool isHeard = !kernel->silent.contains(pid);
  UInt32 number = isHeard ? 1 : 0;
  if (wanted == "ppid glob 0") {
    number = kernel->audioWithoutProcess.contains(pid) ? static_cast<UInt32>(-1) : static_cast<UInt32>(pid);
  } else if (wanted != "piro glob 0") {
    return -1;
  }
  std::memcpy(value, &number, sizeof number);
  *size = kernel->audioOdd.contains(pid) ? 2 : sizeof number;
  return 0;
}

} // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
