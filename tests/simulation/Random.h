// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vantle {

// A small generator with the same sequence on every machine (Steele, Lea, Flood: SplitMix, 2014). The
// distributions of the standard library differ between implementations, so a printed seed would not replay.
class Random {
 public:
  explicit Random(std::uint64_t seed) : m_state(seed) {}

  std::uint64_t next() {
    m_state += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = m_state;
    mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
    return mixed ^ (mixed >> 31U);
  }
  std::size_t below(std::size_t limit) { return static_cast<std::size_t>(next() % limit); }
  bool oneIn(std::size_t chances) { return below(chances) == 0; }
  template <class T> const T& pick(const std::vector<T>& values) { return values[below(values.size())]; }

 private:
  std::uint64_t m_state;
};

} // namespace vantle
