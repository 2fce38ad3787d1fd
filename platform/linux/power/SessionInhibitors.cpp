// SPDX-License-Identifier: MIT
#include "platform/linux/power/SessionInhibitors.h"

#include "platform/linux/power/InhibitorReaders.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace vantle {

namespace {

constexpr const char* managerName = "org.gnome.SessionManager";
constexpr const char* managerPath = "/org/gnome/SessionManager";
constexpr const char* inhibitorInterface = "org.gnome.SessionManager.Inhibitor";
constexpr const char* clientInterface = "org.gnome.SessionManager.Client";

// Of GNOME's session manager; the others are logging out, switching the user and mounting media.
constexpr std::uint32_t flagSuspend = 4;
constexpr std::uint32_t flagIdle = 8;

// A session has a handful; one whose apps forget to give back theirs has hundreds. Each takes four questions.
constexpr std::size_t mostInhibitors = 1024;

} // namespace

void SessionInhibitors::askFirst() {
  askForDaemon(managerName);
  ask({managerName, managerPath, managerName, "GetInhibitors"}, [this](sd_bus_message* reply) {
    std::vector<std::string> paths = pathsIn(reply);
    paths.resize(std::min(paths.size(), mostInhibitors));
    for (const std::string& path : paths) askAbout(path);
  });
}

void SessionInhibitors::askAbout(const std::string& inhibitor) {
  ask({managerName, inhibitor.c_str(), inhibitorInterface, "GetFlags"},
      [this, inhibitor](sd_bus_message* reply) {
        const std::uint32_t flags = numberIn(reply).value_or(0);
        const InhibitorKinds kinds{(flags & flagSuspend) != 0, (flags & flagIdle) != 0};
        if (kinds.any()) askForApp(inhibitor, kinds);
      });
}

void SessionInhibitors::askForApp(const std::string& inhibitor, InhibitorKinds kinds) {
  ask({managerName, inhibitor.c_str(), inhibitorInterface, "GetAppId"},
      [this, inhibitor, kinds](sd_bus_message* reply) {
        askForClient(inhibitor, add({kinds, {}, textIn(reply)}));
      });
}

// Only an app that has registered is a client: "/" stands for none, or an error does.
void SessionInhibitors::askForClient(const std::string& inhibitor, std::size_t place) {
  ask({managerName, inhibitor.c_str(), inhibitorInterface, "GetClientId"},
      [this, place](sd_bus_message* reply) {
        const std::string client = textIn(reply);
        if (client.size() < 2) return;
        ask({managerName, client.c_str(), clientInterface, "GetUnixProcessId"},
            [this, place](sd_bus_message* answer) {
              std::vector<Pid>& processes = inhibitors()[place].processes;
              if (const std::optional<Pid> pid = processIn(answer)) processes.insert(processes.begin(), *pid);
            });
      });
}

} // namespace vantle
