// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "engine/ports/Hooks.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/process/BoundedWait.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace vantle {

// Executable files in a folder of the person's own, each in a session of its own; what it prints goes to this
// program's standard error stream, up to mostHookOutput. Whatever it leaves running in that session is ended
// with it, in whatever process group. One that runs when this program ends runs on, for the rest of its time.
class PersonsHooks final : public Hooks {
 public:
  PersonsHooks(EventLoop& loop, std::string folder,
               std::chrono::seconds longestRun = std::chrono::seconds(10))
      : m_loop(loop), m_folder(std::move(folder)), m_longestRun(longestRun) {}
  ~PersonsHooks() override;
  PersonsHooks(const PersonsHooks&) = delete;
  PersonsHooks& operator=(const PersonsHooks&) = delete;

  bool start(const std::string& name, const Variables& variables, std::function<void()> ended) override;
  void cut() override;

 private:
  void kill() const;
  void letGo();

  EventLoop& m_loop;
  std::string m_folder;
  std::chrono::seconds m_longestRun;
  BoundedWait m_file{1}; // its file system may have died
  Pid m_running = 0;     // not waited for before its group was ended: until then the number is nobody else's
  Descriptor m_process;
  std::unique_ptr<EventLoop::Handle> m_end;
  std::unique_ptr<EventLoop::Handle> m_limit;
};

} // namespace vantle
