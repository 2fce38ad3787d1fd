// SPDX-License-Identifier: MIT
// Any bytes as the journal's file.
#include "engine/Journal.h"
#include "platform/simulated/SimulatedFiles.h"
#include "tests/fuzz/Target.h"

using namespace vantle;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes = fuzz::textOf(data, size);
  const auto decoded = decodeJournal(bytes);

  SimulatedCalls calls;
  SimulatedFiles files(calls);
  files.contents["/home/player/.local/share/Vantle/journal.json"] = bytes;
  Journal journal(files);
  fuzz::require(journal.entries() == decoded.value_or(std::unordered_set<ProcessIdentity>{}),
                "the journal loads what its file says", bytes);
  const ProcessIdentity added{4711, 17, 42};
  journal.add({added});
  const Journal again(files);
  fuzz::require(again.entries() == journal.entries(), "what was saved is loaded again", bytes);
  journal.remove({added});
  fuzz::require(decodeJournal(files.contents.at(journal.url())).has_value(), "what was saved is a journal",
                bytes);
  return 0;
}
