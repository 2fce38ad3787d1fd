// SPDX-License-Identifier: MIT
#include "desktop/linux/GlibcHeap.h"

#include <array>
#include <cstdlib>
#include <malloc.h>
#include <system_error>
#include <thread>

namespace vantle {
namespace {

// glibc sets up to 7 freed blocks of each size up to 1032 bytes aside for their thread, where each keeps its
// page from being given back. The figures are its defaults (malloc tunables tcache_count and tcache_max);
// with others there is only less to win.
constexpr std::size_t cachedBlocks = 7;
constexpr std::size_t smallest = 24;
constexpr std::size_t largest = 1032;
constexpr std::size_t step = 16;
constexpr std::size_t sizes = (largest - smallest) / step + 1;

// Takes them all and has a thread free them: what it sets aside in turn is given back as it ends.
void emptyThreadCache() {
  std::array<std::array<void*, cachedBlocks>, sizes> blocks{};
  for (std::size_t at = 0; at < sizes; ++at) {
    for (void*& block : blocks[at]) block = std::malloc(smallest + at * step);
  }
  const auto freeAll = [&blocks] {
    for (const auto& ofOneSize : blocks) {
      for (void* block : ofOneSize) std::free(block);
    }
  };
  try {
    std::thread(freeAll).join();
  } catch (const std::system_error&) { // no thread to be had
    freeAll();
  }
}

} // namespace

void GlibcHeap::trim() {
  emptyThreadCache();
  malloc_trim(0);
}

} // namespace vantle
