// SPDX-License-Identifier: MIT
// What is called of AppKit, from the documentation of NSWorkspace, NSRunningApplication and NSApplication.
#pragma once
#import <Foundation/Foundation.h>
#include <sys/types.h>

typedef NSInteger NSApplicationActivationPolicy;
enum {
  NSApplicationActivationPolicyRegular = 0,
  NSApplicationActivationPolicyAccessory = 1,
  NSApplicationActivationPolicyProhibited = 2
};
typedef NSUInteger NSApplicationActivationOptions;
enum { NSApplicationActivateAllWindows = 1 };

@interface NSRunningApplication : NSObject
+ (instancetype)runningApplicationWithProcessIdentifier:(pid_t)pid; // nil when there is none
@property(readonly) pid_t processIdentifier;                        // -1 for an app without one
@property(readonly, copy) NSString* bundleIdentifier;
@property(readonly, copy) NSString* localizedName;
@property(readonly, copy) NSURL* bundleURL;
@property(readonly, copy) NSURL* executableURL;
@property(readonly) NSApplicationActivationPolicy activationPolicy;
@property(readonly, getter=isTerminated) BOOL terminated;
@property(readonly, getter=isActive) BOOL active;
- (BOOL)terminate;
@property(class, readonly, strong) NSRunningApplication* currentApplication; // this program
- (BOOL)activateWithOptions:(NSApplicationActivationOptions)options;
- (BOOL)activateFromApplication:(NSRunningApplication*)application // which has yielded before
                        options:(NSApplicationActivationOptions)options;
@end

@interface NSApplication : NSObject
@property(class, readonly, strong) NSApplication* sharedApplication;
- (void)yieldActivationToApplication:(NSRunningApplication*)application;
@end

@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
@property(readonly, strong) NSNotificationCenter* notificationCenter; // not the program's default one
@property(readonly, copy) NSArray* runningApplications;
@property(readonly, strong) NSRunningApplication* frontmostApplication;
- (NSURL*)URLForApplicationWithBundleIdentifier:(NSString*)identifier;
@end

FOUNDATION_EXPORT NSString* const NSWorkspaceDidActivateApplicationNotification;
FOUNDATION_EXPORT NSString* const NSWorkspaceDidLaunchApplicationNotification;
FOUNDATION_EXPORT NSString* const NSWorkspaceDidTerminateApplicationNotification;
FOUNDATION_EXPORT NSString* const NSWorkspaceApplicationKey;

#import <AppKit/Windows.h>
