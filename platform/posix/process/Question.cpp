// SPDX-License-Identifier: MIT
#include "platform/posix/process/Question.h"

namespace vantle {

namespace {

// Takes in what has arrived; what is waited for next.
std::vector<pollfd> advance(const std::vector<Question*>& questions) {
  std::vector<pollfd> waited;
  for (Question* question : questions) {
    if (question->isAsking()) question->advance();
    if (!question->isAsking()) continue;
    const std::vector<pollfd> own = question->watch();
    waited.insert(waited.end(), own.begin(), own.end());
  }
  return waited;
}

} // namespace

void askTogether(const std::vector<Question*>& questions, std::chrono::steady_clock::time_point deadline,
                 const std::vector<Question*>& beside) {
  for (Question* question : questions) question->ask();
  awaitTogether(questions, deadline, beside);
}

void awaitTogether(const std::vector<Question*>& questions, std::chrono::steady_clock::time_point deadline,
                   const std::vector<Question*>& beside) {
  for (;;) {
    std::vector<pollfd> waited = advance(questions);
    if (waited.empty()) break;
    const std::vector<pollfd> others = advance(beside);
    waited.insert(waited.end(), others.begin(), others.end());
    using Milliseconds = std::chrono::milliseconds;
    const auto left = std::chrono::ceil<Milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    if (left <= 0) break;
    ::poll(waited.data(), static_cast<nfds_t>(waited.size()), static_cast<int>(left));
  }
  for (Question* question : questions) {
    if (question->isAsking()) question->giveUp();
  }
}

} // namespace vantle
