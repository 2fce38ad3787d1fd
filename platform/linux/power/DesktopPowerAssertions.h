// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/PowerAssertions.h"
#include "platform/linux/bus/BusConnection.h"
#include "platform/linux/bus/BusQuestion.h"
#include "platform/linux/power/HolderSearch.h"
#include "platform/linux/power/InhibitorSource.h"
#include "platform/linux/power/LoginInhibitors.h"
#include "platform/linux/power/PortalRequests.h"

#include <memory>
#include <set>
#include <vector>

namespace vantle {

// Who keeps the machine awake, from every daemon that can be asked for it: logind, the session manager, and
// what desktops have for power and screens. A daemon that holds something on behalf of apps stands for those
// apps, not for itself; an app in a sandbox is known by its processes, not by the proxy that speaks for it.
class DesktopPowerAssertions final : public PowerAssertions {
 public:
  // Both buses may be used by others too.
  DesktopPowerAssertions(BusConnection& systemBus, BusConnection& sessionBus, HolderSources search);

  // Asks all daemons at the same time. One that did not answer for the last decision is not asked again
  // before it has.
  void ask() override { m_daemons.ask(); }
  // Waits for all of them, 200 ms at most since they were asked.
  std::vector<Assertion> assertions() override;
  // What `ask` has asked. Whoever waits for something else before `assertions` takes in what they answer.
  Question& question() { return m_daemons; }
  bool hasLogindAnswered() const { return m_hasLogindAnswered; } // the last question, be it with an error

 private:
  // All daemons.
  class Daemons final : public BusQuestion {
   public:
    explicit Daemons(DesktopPowerAssertions& owner)
        : BusQuestion({&owner.m_systemBus, &owner.m_sessionBus}), m_owner(owner) {}
    void ask() override; // nothing while what was asked has not been waited for
    bool isAsking() const override;
    void giveUp() override;
    BusDeadline deadline() const { return m_deadline; }

   private:
    DesktopPowerAssertions& m_owner;
    bool m_isAsked = false;
    BusDeadline m_deadline; // of what was asked last
  };

  template <class Visitor> void forEachSource(Visitor visit);
  // The daemons of the session: what logind says that they hold stands in their own lists.
  std::set<Pid> standIns() const;
  std::vector<Assertion> resolved() const;

  BusConnection& m_systemBus;
  BusConnection& m_sessionBus;
  HolderSources m_search;
  LoginInhibitors m_login;
  bool m_hasLogindAnswered = false;
  PortalRequests m_portal;
  std::vector<std::unique_ptr<InhibitorSource>> m_session; // the others of the session's bus
  Daemons m_daemons{*this};
};

} // namespace vantle
