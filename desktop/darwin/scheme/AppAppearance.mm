// SPDX-License-Identifier: MIT
#import "desktop/darwin/scheme/AppAppearance.h"

// Hears of the appearance that the program is drawn in.
@interface VantleAppearanceWatcher : NSObject {
 @public
  vantle::Observers<>* observers;
}
@end

@implementation VantleAppearanceWatcher
- (void)observeValueForKeyPath:(NSString*)path
                      ofObject:(id)object
                        change:(NSDictionary*)change
                       context:(void*)context {
  (void)path, (void)object, (void)change, (void)context;
  observers->notify();
}
@end

namespace vantle {

namespace {

NSString* const path = @"effectiveAppearance";

NSApplication* app() { return [NSApplication sharedApplication]; }

} // namespace

AppAppearance::AppAppearance()
    : m_watcher(Retained<VantleAppearanceWatcher>::taking([[VantleAppearanceWatcher alloc] init])) {
  m_watcher.get()->observers = &m_observers;
  [app() addObserver:m_watcher.get() forKeyPath:path options:0 context:nullptr];
}

AppAppearance::~AppAppearance() { [app() removeObserver:m_watcher.get() forKeyPath:path]; }

// There are more than two, such as those of high contrast.
bool AppAppearance::isDark() const {
  @autoreleasepool {
    NSArray* const known = [NSArray arrayWithObjects:NSAppearanceNameAqua, NSAppearanceNameDarkAqua, nil];
    NSString* const best = [[app() effectiveAppearance] bestMatchFromAppearancesWithNames:known];
    return [best isEqual:NSAppearanceNameDarkAqua];
  }
}

std::unique_ptr<Registration> AppAppearance::observe(std::function<void()> changed) {
  return m_observers.add(std::move(changed));
}

void AppAppearance::draw(std::optional<bool> dark) {
  if (dark == m_drawn) return;
  m_drawn = dark; // first: the change is told of at once
  @autoreleasepool {
    NSAppearance* wanted = nil;
    if (dark) {
      wanted = [NSAppearance appearanceNamed:*dark ? NSAppearanceNameDarkAqua : NSAppearanceNameAqua];
    }
    [app() setAppearance:wanted];
  }
}

} // namespace vantle
