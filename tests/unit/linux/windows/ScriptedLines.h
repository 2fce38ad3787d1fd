// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/posix/Descriptor.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// The other end of a desktop that tells of its windows in lines, as far as Hyprland and niri are alike. It
// answers when it is told to.
class ScriptedLines {
 public:
  struct Window {
    std::uint64_t id = 0;
    std::string pid = "0"; // as it stands in the JSON
    std::string applicationId = "app";
    bool isX11 = false;
  };

  explicit ScriptedLines(std::string questions); // where it is asked
  virtual ~ScriptedLines() = default;
  ScriptedLines(const ScriptedLines&) = delete;
  ScriptedLines& operator=(const ScriptedLines&) = delete;

  Descriptor takeClientsEnd() { return std::move(m_clientsEnd); }
  const std::string& questions() const { return m_questions; }
  int events() const { return m_events.get(); } // a descriptor

  // Answers all that has been asked since the last time; how many.
  int serve();
  void sendBytes(std::string_view bytes); // as an event, as far as they are taken
  void end() { m_events = Descriptor(); }

  virtual void tellOpened(const Window& window) = 0;
  virtual void tellFocus(std::uint64_t id) = 0; // 0 for none
  virtual void tellClosed(std::uint64_t id) = 0;
  virtual std::string closing(std::uint64_t id) const = 0;  // what it is asked for that
  virtual std::string fronting(std::uint64_t id) const = 0; // and for bringing it to the front

  std::vector<Window> windows; // the first of them has the focus
  std::string brokenAnswer = {};
  std::vector<std::string> others; // that was asked, beside what is answered here

 protected:
  // Empty for what is noted as another question.
  virtual std::string answerTo(const std::string& question) const = 0;
  virtual bool endsAfterAnswer() const = 0;

 private:
  std::string m_questions;
  Descriptor m_listener;
  std::vector<Descriptor> m_answered;
  Descriptor m_events;
  Descriptor m_clientsEnd;
};

class ScriptedHyprland final : public ScriptedLines {
 public:
  using ScriptedLines::ScriptedLines;
  void tellOpened(const Window& window) override;
  void tellFocus(std::uint64_t id) override;
  void tellClosed(std::uint64_t id) override;
  std::string closing(std::uint64_t id) const override;
  std::string fronting(std::uint64_t id) const override;

  std::string version = R"({"tag":"v0.41.2"})";

 private:
  std::string answerTo(const std::string& question) const override;
  bool endsAfterAnswer() const override { return true; }
};

class ScriptedNiri final : public ScriptedLines {
 public:
  using ScriptedLines::ScriptedLines;
  void agree(const std::string& first = R"({"Ok":"Handled"})"); // the first line of all
  void tellOpened(const Window& window) override;
  void tellFocus(std::uint64_t id) override;
  void tellClosed(std::uint64_t id) override;
  std::string closing(std::uint64_t id) const override;
  std::string fronting(std::uint64_t id) const override;

 private:
  std::string list() const;
  static std::string text(const Window& window, bool isFocused);
  std::string answerTo(const std::string& question) const override;
  bool endsAfterAnswer() const override { return false; }
};

} // namespace vantle
