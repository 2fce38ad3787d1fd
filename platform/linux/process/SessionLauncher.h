// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Subprocess.h"

#include <functional>

namespace vantle {

// Starts programs as a desktop starts apps: in a session of their own, and where somebody says how, in a
// place of their own besides (a unit of the user manager).
class SessionLauncher final : public SubprocessLauncher {
 public:
  using Place = std::function<void(Pid)>; // called once for each process that was started

  explicit SessionLauncher(Place place = {}) : m_place(std::move(place)) {}

  std::unique_ptr<Subprocess> launch(const std::string& executablePath) override;

 private:
  Place m_place;
};

} // namespace vantle
