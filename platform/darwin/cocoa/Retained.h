// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

namespace vantle {

// One reference to an object of Objective-C. They are counted here and not by the compiler, so that the very
// same sources run on runtimes that leave the counting to the program.
template <class Object> class Retained {
 public:
  Retained() = default;
  explicit Retained(Object* object) : m_object([object retain]) {}
  // Of a reference that the caller has: from alloc, new or copy, or by a function that copies or creates.
  static Retained taking(Object* object) {
    Retained owner;
    owner.m_object = object;
    return owner;
  }
  Retained(const Retained& other) : Retained(other.m_object) {}
  Retained(Retained&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
  Retained& operator=(Retained other) noexcept {
    std::swap(m_object, other.m_object);
    return *this;
  }
  ~Retained() { [m_object release]; }

  Object* get() const { return m_object; }

 private:
  Object* m_object = nullptr;
};

} // namespace vantle
