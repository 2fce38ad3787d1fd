// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "tests/support/TemporaryFolder.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <systemd/sd-bus.h>
#include <thread>
#include <vector>

namespace vantle::test {

// The control groups of a desktop as files, and a /proc in which processes stand in them. What is not about
// control groups leads to the machine's own /proc.
class FakeControlGroups {
 public:
  FakeControlGroups();

  std::string procRoot() const { return (m_folder.path() / "proc").string(); }
  std::string sysRoot() const { return (m_folder.path() / "sys").string(); }
  const std::filesystem::path& folder() const { return m_folder.path(); }
  // Paths as the kernel shows them.
  static std::string appSlice();
  static std::string loginSession();

  void place(Pid pid, const std::string& path);
  std::string pathOf(Pid pid);
  void setIdle(const std::string& path, bool idle);
  std::string idle(const std::string& path);
  void removeFolder(const std::string& path);
  // Whether the kernel says of the process's only thread that it computes. It gets no processor time for
  // that.
  void setComputing(Pid pid, bool computes) const;

 private:
  std::filesystem::path below(const std::string& path) const;
  void writeMembers(const std::string& path);

  desktop::TemporaryFolder m_folder;
  std::mutex m_mutex;
  std::map<Pid, std::string> m_paths;
};

// A user manager that does what a test wants: also what the real one will not do on demand.
class ScriptedUserManager {
 public:
  static constexpr std::uint64_t notSet = ~std::uint64_t{0};
  enum class Mood {
    obedient,
    lying, // answers "done" and does nothing
    refusing,
    silent // never answers
  };

  ScriptedUserManager(std::string address, FakeControlGroups& groups);
  ~ScriptedUserManager();
  ScriptedUserManager(const ScriptedUserManager&) = delete;
  ScriptedUserManager& operator=(const ScriptedUserManager&) = delete;

  void connect();    // returns when it has its name
  void disconnect(); // as if it had died; its units stay
  void setMood(Mood mood) { m_mood = mood; }
  void setDelay(std::chrono::milliseconds delay) { m_delay = delay; }

  // A unit that it knows, with its weight; its folder is made.
  void addUnit(const std::string& name, std::uint64_t weight = notSet);
  std::uint64_t weight(const std::string& name);
  void setWeight(const std::string& name, std::uint64_t weight); // as somebody else's order
  std::vector<std::string> takeOrders(); // "MEMBER ARGUMENTS" in the order of arrival, pings left out

 private:
  static int serve(sd_bus_message* message, void* self, sd_bus_error* error);
  int answer(sd_bus_message* message);
  int setProperties(sd_bus_message* message);
  int startScope(sd_bus_message* message);
  int attach(sd_bus_message* message);
  int getProperty(sd_bus_message* message);
  bool move(const std::string& unit, const std::vector<Pid>& pids);
  void note(std::string order);
  void run(int stop);

  std::string m_address;
  FakeControlGroups& m_groups;
  std::atomic<Mood> m_mood = Mood::obedient;
  std::atomic<std::chrono::milliseconds> m_delay{};
  std::mutex m_mutex;
  std::map<std::string, std::uint64_t> m_weights;
  std::vector<std::string> m_orders;
  std::thread m_thread;
  std::atomic<bool> m_hasName = false;
  int m_stop = -1;
};

} // namespace vantle::test
