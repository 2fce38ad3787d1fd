// SPDX-License-Identifier: MIT
#pragma once

#include "remote/ports/RemoteDoor.h"
#include "settings/ports/ShellExtension.h"

namespace vantle {

// No other program asks yet.
class NoDoor final : public RemoteDoor {
 public:
  std::unique_ptr<Open> open(Answers /*answers*/) override { return std::make_unique<Unheard>(); }

 private:
  class Unheard final : public Open {
   public:
    void tell() override {}
  };
};

// Apps are seen without any.
class NoExtension final : public ShellExtension {
 public:
  State state() const override { return State::notOffered; }
  std::unique_ptr<Registration> observe(std::function<void()> /*changed*/) override { return nullptr; }
  void reload() override {}
  void install() override {}
  void remove() override {}
};

} // namespace vantle
