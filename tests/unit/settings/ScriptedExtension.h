// SPDX-License-Identifier: MIT
#pragma once

#include "base/Published.h"
#include "settings/ports/ShellExtension.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace vantle {

// A desktop's answers, and what it was asked for: "+" to install, "-" to remove, "?" to look again.
class ScriptedExtension final : public ShellExtension {
 public:
  explicit ScriptedExtension(State state = State::notOffered) : m_state(state) {}

  State state() const override { return m_state; }
  std::unique_ptr<Registration> observe(std::function<void()> changed) override {
    return m_observers.add(std::move(changed));
  }
  void reload() override { asked += '?'; }
  void install() override { asked += '+'; }
  void remove() override { asked += '-'; }

  void answer(State state) {
    m_state = state;
    m_observers.notify();
  }

  std::string asked;

 private:
  State m_state;
  Observers<> m_observers;
};

} // namespace vantle
