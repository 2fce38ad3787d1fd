// SPDX-License-Identifier: MIT
#import "tests/simulation/darwin/SimulatedCocoa.h"

#include "base/Invariant.h"

#import <AppKit/AppKit.h>
#include <CoreGraphics/CoreGraphics.h>
#include <IOKit/pwr_mgt/IOPMLib.h>
#import <ServiceManagement/ServiceManagement.h>
#import <UserNotifications/UserNotifications.h>
#include <algorithm>
#include <optional>
#include <string>

NSString* const NSWorkspaceDidActivateApplicationNotification =
    @"NSWorkspaceDidActivateApplicationNotification";
NSString* const NSWorkspaceDidLaunchApplicationNotification = @"NSWorkspaceDidLaunchApplicationNotification";
NSString* const NSWorkspaceDidTerminateApplicationNotification =
    @"NSWorkspaceDidTerminateApplicationNotification";
NSString* const NSWorkspaceApplicationKey = @"NSWorkspaceApplicationKey";

namespace {

vantle::SimulatedCocoa* cocoa = nullptr;
int livingObjects = 0;

vantle::SimulatedWorkspace& workspace() { return cocoa->kernel.desktop.workspace; }

NSString* stringFor(const std::optional<std::string>& text) {
  return text ? [NSString stringWithUTF8String:text->c_str()] : nil;
}

NSURL* fileFor(const std::optional<std::string>& path) {
  return path ? [NSURL fileURLWithPath:stringFor(path)] : nil;
}

} // namespace

// An object of its own for every question, equal to all others of the same app.
@interface NSRunningApplication ()
+ (NSRunningApplication*)standingFor:(const vantle::AppRef&)app;
@end

@interface SimulatedRunningApplication : NSRunningApplication {
 @public
  vantle::SimulatedApp* app; // as the desktop has it
  std::shared_ptr<vantle::RunningApplication>* kept;
}
@end

@implementation NSRunningApplication
+ (NSRunningApplication*)standingFor:(const vantle::AppRef&)app {
  if (!app) return nil;
  SimulatedRunningApplication* const made = [[[SimulatedRunningApplication alloc] init] autorelease];
  made->kept = new std::shared_ptr<vantle::RunningApplication>(app);
  made->app = static_cast<vantle::SimulatedApp*>(app.get());
  ++livingObjects;
  return made;
}
+ (NSRunningApplication*)currentApplication {
  static NSRunningApplication* const own = [[NSRunningApplication alloc] init];
  return own;
}
+ (instancetype)runningApplicationWithProcessIdentifier:(pid_t)pid {
  return [self standingFor:workspace().runningApplication(pid)];
}
- (pid_t)processIdentifier {
  return -1;
}
- (NSString*)bundleIdentifier {
  return nil;
}
- (NSString*)localizedName {
  return nil;
}
- (NSURL*)bundleURL {
  return nil;
}
- (NSURL*)executableURL {
  return nil;
}
- (NSApplicationActivationPolicy)activationPolicy {
  return NSApplicationActivationPolicyProhibited;
}
- (BOOL)isTerminated {
  return YES;
}
- (BOOL)isActive {
  return NO;
}
- (BOOL)terminate {
  return NO;
}
- (BOOL)activateWithOptions:(NSApplicationActivationOptions)options {
  return options == 0;
}
- (BOOL)activateFromApplication:(NSRunningApplication*)application
                        options:(NSApplicationActivationOptions)options {
  return application == nil && options == 0;
}
@end

@implementation SimulatedRunningApplication
- (void)dealloc {
  delete kept;
  --livingObjects;
  [super dealloc];
}
- (BOOL)isEqual:(id)other {
  return [other isKindOfClass:[SimulatedRunningApplication class]] &&
         static_cast<SimulatedRunningApplication*>(other)->app == app;
}
- (NSUInteger)hash {
  return 1; // allowed for all of them
}
// Nothing says how much is left of an app that has ended.
- (pid_t)processIdentifier {
  const vantle::Pid pid = app->processIdentifier();
  return app->isTerminated() || cocoa->withoutPid.contains(pid) ? -1 : pid;
}
- (NSString*)bundleIdentifier {
  return app->isTerminated() ? nil : stringFor(app->bundleIdentifier());
}
- (NSString*)localizedName {
  return app->isTerminated() ? nil : stringFor(app->localizedName());
}
- (NSURL*)bundleURL {
  return app->isTerminated() ? nil : fileFor(app->bundlePath());
}
- (NSURL*)executableURL {
  return app->isTerminated() ? nil : fileFor(app->executablePath());
}
- (NSApplicationActivationPolicy)activationPolicy {
  switch (app->activationPolicy()) {
  case vantle::ActivationPolicy::regular:
    return NSApplicationActivationPolicyRegular;
  case vantle::ActivationPolicy::accessory:
    return NSApplicationActivationPolicyAccessory;
  default:
    return NSApplicationActivationPolicyProhibited;
  }
}
// Changes when the loop turns only, which is when the end is told.
- (BOOL)isTerminated {
  const auto& apps = workspace().apps();
  const bool isListed =
      std::any_of(apps.begin(), apps.end(), [&](const auto& one) { return one.get() == app; });
  return app->isTerminated() && !isListed;
}
- (BOOL)isActive {
  return app->isActive();
}
- (BOOL)terminate {
  return app->terminate();
}
// The front is the active program's own.
- (BOOL)activateWithOptions:(NSApplicationActivationOptions)options {
  return !cocoa->isInFront && options == NSApplicationActivateAllWindows && app->bringToFront();
}
- (BOOL)activateFromApplication:(NSRunningApplication*)application
                        options:(NSApplicationActivationOptions)options {
  const bool isHandedOver =
      application == [NSRunningApplication currentApplication] && cocoa->isInFront && cocoa->yieldedTo == app;
  if (!isHandedOver || options != NSApplicationActivateAllWindows) return NO;
  cocoa->isInFront = false;
  return app->bringToFront();
}
@end

@implementation NSApplication
+ (NSApplication*)sharedApplication {
  static NSApplication* const shared = [[NSApplication alloc] init];
  return shared;
}
- (void)yieldActivationToApplication:(NSRunningApplication*)application {
  cocoa->yieldedTo = static_cast<SimulatedRunningApplication*>(application)->app;
}
@end

@implementation NSWorkspace
+ (NSWorkspace*)sharedWorkspace {
  static NSWorkspace* const shared = [[NSWorkspace alloc] init];
  return shared;
}
- (NSNotificationCenter*)notificationCenter {
  static NSNotificationCenter* const own = [[NSNotificationCenter alloc] init];
  return own;
}
- (NSArray*)runningApplications {
  NSMutableArray* const all = [NSMutableArray array];
  for (const vantle::AppRef& app : workspace().runningApplications()) {
    [all addObject:[NSRunningApplication standingFor:app]];
  }
  return all;
}
- (NSRunningApplication*)frontmostApplication {
  return [NSRunningApplication standingFor:cocoa->frontmost()];
}
- (NSURL*)URLForApplicationWithBundleIdentifier:(NSString*)identifier {
  const auto found = cocoa->installed.find([identifier UTF8String]);
  return found == cocoa->installed.end() ? nil : fileFor(found->second);
}
@end

// Counts itself as long as anybody has it.
@interface SimulatedMarker : NSObject
@end
@implementation SimulatedMarker
- (instancetype)init {
  self = [super init];
  ++livingObjects;
  return self;
}
- (void)dealloc {
  --livingObjects;
  [super dealloc];
}
@end

// Answers what an app answers, and is none.
@interface SimulatedImpostor : NSObject
@end
@implementation SimulatedImpostor
- (pid_t)processIdentifier {
  return 300;
}
- (NSString*)bundleIdentifier {
  return nil;
}
- (NSString*)localizedName {
  return nil;
}
- (NSURL*)bundleURL {
  return nil;
}
- (NSURL*)executableURL {
  return nil;
}
- (BOOL)isTerminated {
  return NO;
}
@end

// Of the pool around it nothing is left when it returns.
IOReturn IOPMCopyAssertionsByProcess(CFDictionaryRef* assertions) {
  vantle::SimulatedCocoa& desktop = *cocoa;
  const std::lock_guard answering(desktop.powerManagement);
  @autoreleasepool {
    NSMutableDictionary* const all = [[NSMutableDictionary alloc] init];
    [all setObject:[[[SimulatedMarker alloc] init] autorelease] forKey:@"marker"];
    for (const auto& [pid, type] : desktop.kernel.desktop.power.assertions()) {
      NSNumber* const key = [NSNumber numberWithInt:pid];
      NSMutableArray* list = [all objectForKey:key];
      if (list == nil) [all setObject:list = [NSMutableArray array] forKey:key];
      if (desktop.assertionsAreOdd) {
        [list addObject:@"no dictionary"];
        [list addObject:[NSDictionary dictionaryWithObject:[NSNumber numberWithInt:7] forKey:@"AssertType"]];
        [list addObject:[NSDictionary dictionary]];
      }
      [list addObject:[NSDictionary dictionaryWithObjectsAndKeys:stringFor(type), @"AssertType",
                                                                 [NSNumber numberWithInt:255], @"AssertLevel",
                                                                 nil]];
    }
    if (desktop.assertionsAreOdd) {
      NSArray* const one = [NSArray arrayWithObject:[NSDictionary dictionaryWithObject:@"PreventSystemSleep"
                                                                                forKey:@"AssertType"]];
      [all setObject:one forKey:@"300"];
      for (const long long pid : {0LL, -1LL, 1LL << 40})
        [all setObject:one forKey:[NSNumber numberWithLongLong:pid]];
      [all setObject:@"no array" forKey:[NSNumber numberWithInt:301]];
    }
    const void* const plain = all;
    *assertions = desktop.hasAssertions ? static_cast<CFDictionaryRef>(plain) : nullptr;
    if (!desktop.hasAssertions) [all release];
    return desktop.powerStatus;
  }
}

// An activity is over when nobody keeps its object any more, but nobody is to leave it at that.
@interface SimulatedActivity : SimulatedMarker
@end
@implementation SimulatedActivity
- (void)dealloc {
  if (cocoa != nullptr && cocoa->activities.erase(self) != 0)
    cocoa->kernel.fault = "an activity was not ended";
  [super dealloc];
}
@end

#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"
@implementation NSProcessInfo (Simulated)
- (id)beginActivityWithOptions:(NSActivityOptions)options reason:(NSString*)reason {
  if ([reason length] == 0) cocoa->kernel.fault = "an activity for no reason";
  SimulatedActivity* const made = [[[SimulatedActivity alloc] init] autorelease];
  cocoa->activities[made] = options;
  return made;
}
- (void)endActivity:(id<NSObject>)activity {
  if (cocoa->activities.erase(activity) == 0) cocoa->kernel.fault = "ended what is no activity";
}
@end
#pragma clang diagnostic pop

CFDictionaryRef CGSessionCopyCurrentDictionary() {
  if (!cocoa->hasWindowServer) return nullptr;
  @autoreleasepool {
    const void* const plain = [[NSDictionary alloc]
        initWithObjectsAndKeys:[[[SimulatedMarker alloc] init] autorelease], @"marker", nil];
    return static_cast<CFDictionaryRef>(plain);
  }
}

// The program's own bundle; all others are what they are.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"
@implementation NSBundle (Simulated)
- (NSString*)bundleIdentifier {
  if (self == [NSBundle mainBundle]) return cocoa != nullptr ? stringFor(cocoa->ownBundle) : nil;
  return [[self infoDictionary] objectForKey:@"CFBundleIdentifier"];
}
@end
#pragma clang diagnostic pop

namespace {

struct Words {
  std::string title;
  std::string body;
};
std::map<const void*, Words> contents; // the class is declared without a place for them

} // namespace

@implementation UNNotificationContent
@end
@implementation UNMutableNotificationContent
- (instancetype)init {
  self = [super init];
  contents[self];
  return self;
}
- (void)dealloc {
  contents.erase(self);
  [super dealloc];
}
- (NSString*)title {
  return stringFor(contents[self].title);
}
- (NSString*)body {
  return stringFor(contents[self].body);
}
- (void)setTitle:(NSString*)title {
  contents[self].title = [title UTF8String];
}
- (void)setBody:(NSString*)body {
  contents[self].body = [body UTF8String];
}
@end

@interface SimulatedRequest : UNNotificationRequest {
 @public
  std::string* words;
}
@end
@implementation UNNotificationRequest
+ (instancetype)requestWithIdentifier:(NSString*)identifier
                              content:(UNNotificationContent*)content
                              trigger:(UNNotificationTrigger*)trigger {
  UNMutableNotificationContent* const text = static_cast<UNMutableNotificationContent*>(content);
  SimulatedRequest* const made = [[[SimulatedRequest alloc] init] autorelease];
  made->words = new std::string(std::string([identifier UTF8String]) + ": " + [[text title] UTF8String] +
                                ": " + [[text body] UTF8String] + (trigger == nil ? "" : ", later"));
  ++livingObjects;
  return made;
}
@end
@implementation SimulatedRequest
- (void)dealloc {
  delete words;
  --livingObjects;
  [super dealloc];
}
@end

namespace {

id<UNUserNotificationCenterDelegate> delegateForNotices = nil; // not kept

bool isShownInFront(UNUserNotificationCenter* centre) {
  __block UNNotificationPresentationOptions wanted = 0;
  [delegateForNotices userNotificationCenter:centre
                     willPresentNotification:nil
                       withCompletionHandler:^(UNNotificationPresentationOptions options) {
                         wanted = options;
                       }];
  return (wanted & UNNotificationPresentationOptionBanner) != 0;
}

} // namespace

@implementation UNUserNotificationCenter
+ (UNUserNotificationCenter*)currentNotificationCenter {
  if (!cocoa->ownBundle || !cocoa->bundleIsKnown) {
    [NSException raise:NSInternalInconsistencyException format:@"bundleProxyForCurrentProcess is nil"];
  }
  static UNUserNotificationCenter* const shared = [[UNUserNotificationCenter alloc] init];
  return shared;
}
- (id<UNUserNotificationCenterDelegate>)delegate {
  return delegateForNotices;
}
- (void)setDelegate:(id<UNUserNotificationCenterDelegate>)delegate {
  delegateForNotices = delegate;
}
- (void)requestAuthorizationWithOptions:(UNAuthorizationOptions)options
                      completionHandler:(void (^)(BOOL granted, NSError* error))handler {
  cocoa->notices.push_back("authorize " + std::to_string(options));
  handler(NO, nil); // which has to be there
}
- (void)addNotificationRequest:(UNNotificationRequest*)request
         withCompletionHandler:(void (^)(NSError* error))handler {
  const bool isShown = !cocoa->isInFront || isShownInFront(self);
  cocoa->notices.push_back(*static_cast<SimulatedRequest*>(request)->words + (isShown ? "" : ", not shown"));
  if (handler != nil) handler(nil);
}
@end

@implementation SMAppService
+ (SMAppService*)mainAppService {
  static SMAppService* const shared = [[SMAppService alloc] init];
  return shared;
}
- (SMAppServiceStatus)status {
  return cocoa->loginStatus;
}
- (BOOL)registerAndReturnError:(NSError**)error {
  return [self setStatus:SMAppServiceStatusEnabled error:error];
}
- (BOOL)unregisterAndReturnError:(NSError**)error {
  return [self setStatus:SMAppServiceStatusNotRegistered error:error];
}
- (BOOL)setStatus:(SMAppServiceStatus)status error:(NSError**)error {
  if (cocoa->loginIsRefused) {
    *error = [NSError errorWithDomain:@"SMAppServiceErrorDomain" code:1 userInfo:nil];
    return NO;
  }
  cocoa->loginStatus = status;
  return YES;
}
@end

namespace vantle {

namespace {

void post(NSString* name, id app) {
  NSDictionary* const about =
      app != nil ? [NSDictionary dictionaryWithObject:app forKey:NSWorkspaceApplicationKey] : nil;
  [[[NSWorkspace sharedWorkspace] notificationCenter] postNotificationName:name object:nil userInfo:about];
}

NSString* nameOf(WorkspaceEvent event) {
  switch (event) {
  case WorkspaceEvent::activated:
    return NSWorkspaceDidActivateApplicationNotification;
  case WorkspaceEvent::launched:
    return NSWorkspaceDidLaunchApplicationNotification;
  case WorkspaceEvent::terminated:
    break;
  }
  return NSWorkspaceDidTerminateApplicationNotification;
}

} // namespace

ReleasePool::ReleasePool() : m_pool([[NSAutoreleasePool alloc] init]) {}

ReleasePool::~ReleasePool() { [static_cast<NSAutoreleasePool*>(m_pool) drain]; }

SimulatedCocoa::SimulatedCocoa(SimulatedKernel& onKernel) : kernel(onKernel) {
  invariant(cocoa == nullptr, "two simulated desktops");
  cocoa = this;
  delegateForNotices = nil;
  for (const auto event : {WorkspaceEvent::activated, WorkspaceEvent::launched, WorkspaceEvent::terminated}) {
    m_registrations.push_back(
        workspace().observe(event, [this, event](const AppRef& app) { tell(event, app); }));
  }
}

SimulatedCocoa::~SimulatedCocoa() { cocoa = nullptr; }

int SimulatedCocoa::objects() { return livingObjects + static_cast<int>(contents.size()); }

AppRef SimulatedCocoa::frontmost() const {
  const auto& listed = workspace().apps();
  const bool isListed = std::find(listed.begin(), listed.end(), m_lastFront) != listed.end();
  if (isListed && m_lastFront->isTerminated()) return m_lastFront;
  return workspace().frontmostApplication();
}

void SimulatedCocoa::tell(WorkspaceEvent event, const AppRef& app) {
  if (event == WorkspaceEvent::activated) m_lastFront = app;
  @autoreleasepool {
    const bool isEnd = event == WorkspaceEvent::terminated;
    if (isEnd && exitsAreFirst) kernel.tellOfExits();
    const bool isWithDockIcon = app->activationPolicy() == ActivationPolicy::regular;
    const bool isTold = event == WorkspaceEvent::activated || (isWithDockIcon && (endsAreTold || !isEnd));
    if (isTold) post(nameOf(event), [NSRunningApplication standingFor:app]);
    if (isEnd) kernel.tellOfExits();
  }
}

void SimulatedCocoa::postActivationOfNobody() {
  @autoreleasepool {
    post(NSWorkspaceDidActivateApplicationNotification, nil);
  }
}

void SimulatedCocoa::postActivationOfSomethingElse() {
  @autoreleasepool {
    post(NSWorkspaceDidActivateApplicationNotification, [[[SimulatedImpostor alloc] init] autorelease]);
  }
}

} // namespace vantle
