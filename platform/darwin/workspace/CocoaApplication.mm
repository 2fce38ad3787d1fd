// SPDX-License-Identifier: MIT
#import "platform/darwin/workspace/CocoaApplication.h"

#import "platform/darwin/cocoa/Values.h"

namespace vantle {

CocoaApplication::CocoaApplication(NSRunningApplication* app)
    : m_app(app), m_pid([app processIdentifier]), m_bundleIdentifier(textOf([app bundleIdentifier])),
      m_name(textOf([app localizedName])), m_bundlePath(textOf([[app bundleURL] path])),
      m_executablePath(textOf([[app executableURL] path])) {}

bool CocoaApplication::standsFor(NSRunningApplication* app) const {
  return m_app.get() == app || [m_app.get() isEqual:app];
}

std::optional<std::string> CocoaApplication::bundleCategory() const {
  if (!m_bundlePath) return std::nullopt;
  @autoreleasepool {
    NSBundle* const bundle = [NSBundle bundleWithPath:stringOf(*m_bundlePath)];
    return textOf([bundle objectForInfoDictionaryKey:@"LSApplicationCategoryType"]);
  }
}

ActivationPolicy CocoaApplication::activationPolicy() const {
  switch ([m_app.get() activationPolicy]) {
  case NSApplicationActivationPolicyRegular:
    return ActivationPolicy::regular;
  case NSApplicationActivationPolicyAccessory:
    return ActivationPolicy::accessory;
  default:
    return ActivationPolicy::prohibited;
  }
}

bool CocoaApplication::isTerminated() const { return m_hasEnded || [m_app.get() isTerminated]; }

bool CocoaApplication::isActive() const { return !m_hasEnded && [m_app.get() isActive]; }

bool CocoaApplication::terminate() {
  @autoreleasepool {
    return !m_hasEnded && [m_app.get() terminate];
  }
}

bool CocoaApplication::canComeToFront() const {
  return !isTerminated() && activationPolicy() == ActivationPolicy::regular;
}

// Since macOS 14 nobody takes the front from an active program: that one hands it over, which is said before
// and to whom. Where it is not the active one, it can only ask.
bool CocoaApplication::bringToFront() {
  @autoreleasepool {
    if (!canComeToFront()) return false;
    NSRunningApplication* const app = m_app.get();
    [[NSApplication sharedApplication] yieldActivationToApplication:app];
    return [app activateFromApplication:[NSRunningApplication currentApplication]
                                options:NSApplicationActivateAllWindows] ||
           [app activateWithOptions:NSApplicationActivateAllWindows];
  }
}

} // namespace vantle
