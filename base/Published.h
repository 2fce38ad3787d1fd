// SPDX-License-Identifier: MIT
#pragma once

#include "base/Observers.h"

#include <memory>
#include <utility>

namespace vantle {

// A field that others may watch and only its owner may assign. Observers are told of every assignment, also
// of one that changes nothing.
template <class T, class Owner> class Published {
 public:
  explicit Published(T value = T()) : m_value(std::move(value)) {}

  const T& get() const { return m_value; }
  [[nodiscard]] std::unique_ptr<Registration> observe(Observers<>::Callback callback) {
    return m_observers.add(std::move(callback));
  }

 private:
  friend Owner;
  void assign(T value) {
    m_value = std::move(value);
    m_observers.notify();
  }

  T m_value;
  Observers<> m_observers;
};

} // namespace vantle
