// SPDX-License-Identifier: MIT
#include "platform/linux/sockets/LineConnection.h"

#include "platform/linux/sockets/LocalSocket.h"

#include <utility>

namespace vantle {

namespace {

constexpr std::size_t mostQuestions = 256; // that may be unanswered at a time

} // namespace

LineConnection::LineConnection(EventLoop& loop, Descriptor events, Questions questions, Handlers handlers)
    : m_loop(loop), m_place(std::move(questions)), m_handlers(std::move(handlers)),
      m_events(loop, std::move(events),
               {.take = [this](std::string_view received) { return takeLine(received); },
                .turnEnded = [this] { m_handlers.turnEnded(); },
                .lost =
                    [this] {
                      m_delivery.reset();
                      m_asked.reset();
                      m_questions.clear();
                      m_handlers.lost();
                    }}) {}

std::optional<std::size_t> LineConnection::takeLine(std::string_view received) const {
  const std::size_t length = received.find('\n');
  if (length == std::string_view::npos) {
    if (received.size() > longestMessage) return std::nullopt;
    return 0;
  }
  m_handlers.event(received.substr(0, length));
  return length + 1;
}

bool LineConnection::ask(std::string question, OnAnswer answered) {
  if (!isOpen() || m_questions.size() >= mostQuestions) return false;
  m_questions.push_back({std::move(question), std::move(answered)});
  if (m_questions.size() == 1) begin();
  return true;
}

void LineConnection::begin() {
  m_part.clear();
  std::optional<LocalPeer> peer = connectToOwn(m_place.path);
  if (!peer || peer->pid != m_place.pid) return end(std::nullopt);
  m_asked = std::make_unique<MessageStream>(
      m_loop, std::move(peer->socket),
      MessageStream::Handlers{.take = [this](std::string_view received) { return takeAnswer(received); },
                              .lost =
                                  [this] {
                                    const bool isWhole =
                                        m_place.answer == Questions::Answer::untilTheEnd && !m_part.empty();
                                    end(isWhole ? std::optional(m_part) : std::nullopt);
                                  }});
  m_asked->send(m_questions.front().text);
}

// Whatever comes after the end of an answer is nothing.
std::optional<std::size_t> LineConnection::takeAnswer(std::string_view received) {
  if (m_delivery) return received.size();
  if (m_part.size() + received.size() > longestMessage) {
    m_part.clear();
    return std::nullopt;
  }
  const bool isOneLine = m_place.answer == Questions::Answer::oneLine;
  const std::size_t length = isOneLine ? received.find('\n') : std::string_view::npos;
  m_part.append(received.substr(0, length));
  if (length != std::string_view::npos) end(m_part);
  return received.size();
}

// Not inside a call of the connection that goes with it.
void LineConnection::end(std::optional<std::string> answer) {
  if (m_delivery) return;
  m_answer = std::move(answer);
  m_delivery = m_loop.after(std::chrono::milliseconds(0), [this] { deliver(); });
}

void LineConnection::deliver() {
  m_delivery.reset();
  m_asked.reset();
  const OnAnswer answered = std::move(m_questions.front().answered);
  m_questions.pop_front();
  answered(std::exchange(m_answer, std::nullopt));
  if (!m_questions.empty() && !m_asked && !m_delivery) begin();
  if (isOpen()) m_handlers.turnEnded();
}

bool LineConnection::settle(std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  for (;;) {
    m_events.pump();
    if (m_asked) m_asked->pump();
    const bool isDelivered = m_delivery != nullptr;
    if (isDelivered) deliver();
    const bool isSettled = isOpen() && m_questions.empty();
    if (isSettled || !isOpen() || std::chrono::steady_clock::now() >= end) return isSettled;
    if (!isDelivered) MessageStream::wait({&m_events, m_asked.get()}, end);
  }
}

} // namespace vantle
