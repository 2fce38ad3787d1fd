// SPDX-License-Identifier: MIT
// The numbers of signal(3) and sigaction(2).
#pragma once
#include <pthread.h>
#include <vantle_types.h>

#define SIGHUP 1
#define SIGINT 2
#define SIGQUIT 3
#define SIGILL 4
#define SIGABRT 6
#define SIGFPE 8
#define SIGKILL 9
#define SIGSEGV 11
#define SIGPIPE 13
#define SIGTERM 15
#define SIGSTOP 17
#define SIGCONT 19
#define SIGCHLD 20
#define SIGUSR2 31
#define NSIG 32

#define SIG_DFL ((void (*)(int))0)
#define SIG_IGN ((void (*)(int))1)
#define SIG_ERR ((void (*)(int)) - 1)
#define SIG_BLOCK 1
#define SIG_UNBLOCK 2
#define SIG_SETMASK 3
#define SA_RESTART 0x0002

typedef int sig_atomic_t;
struct sigaction {
  void (*sa_handler)(int);
  sigset_t sa_mask;
  int sa_flags;
};

VANTLE_C_BEGIN
int kill(pid_t pid, int number);
int pthread_kill(pthread_t thread, int number);
int pthread_sigmask(int how, const sigset_t* set, sigset_t* before);
int raise(int number);
int sigaction(int number, const struct sigaction* action, struct sigaction* before);
int sigaddset(sigset_t* set, int number);
int sigdelset(sigset_t* set, int number);
int sigemptyset(sigset_t* set);
int sigfillset(sigset_t* set);
int sigismember(const sigset_t* set, int number);
void (*signal(int number, void (*handler)(int)))(int);
int sigpending(sigset_t* set);
int sigprocmask(int how, const sigset_t* set, sigset_t* before);
int sigwait(const sigset_t* set, int* number);
VANTLE_C_END

// These are macros as well (sigsetops(3)): whoever writes `::` before one has nothing that compiles on a Mac.
#define sigaddset(set, number) (*(set) |= 1U << ((number)-1), 0)
#define sigdelset(set, number) (*(set) &= ~(1U << ((number)-1)), 0)
#define sigemptyset(set) (*(set) = 0, 0)
#define sigfillset(set) (*(set) = ~(sigset_t)0, 0)
#define sigismember(set, number) ((*(set) & (1U << ((number)-1))) != 0)
