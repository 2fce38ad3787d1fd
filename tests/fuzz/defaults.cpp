// SPDX-License-Identifier: MIT
// Any bytes as the settings' file.
#include "engine/AppSettings.h"
#include "platform/shared/JsonUserDefaults.h"
#include "platform/simulated/SimulatedFiles.h"
#include "tests/fuzz/Target.h"

using namespace vantle;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes = fuzz::textOf(data, size);
  const auto decoded = decodeDefaults(bytes);

  SimulatedCalls calls;
  SimulatedFiles files(calls);
  JsonUserDefaults defaults(files, "/c", "domain");
  files.contents[defaults.path()] = bytes;
  if (decoded) {
    for (const auto& [key, value] : *decoded->asObject()) {
      fuzz::require(defaults.contains(key), "every key is seen", bytes);
      // What has a type comes back the same through a write.
      if (const auto typed = defaults.object(key)) {
        SimulatedFiles others(calls);
        JsonUserDefaults other(others, "/c", "domain");
        other.set(key, *typed);
        fuzz::require(other.object(key) == typed, "a value survives", bytes);
      }
    }
  }
  AppSettings settings(defaults); // writes the mark of the migration
  settings.accent.set(AccentTheme::teal);
  const auto written = decodeDefaults(files.contents.at(defaults.path()));
  fuzz::require(written.has_value() && written->textAt("accent") == "teal", "what is written can be read",
                bytes);
  if (decoded) {
    for (const auto& [key, value] : *decoded->asObject()) {
      const bool isChanged = key == "accent" || key == "migratedFromMurn";
      fuzz::require(isChanged || (written->find(key) != nullptr && *written->find(key) == value),
                    "foreign keys are kept", bytes);
    }
  } else {
    fuzz::require(files.contents.at(defaults.path() + ".corrupt") == bytes, "what cannot be read is kept",
                  bytes);
  }
  return 0;
}
