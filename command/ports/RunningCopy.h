// SPDX-License-Identifier: MIT
#pragma once

#include "status/Status.h"

#include <chrono>
#include <functional>
#include <string>
#include <variant>
#include <vector>

namespace vantle {

// Why a question to the running copy got no answer.
struct Failure {
  enum class Kind {
    notRunning, // `text` says more, if there is more to say
    silent,     // it does not answer in time
    refused,    // `text` says why, for a person
    unheard     // nobody reads the answer any more
  };
  Kind kind = Kind::notRunning;
  std::string text;
};

template <class T> using Answer = std::variant<T, Failure>;
using Done = Answer<std::monostate>;

// The copy of this user's that runs, asked from another process. None of these starts one, and each ends
// after 5 s at the latest.
class RunningCopy {
 public:
  virtual ~RunningCopy() = default;

  virtual Answer<Status> status() = 0;
  // Calls back with the status of now and after each change, until the copy ends, or whoever reads the
  // standard output has gone, or `tell` could not tell it: false. Says why there is no more.
  virtual Failure follow(const std::function<bool(const Status&)>& tell) = 0;
  // An app's name, identifier, or the number of any of its processes.
  virtual Answer<std::vector<AppStatus>> why(const std::string& target) = 0;
  virtual Done boost(const std::string& target) = 0; // empty: the app in front
  virtual Done off() = 0;
  virtual Done pause(std::chrono::seconds duration) = 0; // 0 ends a pause
  virtual Answer<std::string> report(bool withNames) = 0;
};

} // namespace vantle
