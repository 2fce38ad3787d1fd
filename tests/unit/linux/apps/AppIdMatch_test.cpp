// SPDX-License-Identifier: MIT
// Which processes an app id fits.
#include "platform/linux/apps/AppIdMatch.h"

#include <gtest/gtest.h>
#include <vector>

namespace vantle {
namespace {

const std::vector<DesktopEntry> entries{
    {.id = "org.example.Editor", .realPath = "/usr/bin/ed-tool"},
    {.id = "viewer", .windowClass = "View-Window", .realPath = "/usr/bin/view-tool"},
    {.id = "without-program"},
};

bool fits(const char* applicationId, const AppEvidence& process, const DesktopEntry* entry = nullptr) {
  return AppIdMatch(applicationId, entries).fits(process, entry);
}

TEST(AppIdMatch, AProgramFitsItsName) {
  const AppEvidence process{.program = "/usr/bin/Editor"};
  EXPECT_TRUE(fits("editor", process));
  EXPECT_TRUE(fits("EDITOR", process));
  EXPECT_TRUE(fits("com.other.Editor", process));
  EXPECT_FALSE(fits("edit", process));
  EXPECT_FALSE(fits("editor.more", process));
  EXPECT_TRUE(fits("tool.bin", {.program = "/opt/tool.bin"}));
}

TEST(AppIdMatch, ADesktopFileFitsItsProgram) {
  EXPECT_TRUE(fits("org.example.Editor", {.program = "/usr/bin/ed-tool"}));
  EXPECT_FALSE(fits("org.example.Editor", {.program = "/usr/bin/view-tool"}));
  EXPECT_TRUE(fits("view-window", {.program = "/usr/bin/view-tool"}));
  EXPECT_TRUE(fits("Viewer", {.program = "/usr/bin/view-tool"}));
  EXPECT_FALSE(fits("without-program", {.program = ""}));
}

TEST(AppIdMatch, WhatAProcessIsKnownAsFits) {
  const AppEvidence process{.program = "/usr/bin/runner"};
  EXPECT_TRUE(fits("org.example.Editor", process, entries.data()));
  EXPECT_FALSE(fits("viewer", process, entries.data()));
  EXPECT_TRUE(fits("org.sandbox.App", {.sandboxId = "org.sandbox.App"}));
  EXPECT_FALSE(fits("org.sandbox.Other", {.sandboxId = "org.sandbox.App"}));
}

TEST(AppIdMatch, NothingFitsAnEmptyId) {
  EXPECT_FALSE(fits("", {}));
  EXPECT_FALSE(fits("", {.program = "/usr/bin/"}, &entries.back()));
  EXPECT_FALSE(fits("a.", {.program = ""}));
}

} // namespace
} // namespace vantle
