// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <string_view>
#include <sys/utsname.h>

namespace vantle {

// What only a Mac can show. Elsewhere these tests are skipped: nothing there would be the system's answer.
class RealMac : public testing::Test {
 protected:
  void SetUp() override {
    utsname system{};
    const bool isMac = ::uname(&system) == 0 && std::string_view(system.sysname) == "Darwin";
    if (!isMac) GTEST_SKIP() << "this is no Mac";
  }
};

} // namespace vantle
