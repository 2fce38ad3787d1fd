// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/linux/kernel/Kernel.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vantle {

// What a program says of itself to a server, from wherever it runs. In a sandbox its number is one of the
// sandbox's.
struct ProcessClaim {
  Pid pid = 0;         // what it calls itself
  std::string program; // the name of its program's file, without the folder
  std::string machine; // the machine's id; empty when it did not say
  std::string
      sandbox; // the sandbox's id as somebody else knows it, "org.mozilla.firefox"; empty when unknown
};

// Finds the processes that claims are about. One search looks at the processes once, when it is first asked:
// it is made for one decision and thrown away.
class ClaimSearch {
 public:
  // The kernel outlives it. The machine's id is this one's: `thisMachine()`.
  ClaimSearch(const Kernel& kernel, std::string machine);

  // Every process of this user that calls itself by that number, in whatever sandbox, and runs that program:
  // several when nothing tells them apart. Where the sandbox is known, one of another sandbox does not count.
  // None when the claim comes from another machine, or names no program: a number alone means somebody else
  // out here.
  std::vector<Pid> find(const ProcessClaim& claim);

 private:
  struct Numbers {
    Pid here = 0;
    Pid inside = 0;
  };

  void look();
  Pid numberInside(Pid pid, const std::optional<std::string>& ownNamespace) const;
  bool runs(const Numbers& numbers, const std::string& program) const;
  bool isInAnotherSandbox(Pid pid, const std::string& sandbox) const;

  const Kernel& m_kernel;
  std::string m_machine;
  std::optional<std::vector<Numbers>> m_numbers;
};

// The id of this machine as programs give it: machine-id(5), D-Bus's older place for it, else its name.
std::string thisMachine();

} // namespace vantle
