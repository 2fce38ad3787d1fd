// SPDX-License-Identifier: MIT
// What is called of UserNotifications, from its documentation.
#pragma once
#import <Foundation/Foundation.h>

typedef NSUInteger UNAuthorizationOptions;
enum { UNAuthorizationOptionAlert = 4 };

@class UNNotificationTrigger;

@interface UNNotificationContent : NSObject
@end
@interface UNMutableNotificationContent : UNNotificationContent
@property(copy) NSString* title;
@property(copy) NSString* body;
@end
@interface UNNotificationRequest : NSObject
+ (instancetype)requestWithIdentifier:(NSString*)identifier
                              content:(UNNotificationContent*)content
                              trigger:(UNNotificationTrigger*)trigger; // nil: at once
@end
@interface UNUserNotificationCenter : NSObject
+ (UNUserNotificationCenter*)currentNotificationCenter; // throws in a program without a known bundle
- (void)requestAuthorizationWithOptions:(UNAuthorizationOptions)options
                      completionHandler:(void (^)(BOOL granted, NSError* error))handler; // on any thread
- (void)addNotificationRequest:(UNNotificationRequest*)request
         withCompletionHandler:(void (^)(NSError* error))handler; // may be nil
@end
