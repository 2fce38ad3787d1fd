// SPDX-License-Identifier: MIT
#include "platform/darwin/notices/CocoaNotifications.h"

#import "platform/darwin/cocoa/Retained.h"
#import "platform/darwin/cocoa/Values.h"

#import <UserNotifications/UserNotifications.h>

namespace vantle {

namespace {

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
    [centre() requestAuthorizationWithOptions:UNAuthorizationOptionAlert
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
