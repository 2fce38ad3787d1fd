// SPDX-License-Identifier: MIT
// Notices and the login item: services that know a program by its bundle.
#include "platform/darwin/cocoa/OwnBundle.h"
#include "platform/darwin/login/ServiceLoginItem.h"
#include "platform/darwin/notices/CocoaNotifications.h"
#include "tests/unit/cocoa/CocoaFixture.h"

#include <gmock/gmock.h>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CocoaServices : public CocoaTest {
 protected:
  CocoaNotifications notifications;
  ServiceLoginItem loginItem;
};

TEST_F(CocoaServices, TheOwnBundleIsThatOfTheProgram) {
  EXPECT_EQ(ownBundleIdentifier(), "com.halvo.vantle");
  cocoa.ownBundle.reset();
  EXPECT_EQ(ownBundleIdentifier(), std::nullopt);
}

TEST_F(CocoaServices, PermissionIsAskedForAlertsOnly) {
  notifications.requestAuthorization();
  EXPECT_THAT(cocoa.notices, ElementsAre("authorize 4"));
}

TEST_F(CocoaServices, ANoticeHasTitleAndBodyAndIsForNow) {
  notifications.post("ram", "Memory is running low", "Using the most memory: Café \xF0\x9F\x8E\xAE.");
  notifications.post("ram", "Title", "malformed \xFF");
  EXPECT_THAT(cocoa.notices,
              ElementsAre("ram: Memory is running low: Using the most memory: Café \xF0\x9F\x8E\xAE.",
                          "ram: Title: malformed \xEF\xBF\xBD"));
}

TEST_F(CocoaServices, ANoticeIsShownThoughTheProgramIsInFront) {
  cocoa.isInFront = true;
  notifications.requestAuthorization();
  cocoa.notices.clear();
  notifications.post("ram", "Title", "Body");
  EXPECT_THAT(cocoa.notices, ElementsAre("ram: Title: Body"));
}

// The centre would end the program.
TEST_F(CocoaServices, WithoutABundleThereAreNoNotices) {
  cocoa.ownBundle.reset();
  notifications.requestAuthorization();
  notifications.post("ram", "Title", "Body");
  EXPECT_THAT(cocoa.notices, IsEmpty());
}

TEST_F(CocoaServices, WithoutABundleThatTheSystemKnowsThereAreNoNoticesUntilItDoes) {
  cocoa.bundleIsKnown = false;
  notifications.requestAuthorization();
  notifications.post("ram", "Title", "Body");
  EXPECT_THAT(cocoa.notices, IsEmpty());
  cocoa.bundleIsKnown = true;
  notifications.post("ram", "Title", "Body");
  EXPECT_THAT(cocoa.notices, ElementsAre("ram: Title: Body"));
}

TEST_F(CocoaServices, TheLoginItemIsOnOnlyWhenTheSystemSaysSo) {
  for (const long status : {0L, 2L, 3L, 4L, -1L}) {
    cocoa.loginStatus = status;
    EXPECT_FALSE(loginItem.isEnabled()) << status;
  }
  cocoa.loginStatus = 1;
  EXPECT_TRUE(loginItem.isEnabled());
  cocoa.ownBundle.reset();
  EXPECT_FALSE(loginItem.isEnabled()) << "there is nothing to open";
}

TEST_F(CocoaServices, TheLoginItemIsRegisteredAndUnregistered) {
  EXPECT_TRUE(loginItem.registerItem());
  EXPECT_TRUE(loginItem.isEnabled());
  EXPECT_TRUE(loginItem.unregisterItem());
  EXPECT_FALSE(loginItem.isEnabled());
  cocoa.loginIsRefused = true;
  EXPECT_FALSE(loginItem.registerItem());
  EXPECT_FALSE(loginItem.unregisterItem());
  cocoa.loginIsRefused = false;
  cocoa.ownBundle.reset();
  EXPECT_FALSE(loginItem.registerItem());
  EXPECT_FALSE(loginItem.unregisterItem());
}

} // namespace
} // namespace vantle
