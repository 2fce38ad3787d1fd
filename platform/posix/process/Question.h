// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <poll.h>
#include <vector>

namespace vantle {

// Something that is asked of another program, which many can be waiting for at the same time.
class Question {
 public:
  virtual ~Question() = default;

  virtual void ask() = 0;                  // anew; never waits
  virtual bool isAsking() const = 0;       // an answer is worth waiting for
  virtual std::vector<pollfd> watch() = 0; // what it waits for
  virtual void advance() = 0;              // takes in what has arrived
  virtual void giveUp() = 0;               // the time is over
};

// Asks all of them at once and waits for them together, until the last has its answer or the deadline comes:
// whoever hangs takes nothing from the others. Those beside them, whom somebody else has asked and waits for
// later, take in what arrives meanwhile.
void askTogether(const std::vector<Question*>& questions, std::chrono::steady_clock::time_point deadline,
                 const std::vector<Question*>& beside = {});

// The same for what has been asked already.
void awaitTogether(const std::vector<Question*>& questions, std::chrono::steady_clock::time_point deadline,
                   const std::vector<Question*>& beside = {});

} // namespace vantle
