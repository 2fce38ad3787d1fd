// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/PrivateSession.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vantle::bench {

// A private desktop of 1280 by 800 with a few apps, whose windows are out of sight.
class BareDesktop {
 public:
  // "x11" or "sway"; null for any other.
  static std::unique_ptr<BareDesktop> make(const std::string& kind);
  virtual ~BareDesktop() = default;

  virtual desktop::PrivateSession& session() = 0;
  virtual std::uint32_t pixel(int x, int y) = 0; // of the screen, as 0xRRGGBB
  // A key to whatever is in front.
  virtual void press(const std::string& key) = 0;
  virtual void closeWindow(const std::string& title) = 0;
};

} // namespace vantle::bench
