// SPDX-License-Identifier: MIT
// May be included again with another NDEBUG, so there is no guard.
#include <vantle_types.h>
#undef assert
#ifdef NDEBUG
#define assert(condition) ((void)0)
#else
#define assert(condition) ((condition) ? (void)0 : __assert_rtn(__func__, __FILE__, __LINE__, #condition))
#endif
VANTLE_C_BEGIN
__attribute__((noreturn)) void __assert_rtn(const char* function, const char* file, int line,
                                            const char* text);
VANTLE_C_END
