// SPDX-License-Identifier: MIT
// What desktop files and scripts say of the program that they start.
#include "platform/linux/apps/ExecLine.h"
#include "platform/linux/apps/ScriptText.h"
#include "tests/fuzz/Target.h"

#include <string>

using namespace vantle;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes = fuzz::textOf(data, size);
  for (const std::string& exec : {bytes, "sh -c " + bytes}) {
    const InnerProgram inner = innerProgramOf(exec);
    fuzz::require(inner.told.empty() || !inner.words.empty(), "a shell is told of a program", bytes);
    fuzz::require(!inner.told.empty() || inner.words.size() == programOf(exec).size(),
                  "without a shell it is the line's own", bytes);
  }
  const ScriptsProgram becomes = programOfScript("#!/bin/sh\n" + bytes, "/opt/game");
  const std::string& program = becomes.program;
  const bool isName = program.find('/') == std::string::npos;
  fuzz::require(isName || program.front() == '/', "a script becomes what has a path or a name", bytes);
  fuzz::require(!program.empty() || becomes == ScriptsProgram(), "nothing is said of no program", bytes);
  fuzz::require(becomes.folder.empty() || becomes.folder.front() == '/', "a folder has a path", bytes);
  return 0;
}
