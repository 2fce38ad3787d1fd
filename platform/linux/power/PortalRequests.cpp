// SPDX-License-Identifier: MIT
#include "platform/linux/power/PortalRequests.h"

#include "platform/linux/power/InhibitorReaders.h"

namespace vantle {

namespace {

constexpr const char* portal = "org.freedesktop.portal.Desktop";
constexpr const char* requests = "/org/freedesktop/portal/desktop/request";
constexpr InhibitorKinds unknown{.sleep = true, .idle = true};

} // namespace

void PortalRequests::askFirst() {
  askForDaemon(portal);
  ask({portal, requests, "org.freedesktop.DBus.Introspectable", "Introspect"}, [this](sd_bus_message* reply) {
    const char* description = nullptr;
    if (reply == nullptr || sd_bus_message_read(reply, "s", &description) <= 0) return;
    for (const std::string& name : requestersIn(description)) {
      askForOwner(name, [this](Pid pid) { add({unknown, {pid}, {}}); });
    }
  });
}

} // namespace vantle
