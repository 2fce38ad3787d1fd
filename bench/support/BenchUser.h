// SPDX-License-Identifier: MIT
#pragma once

namespace vantle::bench {

// Goes on as the ordinary user whose number is in VANTLE_BENCH_USER, for a benchmark that root starts; to be
// called before anything is opened or started. True also when the variable is not set; false when this user
// cannot be.
bool becomeBenchUser();

} // namespace vantle::bench
