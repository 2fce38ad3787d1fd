// SPDX-License-Identifier: MIT
// What the calls of this room were written for: on a Mac held to the system's own headers, elsewhere to the
// declarations that stand in for them. Where the two differ, this does not compile, and nothing has run.
#include <CoreAudio/CoreAudio.h>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <dispatch/dispatch.h>
#include <fcntl.h>
#include <libproc.h>
#include <limits>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/sysctl.h>
#include <sys/time.h>
#include <type_traits>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

template <class Result, class Function, class... Arguments> constexpr bool takes =
    std::is_invocable_r_v<Result, Function, Arguments...>;

// The whole record of a process.
static_assert(PROC_PIDTBSDINFO == 3);
static_assert(sizeof(proc_bsdinfo) == 136);
static_assert(offsetof(proc_bsdinfo, pbi_flags) == 0);
static_assert(offsetof(proc_bsdinfo, pbi_ppid) == 16);
static_assert(offsetof(proc_bsdinfo, pbi_uid) == 20);
static_assert(offsetof(proc_bsdinfo, pbi_start_tvsec) == 120);
static_assert(offsetof(proc_bsdinfo, pbi_start_tvusec) == 128);
static_assert(PROC_FLAG_TRACED == 2);

// The short one, which there is of everybody's.
static_assert(PROC_PIDT_SHORTBSDINFO == 13);
static_assert(sizeof(proc_bsdshortinfo) == 64);
static_assert(offsetof(proc_bsdshortinfo, pbsi_ppid) == 4);
static_assert(offsetof(proc_bsdshortinfo, pbsi_flags) == 32);
static_assert(offsetof(proc_bsdshortinfo, pbsi_uid) == 36);

static_assert(PROC_PIDTASKINFO == 4);
static_assert(sizeof(proc_taskinfo) == 96);
static_assert(offsetof(proc_taskinfo, pti_priority) == 92);

static_assert(RUSAGE_INFO_V4 == 4);
static_assert(sizeof(rusage_info_v4) == 296);
static_assert(offsetof(rusage_info_v4, ri_user_time) == 16);
static_assert(offsetof(rusage_info_v4, ri_system_time) == 24);
static_assert(offsetof(rusage_info_v4, ri_phys_footprint) == 72);

static_assert(PROC_PIDPATHINFO_MAXSIZE == 4096);
static_assert(takes<int, decltype(::proc_listallpids), void*, int>);
static_assert(takes<int, decltype(::proc_pidinfo), int, int, std::uint64_t, void*, int>);
static_assert(takes<int, decltype(::proc_pidpath), int, void*, std::uint32_t>);
static_assert(takes<int, decltype(::proc_pid_rusage), int, int, rusage_info_t*>);

// The band.
static_assert(PRIO_DARWIN_PROCESS == 4);
static_assert(PRIO_DARWIN_BG == 0x1000);
static_assert(sizeof(id_t) == 4);
static_assert(takes<int, decltype(::setpriority), int, id_t, int>);

// Clock and host.
static_assert(std::is_same_v<decltype(::gettimeofday(std::declval<timeval*>(), nullptr)), int>);
static_assert(
    takes<int, decltype(::sysctlbyname), const char*, void*, std::size_t*, std::nullptr_t, std::size_t>);
static_assert(takes<int, decltype(::getdtablesize)>);

// Memory pressure, the ends of processes, and time.
static_assert(DISPATCH_MEMORYPRESSURE_WARN == 2);
static_assert(DISPATCH_MEMORYPRESSURE_CRITICAL == 4);
static_assert(DISPATCH_PROC_EXIT == 0x80000000);
static_assert(std::is_same_v<decltype(DISPATCH_SOURCE_TYPE_PROC), dispatch_source_type_t>);
static_assert(takes<dispatch_source_t, decltype(::dispatch_source_create), dispatch_source_type_t,
                    std::uintptr_t, std::uintptr_t, dispatch_queue_t>);
static_assert(takes<void, decltype(::dispatch_set_context), dispatch_source_t, void*>);
static_assert(
    takes<void, decltype(::dispatch_source_set_event_handler_f), dispatch_source_t, dispatch_function_t>);
static_assert(std::is_same_v<dispatch_function_t, void (*)(void*)>);
static_assert(takes<std::uintptr_t, decltype(::dispatch_source_get_data), dispatch_source_t>);
static_assert(takes<void, decltype(::dispatch_resume), dispatch_source_t>);
static_assert(takes<void, decltype(::dispatch_source_cancel), dispatch_source_t>);
static_assert(takes<void, decltype(::dispatch_release), dispatch_source_t>);
static_assert(std::is_same_v<decltype(DISPATCH_SOURCE_TYPE_TIMER), dispatch_source_type_t>);
static_assert(std::is_same_v<dispatch_time_t, std::uint64_t>);
static_assert(DISPATCH_TIME_NOW == 0);
static_assert(DISPATCH_TIME_FOREVER == std::numeric_limits<std::uint64_t>::max());
static_assert(takes<dispatch_time_t, decltype(::dispatch_time), dispatch_time_t, std::int64_t>);
static_assert(takes<void, decltype(::dispatch_source_set_timer), dispatch_source_t, dispatch_time_t,
                    std::uint64_t, std::uint64_t>);

// Who is heard.
static_assert(kAudioObjectSystemObject == 1);
static_assert(kAudioObjectPropertyScopeGlobal == 0x676c6f62);
static_assert(kAudioObjectPropertyElementMain == 0);
static_assert(kAudioHardwarePropertyProcessObjectList == 0x70727323);
static_assert(kAudioProcessPropertyIsRunningOutput == 0x7069726f);
static_assert(kAudioProcessPropertyPID == 0x70706964);
static_assert(sizeof(AudioObjectPropertyAddress) == 12);
static_assert(sizeof(AudioObjectID) == 4);
static_assert(takes<OSStatus, decltype(::AudioObjectGetPropertyDataSize), AudioObjectID,
                    const AudioObjectPropertyAddress*, UInt32, const void*, UInt32*>);
static_assert(takes<OSStatus, decltype(::AudioObjectGetPropertyData), AudioObjectID,
                    const AudioObjectPropertyAddress*, UInt32, const void*, UInt32*, void*>);

// The main thread.
static_assert(std::is_same_v<decltype(sigaction::sa_flags), int>);
static_assert(takes<int, decltype(::pthread_kill), pthread_t, int>);
static_assert(std::is_same_v<decltype(::posix_spawn(std::declval<pid_t*>(), "", nullptr, nullptr,
                                                    std::declval<char* const*>(), nullptr)),
                             int>);

// Files.
static_assert(F_GETPATH == 50);
static_assert(F_FULLFSYNC == 51);

} // namespace

} // namespace vantle
