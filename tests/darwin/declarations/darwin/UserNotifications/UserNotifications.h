// SPDX-License-Identifier: MIT
// What is called of UserNotifications, from its documentation.
#pragma once
#import <Foundation/Foundation.h>

typedef NSUInteger UNAuthorizationOptions;
enum { UNAuthorizationOptionAlert = 4 };

typedef NSUInteger UNNotificationPresentationOptions;
enum { UNNotificationPresentationOptionList = 1 << 3, UNNotificationPresentationOptionBanner = 1 << 4 };

@class UNNotification, UNNotificationTrigger, UNUserNotificationCenter;

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
@protocol UNUserNotificationCenterDelegate
@optional
- (void)userNotificationCenter:(UNUserNotificationCenter*)center
       willPresentNotification:(UNNotification*)notification
         withCompletionHandler:(void (^)(UNNotificationPresentationOptions options))handler; // to be called
@end
@interface UNUserNotificationCenter : NSObject
@property(assign) id<UNUserNotificationCenterDelegate>
    delegate;                                           // not kept; set before the program has started
+ (UNUserNotificationCenter*)currentNotificationCenter; // throws in a program without a known bundle
- (void)requestAuthorizationWithOptions:(UNAuthorizationOptions)options
                      completionHandler:(void (^)(BOOL granted, NSError* error))handler; // on any thread
- (void)addNotificationRequest:(UNNotificationRequest*)request
         withCompletionHandler:(void (^)(NSError* error))handler; // may be nil
@end
