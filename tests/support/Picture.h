// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <vector>

namespace vantle::desktop {

// Both edges are within it.
struct Area {
  int left = 0;
  int top = 0;
  int right = -1;
  int bottom = -1;
  int width() const { return right - left + 1; }
  int height() const { return bottom - top + 1; }
  bool operator==(const Area&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Area& area);

// What a screen shows.
class Picture {
 public:
  // A file in the binary form of the portable pixmap format; an exception when it is none.
  explicit Picture(const std::filesystem::path& ppm);

  int width() const { return m_width; }
  int height() const { return m_height; }
  std::uint32_t pixel(int x, int y) const; // as 0xRRGGBB

 private:
  int m_width = 0;
  int m_height = 0;
  std::vector<unsigned char> m_bytes;
};

// The least area outside of which two pictures of one size are the same; empty when they are everywhere.
Area changedArea(const Picture& before, const Picture& after);

} // namespace vantle::desktop
