// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Subprocess.h"
#include "platform/simulated/SimulatedCalls.h"
#include "platform/simulated/SimulatedProcesses.h"

#include <memory>
#include <set>
#include <string>

namespace vantle {

// Starts programs that keep a processor busy until they are terminated.
class SimulatedLauncher final : public SubprocessLauncher {
 public:
  SimulatedLauncher(SimulatedCalls& calls, SimulatedProcesses& processes)
      : m_calls(calls), m_processes(processes) {}

  std::set<std::string> installed{"/usr/bin/yes"};

  // Refusing it makes a start fail.
  std::unique_ptr<Subprocess> launch(const std::string& executablePath) override {
    std::unique_ptr<Subprocess> started;
    m_calls.change({.operation = Operation::launchProgram, .about = executablePath}, [&] {
      if (!installed.contains(executablePath)) return;
      const Pid pid = m_processes.spawn({.executable = executablePath, .isBusy = true});
      started = std::make_unique<Program>(m_processes, *m_processes.find(pid));
    });
    return started;
  }

 private:
  class Program final : public Subprocess {
   public:
    Program(SimulatedProcesses& processes, const SimulatedProcess& process)
        : m_processes(processes), m_identity(process.identity()) {}

    Pid processIdentifier() const override { return m_identity.pid; }
    bool isRunning() override { return m_processes.lives(m_identity); }
    void terminate() override {
      if (isRunning()) m_processes.exit(m_identity.pid);
    }
    void waitUntilExit() override {} // it ended at once

   private:
    SimulatedProcesses& m_processes;
    ProcessIdentity m_identity;
  };

  SimulatedCalls& m_calls;
  SimulatedProcesses& m_processes;
};

} // namespace vantle
