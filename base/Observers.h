// SPDX-License-Identifier: MIT
#pragma once

#include "base/Registration.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace vantle {

// Those who want to hear of something, in the order of their registration. An observer may register or end
// registrations, its own included, and end the owner of this list, while it is being called; one that was
// registered meanwhile hears of the next event only.
template <class... About> class Observers {
 public:
  using Callback = std::function<void(About...)>;

  [[nodiscard]] std::unique_ptr<Registration> add(Callback callback) {
    auto entry = std::make_shared<Callback>(std::move(callback));
    m_entries->push_back(entry);
    return std::make_unique<Entry>(m_entries, std::move(entry));
  }

  void notify(const About&... about) const {
    const std::shared_ptr<Entries> entries = m_entries;
    const Entries current = *entries;
    for (const auto& entry : current) {
      const bool isStillThere = std::find(entries->begin(), entries->end(), entry) != entries->end();
      if (isStillThere) (*entry)(about...);
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

} // namespace vantle
