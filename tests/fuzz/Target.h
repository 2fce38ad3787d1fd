// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

// What each target of this folder offers: takes any bytes, and stops the program when something does not
// hold. The name is the one that libFuzzer looks for.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace vantle::fuzz {

inline std::string textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// Names what does not hold and shows the input, so that it can be made a test.
inline void require(bool holds, const char* what, const std::string& input) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\ninput:\n", what);
  for (const char c : input) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7F) {
      std::fputc(c, stderr);
    } else {
      std::fprintf(stderr, "\\x%02x", byte);
    }
  }
  std::fputc('\n', stderr);
  std::abort();
}

} // namespace vantle::fuzz
