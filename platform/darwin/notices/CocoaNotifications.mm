// SPDX-License-Identifier: MIT
#include "platform/darwin/notices/CocoaNotifications.h"

#include "platform/darwin/cocoa/OwnBundle.h"
#import "platform/darwin/cocoa/Retained.h"
#import "platform/darwin/cocoa/Values.h"

#import <UserNotifications/UserNotifications.h>

namespace vantle {

namespace {

// Nil without a bundle.
UNUserNotificationCenter* centre() {
  return ownBundleIdentifier() ? [UNUserNotificationCenter currentNotificationCenter] : nil;
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
