// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

struct xcb_connection_t;

namespace vantle::soak {

// What a program that has run wild does to everybody who listens on the display.
class Flood {
 public:
  explicit Flood(const std::string& display);
  ~Flood();
  Flood(const Flood&) = delete;
  Flood& operator=(const Flood&) = delete;

  void changeProperties(int count);
  // Claims by turns that either window is in front; the last claim is the first window's.
  void claimFront(std::uint32_t first, std::uint32_t second, int count);
  void announceTrays(int count);

 private:
  xcb_connection_t* m_connection = nullptr;
  std::uint32_t m_root = 0;
};

} // namespace vantle::soak
