// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/band/BandLedger.h"
#include "platform/linux/kernel/Kernel.h"
#include "platform/linux/kernel/ProcessorSet.h"

namespace vantle {

// Every set of processors that threads were ever narrowed to. Processors are switched on and off while
// threads are narrowed, and each keeps the set of its moment.
class NarrowedSets {
 public:
  explicit NarrowedSets(BandLedger& ledger) : m_ledger(ledger) {}

  // False when a program after this one could not know of it: then nothing may be narrowed to it.
  bool remember(const ProcessorSet& set);
  // Whether a thread that may run there was narrowed to one of them, as far as that shows without a look at
  // which processors are active.
  bool contains(const ProcessorSet& now) const;
  // The same with one: of a set only the active ones show, and when none of it is active the kernel lets the
  // thread run anywhere, but may remember the set.
  bool contains(const ProcessorSet& now, const ProcessorSet& active) const;
  // And with a control group whose processors were chosen meanwhile: when it allows more again, the kernel
  // goes back to the set that it remembers.
  bool containsBehindGroup(const Kernel& kernel, Pid tid, const ProcessorSet& now) const;

 private:
  BandLedger& m_ledger;
};

} // namespace vantle
