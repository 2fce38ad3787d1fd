// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace vantle {

// Programs of the person's own that are run when something happens. Nobody waits for one.
class Hooks {
 public:
  using Variables = std::vector<std::pair<std::string, std::string>>; // of its environment

  virtual ~Hooks() = default;

  // Starts the person's program of that name, if there is one: true. Answers within 100 ms. `ended` is called
  // on the main loop, later and once, when the program has ended, or after 10 s, when it is ended. One at a
  // time.
  virtual bool start(const std::string& name, const Variables& variables, std::function<void()> ended) = 0;
  // Ends what runs; its `ended` is not called any more.
  virtual void cut() = 0;
};

} // namespace vantle
