// SPDX-License-Identifier: MIT
#pragma once
#include <sched.h>
#include <time.h>
#include <vantle_types.h>

#define VANTLE_OPAQUE(name, bytes)                                                                           \
  typedef struct {                                                                                           \
    long signature;                                                                                          \
    char opaque[bytes];                                                                                      \
  } name
VANTLE_OPAQUE(pthread_attr_t, 56);
VANTLE_OPAQUE(pthread_cond_t, 40);
VANTLE_OPAQUE(pthread_condattr_t, 8);
VANTLE_OPAQUE(pthread_mutex_t, 56);
VANTLE_OPAQUE(pthread_mutexattr_t, 8);
VANTLE_OPAQUE(pthread_once_t, 8);
#undef VANTLE_OPAQUE
typedef struct _opaque_pthread_t* pthread_t;
typedef unsigned long pthread_key_t;

#define PTHREAD_COND_INITIALIZER                                                                             \
  {                                                                                                          \
    0x3CB0B1BB, { 0 }                                                                                        \
  }
#define PTHREAD_MUTEX_INITIALIZER                                                                            \
  {                                                                                                          \
    0x32AAABA7, { 0 }                                                                                        \
  }
#define PTHREAD_ONCE_INIT                                                                                    \
  {                                                                                                          \
    0x30B1BCBA, { 0 }                                                                                        \
  }
#define PTHREAD_MUTEX_RECURSIVE 2

VANTLE_C_BEGIN
int pthread_atfork(void (*prepare)(void), void (*parent)(void), void (*child)(void));
int pthread_cond_broadcast(pthread_cond_t* condition);
int pthread_cond_destroy(pthread_cond_t* condition);
int pthread_cond_signal(pthread_cond_t* condition);
int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const struct timespec* end);
int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex);
int pthread_create(pthread_t* thread, const pthread_attr_t* how, void* (*work)(void*), void* argument);
int pthread_detach(pthread_t thread);
int pthread_equal(pthread_t one, pthread_t other);
void* pthread_getspecific(pthread_key_t key);
int pthread_join(pthread_t thread, void** result);
int pthread_key_create(pthread_key_t* key, void (*end)(void*));
int pthread_key_delete(pthread_key_t key);
int pthread_mutex_destroy(pthread_mutex_t* mutex);
int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* how);
int pthread_mutex_lock(pthread_mutex_t* mutex);
int pthread_mutex_trylock(pthread_mutex_t* mutex);
int pthread_mutex_unlock(pthread_mutex_t* mutex);
int pthread_mutexattr_destroy(pthread_mutexattr_t* how);
int pthread_mutexattr_init(pthread_mutexattr_t* how);
int pthread_mutexattr_settype(pthread_mutexattr_t* how, int type);
int pthread_once(pthread_once_t* once, void (*work)(void));
pthread_t pthread_self(void);
int pthread_setspecific(pthread_key_t key, const void* value);
VANTLE_C_END
