// SPDX-License-Identifier: MIT
// As Contract.cpp, of what is called in Objective-C.
#import <AppKit/AppKit.h>
#include <CoreGraphics/CoreGraphics.h>
#include <IOKit/pwr_mgt/IOPMLib.h>
#import <ServiceManagement/ServiceManagement.h>
#import <UserNotifications/UserNotifications.h>
#include <type_traits>
#include <utility>

namespace vantle {

namespace {

template <class Expected, class Found> constexpr bool isA = std::is_convertible_v<Found, Expected>;

template <class Class> Class* some();

static_assert(sizeof(NSInteger) == 8 && sizeof(NSUInteger) == 8 && sizeof(BOOL) == 1);
static_assert(sizeof(unichar) == 2);

// Apps.
static_assert(NSApplicationActivationPolicyRegular == 0);
static_assert(NSApplicationActivationPolicyAccessory == 1);
static_assert(NSApplicationActivationPolicyProhibited == 2);
static_assert(NSApplicationActivateAllWindows == 1);
using App = NSRunningApplication;
static_assert(std::is_same_v<decltype([some<App>() processIdentifier]), int>);
static_assert(isA<NSString*, decltype([some<App>() bundleIdentifier])>);
static_assert(isA<NSString*, decltype([some<App>() localizedName])>);
static_assert(isA<NSURL*, decltype([some<App>() bundleURL])>);
static_assert(isA<NSURL*, decltype([some<App>() executableURL])>);
static_assert(isA<NSInteger, decltype([some<App>() activationPolicy])>);
static_assert(std::is_same_v<decltype([some<App>() isTerminated]), BOOL>);
static_assert(std::is_same_v<decltype([some<App>() isActive]), BOOL>);
static_assert(std::is_same_v<decltype([some<App>() terminate]), BOOL>);
static_assert(
    std::is_same_v<decltype([some<App>() activateWithOptions:NSApplicationActivateAllWindows]), BOOL>);
static_assert(isA<App*, decltype([App currentApplication])>);
static_assert(std::is_same_v<decltype([some<App>() activateFromApplication:some<App>() options:0]), BOOL>);
static_assert(
    std::is_void_v<decltype([[NSApplication sharedApplication] yieldActivationToApplication:some<App>()])>);
static_assert(isA<App*, decltype([App runningApplicationWithProcessIdentifier:int()])>);
static_assert(isA<NSArray*, decltype([some<NSWorkspace>() runningApplications])>);
static_assert(isA<App*, decltype([some<NSWorkspace>() frontmostApplication])>);
static_assert(isA<NSNotificationCenter*, decltype([some<NSWorkspace>() notificationCenter])>);
static_assert(isA<NSURL*, decltype([some<NSWorkspace>() URLForApplicationWithBundleIdentifier:@""])>);
static_assert(isA<NSString*, decltype(NSWorkspaceApplicationKey)>);
static_assert(isA<NSString*, decltype(NSWorkspaceDidActivateApplicationNotification)>);
static_assert(isA<NSString*, decltype(NSWorkspaceDidLaunchApplicationNotification)>);
static_assert(isA<NSString*, decltype(NSWorkspaceDidTerminateApplicationNotification)>);

// Who keeps the machine awake, and whether there are windows.
static_assert(std::is_invocable_r_v<CFDictionaryRef, decltype(::CGSessionCopyCurrentDictionary)>);
static_assert(std::is_same_v<IOReturn, int>);
static_assert(std::is_invocable_r_v<IOReturn, decltype(::IOPMCopyAssertionsByProcess), CFDictionaryRef*>);

static_assert(NSActivityUserInitiatedAllowingIdleSystemSleep == 0xEFFFFF);
static_assert(isA<id, decltype([some<NSProcessInfo>()
                          beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                                            reason:@""])>);
static_assert(std::is_void_v<decltype([some<NSProcessInfo>() endActivity:id()])>);

// Choices and folders.
static_assert(NSAllApplicationsDirectory == 100);
static_assert(NSApplicationSupportDirectory == 14);
static_assert(NSUserDomainMask == 1);
static_assert(NSAllDomainsMask == 0x0ffff);
static_assert(isA<NSDictionary*, decltype([some<NSUserDefaults>() persistentDomainForName:@""])>);
static_assert(std::is_same_v<decltype([some<NSNumber>() doubleValue]), double>);
static_assert(std::is_same_v<decltype([some<NSNumber>() longLongValue]), long long>);
static_assert(std::is_same_v<decltype([some<NSDate>() timeIntervalSince1970]), double>);

// Notices and the login item.
static_assert(UNAuthorizationOptionAlert == 4);
static_assert(UNNotificationPresentationOptionList == 8);
static_assert(UNNotificationPresentationOptionBanner == 16);
static_assert(SMAppServiceStatusEnabled == 1);
static_assert(isA<NSInteger, decltype([some<SMAppService>() status])>);
static_assert(std::is_same_v<decltype([some<SMAppService>() registerAndReturnError:nullptr]), BOOL>);
static_assert(std::is_same_v<decltype([some<SMAppService>() unregisterAndReturnError:nullptr]), BOOL>);

} // namespace

} // namespace vantle
