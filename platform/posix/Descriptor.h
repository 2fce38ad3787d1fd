// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>
#include <utility>

namespace vantle {

// Owns a file descriptor. Negative means none, so the result of an opening call can be handed in as it is.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : m_number(number) {}
  Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(m_number, other.m_number);
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (m_number >= 0) ::close(m_number);
  }

  int get() const { return m_number; }
  int release() { return std::exchange(m_number, -1); } // to somebody else, who closes it
  explicit operator bool() const { return m_number >= 0; }

 private:
  int m_number = -1;
};

} // namespace vantle
