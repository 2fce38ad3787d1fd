// SPDX-License-Identifier: MIT
#include "platform/linux/power/NamedInhibitors.h"

#include "platform/linux/power/InhibitorReaders.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>

namespace vantle {

namespace {

constexpr const char* policyAgent = "org.kde.Solid.PowerManagement.PolicyAgent";
constexpr const char* policyAgentPath = "/org/kde/Solid/PowerManagement/PolicyAgent";

// PowerDevil's policies; the third, 2, keeps it from changing its profile.
constexpr std::uint32_t interruptSession = 1;
constexpr std::uint32_t changeScreenSettings = 4;

constexpr InhibitorKinds idleOnly{.sleep = false, .idle = true};

constexpr const char* powerManagement = "org.freedesktop.PowerManagement.Inhibit";
constexpr const char* powerManagementPath = "/org/freedesktop/PowerManagement/Inhibit";

// xfce4-power-manager answers under the first name, others under the second. Of the screen savers only those
// that descend from GNOME's old one have a list.
constexpr std::array places{
    NamedInhibitors::Place{
        {"org.freedesktop.PowerManagement", powerManagementPath, powerManagement, "GetInhibitors"}, idleOnly},
    NamedInhibitors::Place{{powerManagement, powerManagementPath, powerManagement, "GetInhibitors"},
                           idleOnly},
    NamedInhibitors::Place{{"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
                            "org.freedesktop.ScreenSaver", "GetInhibitors"},
                           idleOnly},
    NamedInhibitors::Place{
        {"org.mate.ScreenSaver", "/org/mate/ScreenSaver", "org.mate.ScreenSaver", "GetInhibitors"}, idleOnly},
    NamedInhibitors::Place{
        {"org.xfce.ScreenSaver", "/org/xfce/ScreenSaver", "org.xfce.ScreenSaver", "GetInhibitors"}, idleOnly},
};

} // namespace

void NamedInhibitors::askFirst() {
  askForDaemon(m_place.list.destination);
  ask(m_place.list, [this](sd_bus_message* reply) {
    for (std::string& app : appsIn(reply)) add({m_place.kinds, {}, std::move(app)});
  });
}

void PlasmaInhibitors::askFirst() {
  m_kinds = {.sleep = true, .idle = true};
  askForDaemon(policyAgent);
  ask({policyAgent, policyAgentPath, policyAgent, "ListInhibitions"}, [this](sd_bus_message* reply) {
    for (std::string& app : appsIn(reply)) add({m_kinds, {}, std::move(app)});
  });
  askWhetherHeld(interruptSession, &InhibitorKinds::sleep);
  askWhetherHeld(changeScreenSettings, &InhibitorKinds::idle);
}

// Before the list or after it.
void PlasmaInhibitors::askWhetherHeld(std::uint32_t policy, bool InhibitorKinds::*kind) {
  BusMessage message = bus().methodCall({policyAgent, policyAgentPath, policyAgent, "HasInhibition"});
  if (message) sd_bus_message_append(message.get(), "u", policy);
  ask(std::move(message), [this, kind](sd_bus_message* reply) {
    m_kinds.*kind = truthIn(reply).value_or(true);
    for (Inhibitor& inhibitor : inhibitors()) inhibitor.kinds = m_kinds;
  });
}

std::vector<std::unique_ptr<InhibitorSource>> namedInhibitorSources(BusConnection& sessionBus) {
  std::vector<std::unique_ptr<InhibitorSource>> sources;
  sources.push_back(std::make_unique<PlasmaInhibitors>(sessionBus));
  for (const NamedInhibitors::Place& place : places) {
    sources.push_back(std::make_unique<NamedInhibitors>(sessionBus, place));
  }
  return sources;
}

} // namespace vantle
