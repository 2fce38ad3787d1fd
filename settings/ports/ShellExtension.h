// SPDX-License-Identifier: MIT
#pragma once

#include "base/Registration.h"

#include <functional>
#include <memory>

namespace vantle {

// What has to stand in the desktop's shell so that native apps are seen there. It is put in place, and taken
// out, when the person says so. The desktop keeps that choice, and the person may change it elsewhere.
class ShellExtension {
 public:
  enum class State {
    notOffered, // this desktop needs none, or none was made for it; also before it has answered
    out,
    refused, // out, though the person wanted it in: its files or the desktop's list could not be written
    waiting, // in place, but not at work: a shell looks for what is new at a log-in
    atWork,
  };

  virtual ~ShellExtension() = default;

  // As the desktop has last answered. None of the rest waits for it: `changed` is called on the main loop
  // when there is news.
  virtual State state() const = 0;
  [[nodiscard]] virtual std::unique_ptr<Registration> observe(std::function<void()> changed) = 0;
  virtual void reload() = 0;
  virtual void install() = 0;
  virtual void remove() = 0;
};

} // namespace vantle
