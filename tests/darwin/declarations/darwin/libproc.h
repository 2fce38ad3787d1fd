// SPDX-License-Identifier: MIT
// What is called of <libproc.h>. Fields, their order and the numbers as the documentation of open bindings to
// this system gives them; Contract.cpp holds both these and a Mac's own to the same figures.
#pragma once
#include <stdint.h>
#include <sys/types.h>

#define PROC_PIDTBSDINFO 3
#define PROC_PIDTASKINFO 4
#define PROC_PIDT_SHORTBSDINFO 13
#define PROC_PIDPATHINFO_MAXSIZE 4096
#define PROC_FLAG_TRACED 2 // its parent is whoever does that
#define RUSAGE_INFO_V4 4

struct proc_bsdinfo {
  uint32_t pbi_flags;
  uint32_t pbi_status;
  uint32_t pbi_xstatus;
  uint32_t pbi_pid;
  uint32_t pbi_ppid;
  uid_t pbi_uid;
  gid_t pbi_gid;
  uid_t pbi_ruid;
  gid_t pbi_rgid;
  uid_t pbi_svuid;
  gid_t pbi_svgid;
  uint32_t rfu_1;
  char pbi_comm[16];
  char pbi_name[32];
  uint32_t pbi_nfiles;
  uint32_t pbi_pgid;
  uint32_t pbi_pjobc;
  uint32_t e_tdev;
  uint32_t e_tpgid;
  int32_t pbi_nice;
  uint64_t pbi_start_tvsec;
  uint64_t pbi_start_tvusec;
};

struct proc_bsdshortinfo {
  uint32_t pbsi_pid;
  uint32_t pbsi_ppid;
  uint32_t pbsi_pgid;
  uint32_t pbsi_status;
  char pbsi_comm[16];
  uint32_t pbsi_flags;
  uid_t pbsi_uid;
  gid_t pbsi_gid;
  uid_t pbsi_ruid;
  gid_t pbsi_rgid;
  uid_t pbsi_svuid;
  gid_t pbsi_svgid;
  uint32_t pbsi_rfu;
};

struct proc_taskinfo {
  uint64_t pti_virtual_size;
  uint64_t pti_resident_size;
  uint64_t pti_total_user;
  uint64_t pti_total_system;
  uint64_t pti_threads_user;
  uint64_t pti_threads_system;
  int32_t pti_policy;
  int32_t pti_faults;
  int32_t pti_pageins;
  int32_t pti_cow_faults;
  int32_t pti_messages_sent;
  int32_t pti_messages_received;
  int32_t pti_syscalls_mach;
  int32_t pti_syscalls_unix;
  int32_t pti_csw;
  int32_t pti_threadnum;
  int32_t pti_numrunning;
  int32_t pti_priority;
};

struct rusage_info_v4 {
  uint8_t ri_uuid[16];
  uint64_t ri_user_time;
  uint64_t ri_system_time;
  uint64_t ri_pkg_idle_wkups;
  uint64_t ri_interrupt_wkups;
  uint64_t ri_pageins;
  uint64_t ri_wired_size;
  uint64_t ri_resident_size;
  uint64_t ri_phys_footprint;
  uint64_t ri_proc_start_abstime;
  uint64_t ri_proc_exit_abstime;
  uint64_t ri_child_user_time;
  uint64_t ri_child_system_time;
  uint64_t ri_child_pkg_idle_wkups;
  uint64_t ri_child_interrupt_wkups;
  uint64_t ri_child_pageins;
  uint64_t ri_child_elapsed_abstime;
  uint64_t ri_diskio_bytesread;
  uint64_t ri_diskio_byteswritten;
  uint64_t ri_cpu_time_qos_default;
  uint64_t ri_cpu_time_qos_maintenance;
  uint64_t ri_cpu_time_qos_background;
  uint64_t ri_cpu_time_qos_utility;
  uint64_t ri_cpu_time_qos_legacy;
  uint64_t ri_cpu_time_qos_user_initiated;
  uint64_t ri_cpu_time_qos_user_interactive;
  uint64_t ri_billed_system_time;
  uint64_t ri_serviced_system_time;
  uint64_t ri_logical_writes;
  uint64_t ri_lifetime_max_phys_footprint;
  uint64_t ri_instructions;
  uint64_t ri_cycles;
  uint64_t ri_billed_energy;
  uint64_t ri_serviced_energy;
  uint64_t ri_interval_max_phys_footprint;
  uint64_t ri_runnable_time;
};
typedef void* rusage_info_t;

#ifdef __cplusplus
extern "C" {
#endif
int proc_listallpids(void* buffer, int size); // the number of pids
int proc_pid_rusage(int pid, int flavor, rusage_info_t* buffer);
int proc_pidinfo(int pid, int flavor, uint64_t argument, void* buffer, int size); // the number of bytes
int proc_pidpath(int pid, void* buffer, uint32_t size);                           // the same
#ifdef __cplusplus
}
#endif
