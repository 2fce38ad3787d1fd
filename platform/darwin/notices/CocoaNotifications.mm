// SPDX-License-Identifier: MIT
#include "platform/darwin/notices/CocoaNotifications.h"

#import "platform/darwin/cocoa/Retained.h"
#import "platform/darwin/cocoa/Values.h"

#import <UserNotifications/UserNotifications.h>

// While the program is in front itself, its notices are shown only when somebody says so.
@interface VantleNoticesInFront : NSObject <UNUserNotificationCenterDelegate>
@end

@implementation VantleNoticesInFront
- (void)userNotificationCenter:(UNUserNotificationCenter*)center
       willPresentNotification:(UNNotification*)notification
         withCompletionHandler:(void (^)(UNNotificationPresentationOptions options))handler {
  (void)center;
  (void)notification;
  handler(UNNotificationPresentationOptionBanner | UNNotificationPresentationOptionList);
}
@end

namespace vantle {

namespace {

// To the end of the program: the centre keeps nobody, and may ask from any thread.
VantleNoticesInFront* noticesInFront() {
  static VantleNoticesInFront* const shared = [[VantleNoticesInFront alloc] init];
  return shared;
}

// Nil when it throws, which would end the program: without a bundle, but also in one that the system has not
// looked at yet, as when its program is started by its path right after it was built or copied.
UNUserNotificationCenter* centre() {
  @try {
    return [UNUserNotificationCenter currentNotificationCenter];
  } @catch (NSException*) {
    return nil;
  }
}

} // namespace

void CocoaNotifications::requestAuthorization() {
  @autoreleasepool {
    UNUserNotificationCenter* const asked = centre();
    [asked setDelegate:noticesInFront()];
    [asked requestAuthorizationWithOptions:UNAuthorizationOptionAlert
                         completionHandler:^(BOOL /*granted*/, NSError* /*error*/){
                             // The system drops the notices of who has no permission.
                         }];
  }
}

void CocoaNotifications::post(const std::string& identifier, const std::string& title,
                              const std::string& body) {
  @autoreleasepool {
    const auto content =
        Retained<UNMutableNotificationContent>::taking([[UNMutableNotificationContent alloc] init]);
    [content.get() setTitle:stringOf(title)];
    [content.get() setBody:stringOf(body)];
    UNNotificationRequest* const request = [UNNotificationRequest requestWithIdentifier:stringOf(identifier)
                                                                                content:content.get()
                                                                                trigger:nil];
    [centre() addNotificationRequest:request withCompletionHandler:nil];
  }
}

} // namespace vantle
