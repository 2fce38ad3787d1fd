// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Subprocess.h"

#include "platform/posix/process/ChildGuard.h"

#include <functional>
#include <memory>

namespace vantle {

// Starts programs as a desktop starts apps: in a session of their own, unless this desktop does not give them
// one, and where somebody says how, in a place of their own besides (a unit of the user manager). They end
// with this program, however it ends, but for those that nobody has a hold of any more.
class SessionLauncher final : public SubprocessLauncher {
 public:
  using Place = std::function<void(Pid)>; // called once for each process that was started

  enum class Session { own, shared };

  explicit SessionLauncher(Place place = {}, Session session = Session::own)
      : m_place(std::move(place)), m_session(session) {}

  std::unique_ptr<Subprocess> launch(const std::string& executablePath) override;

 private:
  Place m_place;
  Session m_session;
  std::shared_ptr<ChildGuard> m_guard; // from the first start on
};

} // namespace vantle
