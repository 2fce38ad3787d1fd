// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

// What the runtime of Objective-C and the Foundation on it keep to the end is theirs. Objects of the tests
// are counted where they are made.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libobjc.so\nleak:libgnustep-base.so\n"; }

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // The Foundation keeps the person's choices there.
  std::string home = testing::TempDir() + "cocoa-home-XXXXXX";
  if (::mkdtemp(home.data()) == nullptr) return EXIT_FAILURE;
  ::setenv("HOME", home.c_str(), 1);
  const int result = RUN_ALL_TESTS();
  std::filesystem::remove_all(home);
  return result;
}
