// SPDX-License-Identifier: MIT
#include "platform/posix/process/Question.h"

namespace vantle {

void askTogether(const std::vector<Question*>& questions, std::chrono::steady_clock::time_point deadline) {
  for (Question* question : questions) question->ask();
  for (;;) {
    std::vector<pollfd> waited;
    for (Question* question : questions) {
      if (question->isAsking()) question->advance();
      if (!question->isAsking()) continue;
      const std::vector<pollfd> own = question->watch();
      waited.insert(waited.end(), own.begin(), own.end());
    }
    using Milliseconds = std::chrono::milliseconds;
    const auto left = std::chrono::ceil<Milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    if (waited.empty() || left <= 0) break;
    ::poll(waited.data(), waited.size(), static_cast<int>(left));
  }
  for (Question* question : questions) {
    if (question->isAsking()) question->giveUp();
  }
}

} // namespace vantle
