// SPDX-License-Identifier: MIT
// Sources with functions rather than blocks, as dispatch_source_create(3) has them.
#pragma once
#include <stdint.h>

typedef struct dispatch_queue_s* dispatch_queue_t;
typedef struct dispatch_source_s* dispatch_source_t;
typedef const struct dispatch_source_type_s* dispatch_source_type_t;
typedef void (*dispatch_function_t)(void* context);
typedef uint64_t dispatch_time_t;

#define DISPATCH_MEMORYPRESSURE_NORMAL 0x01
#define DISPATCH_MEMORYPRESSURE_WARN 0x02
#define DISPATCH_MEMORYPRESSURE_CRITICAL 0x04
#define DISPATCH_PROC_EXIT 0x80000000
#define DISPATCH_SOURCE_TYPE_MEMORYPRESSURE (&_dispatch_source_type_memorypressure)
#define DISPATCH_SOURCE_TYPE_PROC (&_dispatch_source_type_proc)
#define DISPATCH_SOURCE_TYPE_TIMER (&_dispatch_source_type_timer)
#define DISPATCH_TIME_NOW 0ull
#define DISPATCH_TIME_FOREVER (~0ull)

#ifdef __cplusplus
extern "C" {
#endif
extern const struct dispatch_source_type_s _dispatch_source_type_memorypressure;
extern const struct dispatch_source_type_s _dispatch_source_type_proc;
extern const struct dispatch_source_type_s _dispatch_source_type_timer;
extern struct dispatch_queue_s _dispatch_main_q;
static inline dispatch_queue_t dispatch_get_main_queue(void) { return &_dispatch_main_q; }
void dispatch_release(dispatch_source_t source);
void dispatch_resume(dispatch_source_t source);
void dispatch_set_context(dispatch_source_t source, void* context);
void dispatch_source_cancel(dispatch_source_t source);
dispatch_source_t dispatch_source_create(dispatch_source_type_t type, uintptr_t handle, uintptr_t mask,
                                         dispatch_queue_t queue);
uintptr_t dispatch_source_get_data(dispatch_source_t source);
void dispatch_source_set_event_handler_f(dispatch_source_t source, dispatch_function_t handler);
void dispatch_source_set_timer(dispatch_source_t source, dispatch_time_t start, uint64_t interval,
                               uint64_t leeway);
dispatch_time_t dispatch_time(dispatch_time_t when, int64_t nanoseconds);
#ifdef __cplusplus
}
#endif
