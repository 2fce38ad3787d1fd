// SPDX-License-Identifier: MIT
#include "platform/linux/apps/ScriptText.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vantle {
namespace {

std::string becomes(const std::string& lines) {
  return programOfScript("#!/bin/bash\n# exec nothing\n" + lines + "\n", "/opt/My Game").program;
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

TEST(ScriptText, TellsWhatTheProgramIsCalledWith) {
  struct Case {
    const char* lines;
    ScriptsProgram told;
  };
  const std::vector<Case> cases{
      {"exec love /usr/share/games/rescue.love", {"love", {"/usr/share/games/rescue.love"}}},
      {"exec /opt/run --fullscreen \"$@\"", {"/opt/run", {"--fullscreen"}, true}},
      {"exec /opt/run +set 'fs game' ba\\ se ${1+\"$@\"}", {"/opt/run", {"+set", "fs game", "ba se"}, true}},
      {"exec /opt/run '$HOME' \\$5", {"/opt/run", {"$HOME", "$5"}}},
      {"cd /opt/data\nexec ../bin/run data.pak", {"/opt/bin/run", {"data.pak"}, false, "/opt/data"}},
      {"cd /opt/data || exit 1\nexec ../bin/run --data=.",
       {"/opt/bin/run", {"--data=."}, false, "/opt/data"}},
      {"cd /opt; cd data && exec ./run", {"/opt/data/run", {}, false, "/opt/data"}},
      {"(cd /elsewhere; make)\nexec /opt/run x", {"/opt/run", {"x"}}},
      {"export A=b B=\"$C\"\nD=e exec /opt/run \\\n  x.pak >/dev/null 2>&1 \"$@\" &",
       {"/opt/run", {"x.pak"}, true}},
      {"DIR=/opt\nexec \"$DIR/run\" -data \"$DIR/data\"", {"/opt/run", {"-data", "/opt/data"}}},
      {"exec env A=b nice -n 5 /opt/run x", {"/opt/run", {"x"}}},
      {"if [ $# = 0 ]; then exec /opt/run x; else exec /opt/run x \"$@\"; fi", {"/opt/run", {"x"}, true}},
      {"cat <<EOF\nWhat doesn't\nexec /opt/other\nEOF\nexec /opt/run", {"/opt/run", {}}},
      {"echo 'one\nexec /opt/other'\nexec /opt/run", {"/opt/run", {}}},
      {"case $1 in --help) echo \"it's\"; exit;; esac\nexec /opt/run \"$@\"", {"/opt/run", {}, true}},
  };
  for (const Case& each : cases) {
    const ScriptsProgram told = programOfScript(std::string("#!/bin/sh\n") + each.lines, "/opt/here");
    EXPECT_EQ(told.program, each.told.program) << each.lines;
    EXPECT_EQ(told.arguments, each.told.arguments) << each.lines;
    EXPECT_EQ(told.takesMore, each.told.takesMore) << each.lines;
    EXPECT_EQ(told.folder, each.told.folder) << each.lines;
  }
}

TEST(ScriptText, IsNoLongerThanAPath) {
  std::string lines = "A=aaaaaaaa\n";
  for (int times = 0; times < 1000; ++times) lines += "A=$A$A\n";
  EXPECT_EQ(becomes(lines + "exec /opt/run $A"), "");
  EXPECT_EQ(becomes("A=aaaaaaaa\nA=$A$A\nexec /opt/$A"), "/opt/aaaaaaaaaaaaaaaa");
  EXPECT_EQ(becomes(std::string(10'000, '(') + "\nexec /opt/run"), "");
}

TEST(ScriptText, TellsOfNothingThatOnlyAShellUnderstands) {
  for (const char* lines : {"",
                            "exec ./run",
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
                            "MACHINE=`uname -m`\nexec \"/opt/run.$MACHINE\" \"$@\"",
                            "exec \"$BIN\" \"$@\"",
                            "exec /opt/run \"$DATA\"",
                            "exec /opt/run \"$@\" last",
                            "exec /opt/run *.pak",
                            "exec ~/run",
                            "DIRS=(/opt /usr)\nexec $DIRS/run",
                            "exec /opt/run x\nexec /opt/run y",
                            "PATH=/opt\nexec run",
                            "exec /opt/run 'x",
                            "exec",
                            "cd",
                            "=",
                            "export"}) {
    EXPECT_EQ(becomes(lines), "") << lines;
  }
}

} // namespace
} // namespace vantle
