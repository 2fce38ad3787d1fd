// SPDX-License-Identifier: MIT
#pragma once

#include "base/Published.h"
#include "engine/ports/AudioActivity.h"
#include "engine/ports/MemoryPressureEvents.h"
#include "engine/ports/Notifications.h"
#include "engine/ports/PowerAssertions.h"
#include "engine/ports/RegisteredGames.h"
#include "platform/simulated/SimulatedCalls.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vantle {

class SimulatedAudio final : public AudioActivity {
 public:
  explicit SimulatedAudio(SimulatedCalls& calls) : m_calls(calls) {}

  bool canTell = true;
  std::set<Pid> heard; // the processes with running output

  bool isAvailable() const override { return canTell; }
  std::set<Pid> runningOutput() override {
    return m_calls.read({.operation = Operation::probeAudio}) ? heard : std::set<Pid>{};
  }

 private:
  SimulatedCalls& m_calls;
};

class SimulatedPower final : public PowerAssertions {
 public:
  explicit SimulatedPower(SimulatedCalls& calls) : m_calls(calls) {}

  std::vector<Assertion> held;

  std::vector<Assertion> assertions() override {
    return m_calls.read({.operation = Operation::probeAssertions}) ? held : std::vector<Assertion>{};
  }

 private:
  SimulatedCalls& m_calls;
};

class SimulatedPressure final : public MemoryPressureEvents {
 public:
  explicit SimulatedPressure(SimulatedCalls& calls) : m_calls(calls) {}

  std::optional<int> kernelLevel = 1; // absent: cannot be read

  // One event, to everybody who watches.
  void raise(bool isCritical) {
    m_isCritical = isCritical;
    m_watchers.notify();
  }

  // Refusing it makes a system without such events.
  std::unique_ptr<Source> watch(std::function<void(bool)> handler) override {
    if (!m_calls.read({.operation = Operation::watchPressure})) return nullptr;
    return std::make_unique<Watch>(
        m_watchers.add([this, handler = std::move(handler)] { handler(m_isCritical); }));
  }
  std::optional<int> level() const override {
    return m_calls.read({.operation = Operation::readPressureLevel}) ? kernelLevel : std::nullopt;
  }

 private:
  class Watch final : public Source {
   public:
    explicit Watch(std::unique_ptr<Registration> registration) : m_registration(std::move(registration)) {}

   private:
    std::unique_ptr<Registration> m_registration;
  };

  SimulatedCalls& m_calls;
  Observers<> m_watchers;
  bool m_isCritical = false;
};

class SimulatedGames final : public RegisteredGames {
 public:
  explicit SimulatedGames(SimulatedCalls& calls) : m_calls(calls) {}

  std::vector<ProcessIdentity> registered;

  bool isFollowed() const { return m_followers > 0; }
  void tell() { m_watchers.notify(); } // that they have changed

  // Refusing it makes a system without such registrations.
  std::unique_ptr<Source> watch(std::function<void()> changed) override {
    if (!m_calls.read({.operation = Operation::watchGames})) return nullptr;
    return std::make_unique<Watch>(*this, std::move(changed));
  }

 private:
  class Watch final : public Source {
   public:
    Watch(SimulatedGames& games, std::function<void()> changed)
        : m_games(games), m_registration(games.m_watchers.add(std::move(changed))) {
      ++m_games.m_followers;
    }
    ~Watch() override { --m_games.m_followers; }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    std::vector<ProcessIdentity> processes() const override { return m_games.registered; }

   private:
    SimulatedGames& m_games;
    std::unique_ptr<Registration> m_registration;
  };

  SimulatedCalls& m_calls;
  Observers<> m_watchers;
  int m_followers = 0;
};

class SimulatedNotifications final : public Notifications {
 public:
  struct Notice {
    std::string identifier;
    std::string title;
    std::string body;
    bool operator==(const Notice&) const = default;
  };

  explicit SimulatedNotifications(SimulatedCalls& calls) : m_calls(calls) {}

  int authorizationRequests = 0;
  std::vector<Notice> posted;

  void requestAuthorization() override {
    m_calls.change({.operation = Operation::requestAuthorization}, [this] { ++authorizationRequests; });
  }
  void post(const std::string& identifier, const std::string& title, const std::string& body) override {
    m_calls.change({.operation = Operation::postNotice, .about = identifier, .detail = body}, [&] {
      posted.push_back({identifier, title, body});
    });
  }

 private:
  SimulatedCalls& m_calls;
};

} // namespace vantle
