// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/linux/sockets/MessageStream.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vantle {

// What a process of this user's says in lines: events on a connection that stays, and answers, each on a
// connection of its own, one at a time. Nothing here waits for it.
class LineConnection {
 public:
  struct Questions {
    enum class Answer { oneLine, untilTheEnd };
    std::string path;                // of the socket that takes them
    Pid pid = 0;                     // of the process that has opened it, and no other
    Answer answer = Answer::oneLine; // how far it goes
  };
  struct Handlers {
    std::function<void(std::string_view line)> event; // without its end
    std::function<void()> turnEnded;                  // after some events and answers
    std::function<void()> lost;                       // of the events, for good; nothing is called after it
  };
  // Absent when there was nobody to ask, or the answer broke off.
  using OnAnswer = std::function<void(const std::optional<std::string>& answer)>;

  // A line or an answer may be so long: 4,000 windows of Hyprland's, which says most of each. Longer ones end
  // the connection.
  static constexpr std::size_t longestMessage = 4'000'000; // bytes

  // On a socket that is connected and does not block.
  LineConnection(EventLoop& loop, Descriptor events, Questions questions, Handlers handlers);
  LineConnection(const LineConnection&) = delete;
  LineConnection& operator=(const LineConnection&) = delete;

  bool isOpen() const { return m_events.isOpen(); }
  void close() { m_events.close(); }                          // as if the other end had done it
  void send(std::string_view bytes) { m_events.send(bytes); } // where the events come from
  // False when too many answers are still owed, or the connection is lost.
  bool ask(std::string question, OnAnswer answered);

  // Handles what arrives until every answer is there or the time is up; true for the former. See
  // DesktopWindows::settle.
  bool settle(std::chrono::milliseconds limit);

 private:
  struct Question {
    std::string text;
    OnAnswer answered;
  };

  std::optional<std::size_t> takeLine(std::string_view received) const;
  std::optional<std::size_t> takeAnswer(std::string_view received);
  void begin();
  void end(std::optional<std::string> answer);
  void deliver();

  EventLoop& m_loop;
  Questions m_place;
  Handlers m_handlers;
  std::deque<Question> m_questions; // the first of them is asked
  std::unique_ptr<MessageStream> m_asked;
  std::string m_part; // of its answer
  std::optional<std::string> m_answer;
  std::unique_ptr<EventLoop::Handle> m_delivery; // set when the first question is done with
  MessageStream m_events;
};

} // namespace vantle
