// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/UserDefaults.h"
#include "platform/simulated/SimulatedCalls.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace vantle {

// User defaults in memory: the program's own domain and those of other products.
class SimulatedDefaults final : public UserDefaults {
 public:
  // A value of a type that the program does not know, such as a number.
  struct Foreign {
    std::string text;
    bool operator==(const Foreign&) const = default;
  };
  using Stored = std::variant<Value, Foreign>;
  using Domain = std::map<std::string, Stored>;

  explicit SimulatedDefaults(SimulatedCalls& calls) : m_calls(calls) {}

  // What is in the store, without a call.
  Domain& domain() { return *m_domain; }
  // Another product's domain, made on first use.
  Domain& suite(const std::string& name);

  std::optional<Value> object(const std::string& key) const override;
  bool contains(const std::string& key) const override;
  void set(const std::string& key, Value value) override;
  void remove(const std::string& key) override;
  std::unique_ptr<UserDefaults> openSuite(const std::string& name) const override;
  bool copyFrom(const UserDefaults& other, const std::string& key) override;

 private:
  using DomainRef = std::shared_ptr<Domain>;

  SimulatedDefaults(SimulatedCalls& calls, DomainRef domain) : m_calls(calls), m_domain(std::move(domain)) {}

  SimulatedCalls& m_calls;
  DomainRef m_domain = std::make_shared<Domain>();
  std::map<std::string, DomainRef> m_suites;
};

} // namespace vantle
