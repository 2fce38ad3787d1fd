// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/band/ServiceManager.h"
#include "tests/simulation/linux/SimulatedLinux.h"
#include "tests/simulation/linux/SimulatedLoop.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantle {

// The user's service manager on a simulated Linux. It serves one order after the other, whether or not the
// program that sent it still lives, and takes its time as the real one does: processes are moved after the
// answer, and the first weight below a folder is in force only some orders later, because the controller has
// to be switched on first.
class SimulatedServiceManager {
 public:
  enum class Mood {
    obedient,
    lying,    // says "done" and remembers it, but never tells the kernel
    refusing, // fails every order
    silent,   // serves nothing as long as this lasts
    late      // serves each order a while after it came
  };

  SimulatedServiceManager(SimulatedMachine& machine, SimulatedLinux& kernel, SimulatedLoop& loop);

  Mood mood = Mood::obedient;
  std::chrono::milliseconds lateness{300};
  bool isReachable = true; // by those who connect from now on, and by those who are connected

  // The connection of one run of the program; dropping it drops its answers, but no order.
  std::unique_ptr<ServiceManager> connect();
  // Serves all that its mood lets it serve by now, as it does while nobody looks.
  void work();
  void finishMoves(); // what goes on behind its answers comes to its end, as it does in a moment of quiet

  bool hasOrders() const { return !m_queue.empty() || !m_pending.empty(); } // not served to the end yet

  // The person's doing, or a package's.
  void setWeightByOthers(const std::string& unit, std::uint64_t weight);
  // All processes of a service end, and a new one has its place: the unit keeps its weight.
  Pid restartService(const std::string& unit, const std::string& executable);

 private:
  class Connection;
  struct Order {
    std::chrono::system_clock::time_point due;
    std::function<std::function<void()>(bool isGranted)> serve; // its value gives the answer
    std::weak_ptr<Connection*> sender;
  };

  void send(Operation operation, Pid pid, const std::string& unit, const std::string& detail,
            const std::shared_ptr<Connection*>& sender,
            std::function<std::function<void()>(bool isGranted)> serve);
  bool serveNext(); // false when nothing can be served now
  void passStep();  // what takes more than one order goes on
  void tellKernel(const std::string& path);
  bool setWeight(const std::string& unit, std::uint64_t weight);
  bool startScope(const std::string& unit, const std::vector<Pid>& pids);
  bool attach(const std::string& unit, Pid pid);
  bool mayMove(Pid pid) const;
  void moveTo(Pid pid, const std::string& path);

  // Something that goes on behind an answer.
  struct Pending {
    int orders = 0; // served before it happens
    std::function<void()> happen;
  };

  SimulatedMachine& m_machine;
  SimulatedLinux& m_kernel;
  SimulatedLoop& m_loop;
  std::deque<Order> m_queue;
  std::vector<Pending> m_pending;
  std::weak_ptr<Connection*> m_connected;
};

} // namespace vantle
