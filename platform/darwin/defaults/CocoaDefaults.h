// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/UserDefaults.h"

namespace vantle {

// The person's choices in the user defaults of the system, which keeps them as soon as they are set. A number
// that is neither 0 nor 1 is no truth value.
class CocoaDefaults final : public UserDefaults {
 public:
  // The program's own domain: that of its bundle's identifier, or of its name without one.
  CocoaDefaults();

  std::optional<Value> object(const std::string& key) const override;
  // In that very domain: a plain question would be answered by those of the whole system as well.
  bool contains(const std::string& key) const override;
  void set(const std::string& key, Value value) override;
  void remove(const std::string& key) override;
  std::unique_ptr<UserDefaults> openSuite(const std::string& name) const override; // null when it is empty
  bool copyFrom(const UserDefaults& other, const std::string& key) override;

 private:
  explicit CocoaDefaults(std::string domain) : m_domain(std::move(domain)), m_isOwn(false) {}

  std::string m_domain;
  bool m_isOwn;
};

} // namespace vantle
