// SPDX-License-Identifier: MIT
#include "platform/simulated/SimulatedDefaults.h"

#include <utility>

namespace vantle {

SimulatedDefaults::Domain& SimulatedDefaults::suite(const std::string& name) {
  DomainRef& suite = m_suites[name];
  if (!suite) suite = std::make_shared<Domain>();
  return *suite;
}

std::optional<UserDefaults::Value> SimulatedDefaults::object(const std::string& key) const {
  if (!m_calls.read({.operation = Operation::readDefault, .about = key})) return std::nullopt;
  const auto found = m_domain->find(key);
  if (found == m_domain->end() || !std::holds_alternative<Value>(found->second)) return std::nullopt;
  return std::get<Value>(found->second);
}

bool SimulatedDefaults::contains(const std::string& key) const { return m_domain->contains(key); }

void SimulatedDefaults::set(const std::string& key, Value value) {
  m_calls.change({.operation = Operation::writeDefault, .about = key},
                 [&] { (*m_domain)[key] = std::move(value); });
}

void SimulatedDefaults::remove(const std::string& key) {
  m_calls.change({.operation = Operation::removeDefault, .about = key}, [&] { m_domain->erase(key); });
}

std::unique_ptr<UserDefaults> SimulatedDefaults::openSuite(const std::string& name) const {
  const bool canOpen = m_calls.read({.operation = Operation::openSuite, .about = name});
  const auto found = m_suites.find(name);
  if (!canOpen || found == m_suites.end()) return nullptr;
  return std::unique_ptr<UserDefaults>(new SimulatedDefaults(m_calls, found->second));
}

bool SimulatedDefaults::copyFrom(const UserDefaults& other, const std::string& key) {
  const auto* source = dynamic_cast<const SimulatedDefaults*>(&other);
  if (source == nullptr) return false;
  const auto found = source->m_domain->find(key);
  if (found == source->m_domain->end()) return false;
  return m_calls.change({.operation = Operation::copyDefault, .about = key},
                        [&] { (*m_domain)[key] = found->second; });
}

} // namespace vantle
