// SPDX-License-Identifier: MIT
#include "platform/linux/apps/ScriptText.h"

#include <gtest/gtest.h>
#include <string>

namespace vantle {
namespace {

std::string becomes(const std::string& lines) {
  return programOfScript("#!/bin/bash\n# exec nothing\n" + lines + "\n", "/opt/My Game");
}

// As games and images ship them.
TEST(ScriptText, TellsOfAProgramBesideIt) {
  for (const char* lines :
       {"cd \"$(dirname \"$0\")\"\nexec ./run \"$@\"", "cd \"${0%/*}\" && exec ./run",
        "cd `dirname $0` || exit 1\nexec ./run $@", "cd '/opt/My Game'; exec ./run",
        "exec '/opt/My Game/run' \"$@\"",
        "HERE=\"$(dirname \"$(readlink -f \"${0}\")\")\"\nexport PATH=\"$HERE:$PATH\"\n"
        "exec \"${HERE}/run\" \"$@\"",
        "DIR=\"$( cd \"$( dirname \"${BASH_SOURCE[0]}\" )\" && pwd )\"\ncd \"$DIR/..\"\nexec \"$DIR/run\"",
        "cd \"$(dirname \"$0\")/..\"\nexec './My Game/run'",
        "exec 2>/dev/null\nexec >log\nDATA=$DIR\nexec \"$(dirname \"$0\")/run\""}) {
    EXPECT_EQ(becomes(lines), "/opt/My Game/run") << lines;
  }
}

TEST(ScriptText, TellsOfNothingThatOnlyAShellUnderstands) {
  for (const char* lines : {"",
                            "exec ./run",
                            "exec run",
                            "cd \"$GAME\"\nexec ./run",
                            "cd \"$(dirname \"$1\")\"\nexec ./run",
                            "cd \"$(dirname \"$0\")\"\ncd \"$1\"\nexec ./run",
                            "DIR=/opt\nDIR=$(pwd)\nexec \"$DIR/run\"",
                            "cd \"$(dirname \"$0\")\"\nexec \"$@\"",
                            "exec /opt/run\nexec /opt/other",
                            "exec \"${DIR:-/opt}/run\"",
                            "exec \"$(dirname \"$0\"",
                            "exec \"$",
                            "exec $",
                            "exec `",
                            "exec ${",
                            "exec $(",
                            "exec",
                            "cd",
                            "=",
                            "export"}) {
    EXPECT_EQ(becomes(lines), "") << lines;
  }
}

} // namespace
} // namespace vantle
