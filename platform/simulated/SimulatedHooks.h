// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Hooks.h"

#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vantle {

// The person's programs run until the test ends them.
class SimulatedHooks final : public Hooks {
 public:
  std::set<std::string> installed;
  std::vector<std::string> started; // "NAME value value"

  bool start(const std::string& name, const Variables& variables, std::function<void()> ended) override {
    if (!installed.contains(name)) return false;
    std::string line = name;
    for (const auto& [variable, value] : variables) line += " " + value;
    started.push_back(line);
    m_ended = std::move(ended);
    return true;
  }
  void cut() override { m_ended = nullptr; }

  bool isRunning() const { return m_ended != nullptr; }
  void end() { std::exchange(m_ended, nullptr)(); }

 private:
  std::function<void()> m_ended;
};

} // namespace vantle
