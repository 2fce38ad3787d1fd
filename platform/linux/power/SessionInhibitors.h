// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/power/InhibitorSource.h"

#include <string>

namespace vantle {

// The apps that asked a session manager to keep the machine awake, which it does under its own name, if it
// tells logind at all: GNOME's keeps idleness to itself. (GNOME's, MATE's and Cinnamon's all speak
// org.gnome.SessionManager. What GNOME's and MATE's screen savers and the portal on GNOME are asked for ends
// up there as well.)
class SessionInhibitors final : public InhibitorSource {
 public:
  explicit SessionInhibitors(BusConnection& sessionBus) : InhibitorSource(sessionBus) {}

 private:
  void askFirst() override;
  void askAbout(const std::string& inhibitor);
  void askForApp(const std::string& inhibitor, InhibitorKinds kinds);
  void askForClient(const std::string& inhibitor, std::size_t place);
};

} // namespace vantle
