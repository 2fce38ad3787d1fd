// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/bus/BusQuestions.h"
#include "platform/linux/power/Inhibitor.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vantle {

// One daemon that is asked to keep the machine awake, and whom Vantle asks by whom. Many decisions are made
// with one source; what a daemon has not answered in time for one it is not asked again until it has.
class InhibitorSource {
 public:
  // What one decision has learned so far.
  struct Findings {
    std::vector<Inhibitor> inhibitors;
    std::optional<Pid> daemon; // who answers: what it holds elsewhere it holds for those above
  };

  virtual ~InhibitorSource() = default;
  InhibitorSource(const InhibitorSource&) = delete;
  InhibitorSource& operator=(const InhibitorSource&) = delete;

  // Sends the first questions of a decision; the others follow by themselves as the answers come.
  void ask();
  // Everything that was asked for this decision; a daemon that was left alone has nothing to answer.
  bool isAnswered() const { return !m_isAsked || m_questions.isAnswered(); }
  bool hasAnswered() const { return m_isAsked && m_questions.isAnswered(); } // be it with errors
  const Findings& findings() const { return m_findings; }
  // What comes from now on is too late for this decision.
  void giveUp() { m_questions.giveUp(); }

 protected:
  explicit InhibitorSource(BusConnection& bus) : m_questions(bus) {}

  virtual void askFirst() = 0;

  BusConnection& bus() const { return m_questions.bus(); }
  void ask(const BusMethod& method, BusQuestions::Answer answer);
  void ask(BusMessage message, BusQuestions::Answer answer);
  // Asks the bus for the process of that name's owner, which may be a sandbox's proxy.
  void askForOwner(const std::string& name, std::function<void(Pid)> answer);
  void askForDaemon(const std::string& name);
  // Adds an inhibitor, and asks for the owner of the app's name where it has the form of one; its place.
  std::size_t add(Inhibitor inhibitor);
  std::vector<Inhibitor>& inhibitors() { return m_findings.inhibitors; }

 private:
  BusQuestions m_questions;
  Findings m_findings;
  bool m_isAsked = false;
};

} // namespace vantle
