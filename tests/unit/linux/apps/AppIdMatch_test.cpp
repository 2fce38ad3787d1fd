// SPDX-License-Identifier: MIT
// Which processes an app id fits.
#include "platform/linux/apps/AppIdMatch.h"

#include <gtest/gtest.h>
#include <vector>

namespace vantle {
namespace {

DesktopEntry entry(const char* id, const char* windowClass, const char* program) {
  DesktopEntry made;
  made.id = id;
  made.windowClass = windowClass;
  made.realPath = program;
  return made;
}

AppEvidence running(const char* program) {
  AppEvidence process;
  process.program = program;
  return process;
}

AppEvidence inSandbox(const char* id) {
  AppEvidence process;
  process.sandboxId = id;
  return process;
}

const std::vector<DesktopEntry> entries{entry("org.example.Editor", "", "/usr/bin/ed-tool"),
                                        entry("viewer", "View-Window", "/usr/bin/view-tool"),
                                        entry("without-program", "", "")};

bool fits(const char* applicationId, const AppEvidence& process, const DesktopEntry* entry = nullptr) {
  return AppIdMatch(applicationId, entries).fits(process, entry);
}

TEST(AppIdMatch, AProgramFitsItsName) {
  const AppEvidence process = running("/usr/bin/Editor");
  EXPECT_TRUE(fits("editor", process));
  EXPECT_TRUE(fits("EDITOR", process));
  EXPECT_TRUE(fits("com.other.Editor", process));
  EXPECT_FALSE(fits("edit", process));
  EXPECT_FALSE(fits("editor.more", process));
  EXPECT_TRUE(fits("tool.bin", running("/opt/tool.bin")));
}

TEST(AppIdMatch, ADesktopFileFitsItsProgram) {
  EXPECT_TRUE(fits("org.example.Editor", running("/usr/bin/ed-tool")));
  EXPECT_FALSE(fits("org.example.Editor", running("/usr/bin/view-tool")));
  EXPECT_TRUE(fits("view-window", running("/usr/bin/view-tool")));
  EXPECT_TRUE(fits("Viewer", running("/usr/bin/view-tool")));
  EXPECT_FALSE(fits("without-program", running("")));
}

TEST(AppIdMatch, WhatAProcessIsKnownAsFits) {
  const AppEvidence process = running("/usr/bin/runner");
  EXPECT_TRUE(fits("org.example.Editor", process, entries.data()));
  EXPECT_FALSE(fits("viewer", process, entries.data()));
  EXPECT_TRUE(fits("org.sandbox.App", inSandbox("org.sandbox.App")));
  EXPECT_FALSE(fits("org.sandbox.Other", inSandbox("org.sandbox.App")));
}

TEST(AppIdMatch, NothingFitsAnEmptyId) {
  EXPECT_FALSE(fits("", {}));
  EXPECT_FALSE(fits("", running("/usr/bin/"), &entries.back()));
  EXPECT_FALSE(fits("a.", running("")));
}

} // namespace
} // namespace vantle
