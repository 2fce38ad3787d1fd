// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/power/InhibitorSource.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace vantle {

// A daemon that tells only the names by which the apps that asked it call themselves.
class NamedInhibitors final : public InhibitorSource {
 public:
  // Where a list of names is to be had, and what they hold.
  struct Place {
    BusMethod list;
    InhibitorKinds kinds;
  };

  NamedInhibitors(BusConnection& sessionBus, const Place& place)
      : InhibitorSource(sessionBus), m_place(place) {}

 private:
  void askFirst() override;

  Place m_place;
};

// Plasma's power management. What its screen lock and its portal are asked for, and what is asked of it in
// the way of all desktops (org.freedesktop.PowerManagement), stands in this one list.
class PlasmaInhibitors final : public InhibitorSource {
 public:
  explicit PlasmaInhibitors(BusConnection& sessionBus) : InhibitorSource(sessionBus) {}

 private:
  void askFirst() override;
  void askWhetherHeld(std::uint32_t policy, bool InhibitorKinds::*kind);

  // Of the whole list: what each of them is about Plasma does not tell.
  InhibitorKinds m_kinds;
};

// Every daemon of the session's bus that has such a list, whichever desktop it belongs to.
std::vector<std::unique_ptr<InhibitorSource>> namedInhibitorSources(BusConnection& sessionBus);

} // namespace vantle
