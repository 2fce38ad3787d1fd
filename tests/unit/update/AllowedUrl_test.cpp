// SPDX-License-Identifier: MIT
#include "update/AllowedUrl.h"

#include <gtest/gtest.h>

namespace vantle {

namespace {

struct Case {
  const char* address;
  bool allowed;
};

class AllowedUrl : public testing::TestWithParam<Case> {};

TEST_P(AllowedUrl, IsOnTheVendorsHost) {
  EXPECT_EQ(isAllowedUrl(GetParam().address, "vantle.example"), GetParam().allowed) << GetParam().address;
}

INSTANTIATE_TEST_SUITE_P(Allowed, AllowedUrl,
                         testing::Values(Case{"https://vantle.example", true},
                                         Case{"https://vantle.example/", true},
                                         Case{"https://vantle.example/a?b=c#d", true},
                                         Case{"https://VANTLE.Example/get", true},
                                         Case{"https://vantle.example:8443/get", true}));

INSTANTIATE_TEST_SUITE_P(OtherScheme, AllowedUrl,
                         testing::Values(Case{"http://vantle.example/", false},
                                         Case{"HTTPS://vantle.example/", false},
                                         Case{"Https://vantle.example/", false},
                                         Case{"file:///vantle.example", false},
                                         Case{"javascript:alert(1)//https://vantle.example/", false},
                                         Case{" https://vantle.example/", false},
                                         Case{"//vantle.example/", false}, Case{"vantle.example", false}));

INSTANTIATE_TEST_SUITE_P(OtherHost, AllowedUrl,
                         testing::Values(Case{"https://www.vantle.example/", false},
                                         Case{"https://vantle.example.org/", false},
                                         Case{"https://vantle.example./", false},
                                         Case{"https://evil.example/vantle.example", false},
                                         Case{"https://vantle.example@evil.example/", false},
                                         Case{"https://evil.example#@vantle.example/", false},
                                         Case{"https://evil.example\\@vantle.example/", false},
                                         Case{"https://vantle%2eexample/", false},
                                         Case{"https://ｖantle.example/", false}, Case{"https:///get", false},
                                         Case{"https://", false}, Case{"https:vantle.example", false}));

INSTANTIATE_TEST_SUITE_P(NoAddress, AllowedUrl,
                         testing::Values(Case{"", false}, Case{"https://vantle.example/a b", false},
                                         Case{"https://vantle.example:port/", false},
                                         Case{"https://vantle.example/\xff\xfe%", false},
                                         Case{"https://[vantle.example/", false}));

TEST(AllowedUrlWithoutAVendor, IsNone) {
  EXPECT_FALSE(isAllowedUrl("https://vantle.example/", ""));
  EXPECT_FALSE(isAllowedUrl("https:///", ""));
}

} // namespace

} // namespace vantle
