// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vantle {

using Date = std::chrono::sys_seconds;

// A typed key-value store that keeps the user's choices. Values of types other than these stay in the store
// untouched and read as absent.
class UserDefaults {
 public:
  using Value = std::variant<bool, std::string, std::vector<std::string>, Date>;

  virtual ~UserDefaults() = default;

  virtual std::optional<Value> object(const std::string& key) const = 0;
  // Whether anything stands under the key, of whatever type.
  virtual bool contains(const std::string& key) const = 0;
  // In the store, durably and whole, when the call returns; a failed write is silent and tried again with the
  // next one.
  virtual void set(const std::string& key, Value value) = 0;
  virtual void remove(const std::string& key) = 0;
  // Another product's domain, for reading; null when it cannot be opened.
  virtual std::unique_ptr<UserDefaults> openSuite(const std::string& name) const = 0;
  // Copies whatever stands under the key, of any type, unchanged. False when there is nothing.
  virtual bool copyFrom(const UserDefaults& other, const std::string& key) = 0;
};

} // namespace vantle
