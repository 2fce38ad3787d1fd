// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

namespace vantle {

// What stands in a desktop's shell and calls the feed: how it gets there, and how it is spoken to. All calls
// are made on the main loop and wait for nobody.
class FeedCaller {
 public:
  virtual ~FeedCaller() = default;

  // The shell has come to the bus under this unique name, for the first time or anew. `failed`, at most once
  // and never inside this call, when nothing will call the feed from there.
  virtual void meet(const std::string& shell, std::function<void()> failed) = 0;
  // The feed has been called by it.
  virtual void begin() = 0;
  // Asks the shell for something that it answers on the thread on which it knows its windows. By the time of
  // the answer it has told what had happened to them before. False when there was none.
  virtual void ask(std::function<void(bool isAnswered)> answered) = 0;
  // Asks a window to close, politely, or has it brought to the front, by the shell's own name for it; false
  // when that cannot be asked.
  virtual bool requestClose(const std::string& window) = 0;
  virtual bool requestFront(const std::string& window) = 0;
};

} // namespace vantle
