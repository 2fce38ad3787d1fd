// SPDX-License-Identifier: MIT
// For tests on another system: the free Foundation asks its compiler's runtime for this one, and not every
// runtime has it. The library that runs blocks there has these two.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif
void* _Block_copy(const void* block);
void _Block_release(const void* block);
#ifdef __cplusplus
}
#endif
