// SPDX-License-Identifier: MIT
// Any bytes as the band's ledger.
#include "platform/linux/band/BandLedger.h"
#include "platform/simulated/SimulatedFiles.h"
#include "tests/fuzz/Target.h"

using namespace vantle;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes = fuzz::textOf(data, size);
  const BandRecord read = decodeBandRecord(bytes, "today");
  fuzz::require(decodeBandRecord(encodeBandRecord(read, "today"), "today") == read,
                "what was read is written as it was", bytes);
  fuzz::require(decodeBandRecord(encodeBandRecord(read, "today"), "tomorrow").empty(),
                "nothing of it outlives a boot", bytes);
  for (const ProcessorSet& set : read.sets) fuzz::require(!set.empty(), "a set holds something", bytes);

  SimulatedCalls calls;
  SimulatedFiles files(calls);
  files.contents["/l/band.json"] = bytes;
  BandLedger ledger(files, {"/l/band.json"}, "today");
  fuzz::require(ledger.sessions() == read.sessions, "the ledger holds what its file says", bytes);
  const bool isKnown = ledger.find("added.scope") != nullptr;
  fuzz::require(ledger.add({{{"added.scope", "/added.scope"}, 42}}), "it can be written", bytes);
  const BandLedger again(files, {"/l/band.json"}, "today");
  fuzz::require(again.units() == ledger.units() || isKnown, "what was added is read again", bytes);
  return 0;
}
