// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/UserDefaults.h"

#include <map>

namespace vantle {

// Settings that live as long as the test.
class MemoryDefaults final : public UserDefaults {
 public:
  std::optional<Value> object(const std::string& key) const override {
    const auto found = m_values.find(key);
    return found == m_values.end() ? std::nullopt : std::optional(found->second);
  }
  bool contains(const std::string& key) const override { return m_values.contains(key); }
  void set(const std::string& key, Value value) override { m_values[key] = std::move(value); }
  void remove(const std::string& key) override { m_values.erase(key); }
  std::unique_ptr<UserDefaults> openSuite(const std::string&) const override { return nullptr; }
  bool copyFrom(const UserDefaults&, const std::string&) override { return false; }

 private:
  std::map<std::string, Value> m_values;
};

} // namespace vantle
