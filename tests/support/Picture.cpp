// SPDX-License-Identifier: MIT
#include "tests/support/Picture.h"

#include <algorithm>
#include <fstream>
#include <ostream>
#include <stdexcept>
#include <string>

namespace vantle::desktop {

std::ostream& operator<<(std::ostream& out, const Area& area) {
  return out << area.width() << 'x' << area.height() << " at " << area.left << ',' << area.top;
}

Picture::Picture(const std::filesystem::path& ppm) {
  std::ifstream file(ppm, std::ios::binary);
  std::string magic;
  int brightest = 0;
  file >> magic >> m_width >> m_height >> brightest;
  file.get();
  if (!file || magic != "P6" || brightest != 255) throw std::runtime_error("not a picture: " + ppm.string());
  m_bytes.resize(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height) * 3);
  file.read(reinterpret_cast<char*>(m_bytes.data()), static_cast<std::streamsize>(m_bytes.size()));
  if (!file) throw std::runtime_error("half a picture: " + ppm.string());
}

std::uint32_t Picture::pixel(int x, int y) const {
  const auto at =
      (static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x)) * 3;
  return (std::uint32_t{m_bytes.at(at)} << 16U) | (std::uint32_t{m_bytes.at(at + 1)} << 8U) |
         m_bytes.at(at + 2);
}

Area changedArea(const Picture& before, const Picture& after) {
  Area area{.left = before.width(), .top = before.height()};
  for (int y = 0; y < before.height(); ++y) {
    for (int x = 0; x < before.width(); ++x) {
      if (before.pixel(x, y) == after.pixel(x, y)) continue;
      area.left = std::min(area.left, x);
      area.right = std::max(area.right, x);
      area.top = std::min(area.top, y);
      area.bottom = std::max(area.bottom, y);
    }
  }
  return area.right < 0 ? Area{} : area;
}

} // namespace vantle::desktop
