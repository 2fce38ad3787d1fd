// SPDX-License-Identifier: MIT
#include "platform/posix/process/DescriptorLimit.h"

#include "tests/support/InChild.h"

#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>

namespace vantle {
namespace {

std::string limits() {
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  return std::to_string(limit.rlim_cur) + " of " + std::to_string(limit.rlim_max);
}

TEST(DescriptorLimit, IsRaisedForThisProcessAlone) {
  const std::string wrong = test::inChild([]() -> std::string {
    const rlimit low{100, 200};
    ::setrlimit(RLIMIT_NOFILE, &low);
    raiseDescriptorLimit();
    if (limits() != "200 of 200") return "it has " + limits();
    return test::inChild(
        []() -> std::string { return limits() == "100 of 200" ? "" : "what it starts has " + limits(); });
  });
  EXPECT_EQ(wrong, "");
}

TEST(DescriptorLimit, ThatCannotBeRaisedStaysAsItIs) {
  const std::string wrong = test::inChild([]() -> std::string {
    const rlimit low{200, 200};
    ::setrlimit(RLIMIT_NOFILE, &low);
    raiseDescriptorLimit();
    if (limits() != "200 of 200") return "it has " + limits();
    return test::inChild([]() -> std::string { return limits() == "200 of 200" ? "" : limits(); });
  });
  EXPECT_EQ(wrong, "");
}

} // namespace
} // namespace vantle
