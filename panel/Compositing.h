// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// Whether windows may be translucent: without a compositor, what lies under one is black.
bool screenIsComposited();

} // namespace vantle
