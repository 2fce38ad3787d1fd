// SPDX-License-Identifier: MIT
#include "platform/linux/power/InhibitorSource.h"

#include "platform/linux/power/InhibitorReaders.h"

#include <utility>

namespace vantle {

void InhibitorSource::ask() {
  m_isAsked = m_questions.isAnswered();
  m_findings.inhibitors.clear();
  if (!m_isAsked) return; // the daemon is still the one that it was: were it gone, its answers had failed
  m_findings.daemon.reset();
  askFirst();
}

void InhibitorSource::ask(const BusMethod& method, BusQuestions::Answer answer) {
  ask(bus().methodCall(method), std::move(answer));
}

void InhibitorSource::ask(BusMessage message, BusQuestions::Answer answer) {
  m_questions.ask(std::move(message), std::move(answer));
}

void InhibitorSource::askForOwner(const std::string& name, std::function<void(Pid)> answer) {
  BusMessage message = bus().methodCall({"org.freedesktop.DBus", "/org/freedesktop/DBus",
                                         "org.freedesktop.DBus", "GetConnectionUnixProcessID"});
  if (message) sd_bus_message_append(message.get(), "s", name.c_str());
  ask(std::move(message), [answer = std::move(answer)](sd_bus_message* reply) {
    if (const std::optional<Pid> pid = processIn(reply)) answer(*pid);
  });
}

void InhibitorSource::askForDaemon(const std::string& name) {
  askForOwner(name, [this](Pid pid) { m_findings.daemon = pid; });
}

std::size_t InhibitorSource::add(Inhibitor inhibitor) {
  const std::size_t place = m_findings.inhibitors.size();
  const std::string name = inhibitor.app;
  m_findings.inhibitors.push_back(std::move(inhibitor));
  if (isBusName(name)) {
    askForOwner(name, [this, place](Pid pid) { inhibitors()[place].processes.push_back(pid); });
  }
  return place;
}

} // namespace vantle
