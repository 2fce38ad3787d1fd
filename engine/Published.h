// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Registration.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace vantle {

// The observers of one field. An observer may register or end registrations, its own included, while it is
// being called; one that was registered meanwhile hears of the next change only.
class Observers {
 public:
  using Callback = std::function<void()>;

  [[nodiscard]] std::unique_ptr<Registration> add(Callback callback) {
    auto entry = std::make_shared<Callback>(std::move(callback));
    m_entries->push_back(entry);
    return std::make_unique<Entry>(m_entries, std::move(entry));
  }

  void notify() const {
    const std::vector<std::shared_ptr<Callback>> current = *m_entries;
    for (const auto& entry : current) {
      const bool stillThere = std::find(m_entries->begin(), m_entries->end(), entry) != m_entries->end();
      if (stillThere) (*entry)();
    }
  }

 private:
  using Entries = std::vector<std::shared_ptr<Callback>>;

  class Entry final : public Registration {
   public:
    Entry(const std::shared_ptr<Entries>& entries, std::shared_ptr<Callback> callback)
        : m_list(entries), m_callback(std::move(callback)) {}
    ~Entry() override {
      if (const auto list = m_list.lock()) std::erase(*list, m_callback);
    }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

   private:
    std::weak_ptr<Entries> m_list;
    std::shared_ptr<Callback> m_callback;
  };

  std::shared_ptr<Entries> m_entries = std::make_shared<Entries>();
};

// A field that others may watch and only its owner may assign. Observers are told of every assignment, also
// of one that changes nothing.
template <class T, class Owner> class Published {
 public:
  explicit Published(T value = T()) : m_value(std::move(value)) {}

  const T& get() const { return m_value; }
  [[nodiscard]] std::unique_ptr<Registration> observe(Observers::Callback callback) {
    return m_observers.add(std::move(callback));
  }

 private:
  friend Owner;
  void assign(T value) {
    m_value = std::move(value);
    m_observers.notify();
  }

  T m_value;
  Observers m_observers;
};

} // namespace vantle
