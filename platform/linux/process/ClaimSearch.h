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
  std::string machine; // the machine's id, or what a library says that found none; empty when it did not say
  std::string
      sandbox; // the sandbox's id as somebody else knows it, "org.mozilla.firefox"; empty when unknown
  std::string host = {}; // the machine's name; empty when it did not say
};

// How programs name a machine.
struct MachineIdentity {
  std::string id;   // machine-id(5), or D-Bus's older place for it; empty when it has none
  std::string host; // its name in the network
};

// Finds the processes that claims are about. One search looks at the processes once, when it is first asked:
// it is made for one decision and thrown away.
class ClaimSearch {
 public:
  // The kernel outlives it. The machine is this one: `thisMachine()`.
  ClaimSearch(const Kernel& kernel, MachineIdentity machine);

  // Every process of this user that calls itself by that number, in whatever sandbox, and runs that program:
  // several when nothing tells them apart. A process with that number out here that sees no /proc cannot know
  // what it runs: there any name will do. Where the sandbox is known, one of another sandbox does not count.
  // None when the claim comes from another machine, or names no program: a number alone means somebody else
  // out here. Where there is no id, as in many sandboxes, the machine's name tells.
  std::vector<Pid> find(const ProcessClaim& claim);

 private:
  struct Numbers {
    Pid here = 0;
    Pid inside = 0;
  };

  bool isFromHere(const ProcessClaim& claim) const;
  void look();
  Pid numberInside(Pid pid, const std::optional<std::string>& ownNamespace) const;
  bool seesNoProc(const Numbers& numbers) const;
  bool runs(const Numbers& numbers, const std::string& program) const;
  bool isInAnotherSandbox(Pid pid, const std::string& sandbox) const;

  const Kernel& m_kernel;
  MachineIdentity m_machine;
  std::optional<std::vector<Numbers>> m_numbers;
};

MachineIdentity thisMachine();

} // namespace vantle
