// SPDX-License-Identifier: MIT
#import "tests/unit/mac/StandInAppKit.h"

#include "base/Invariant.h"
#import "desktop/darwin/window/NativeWindow.h"
#import "platform/darwin/cocoa/Retained.h"
#import "platform/darwin/cocoa/Values.h"

#import <UniformTypeIdentifiers/UniformTypeIdentifiers.h>
#include <algorithm>
#include <malloc/malloc.h>
#include <map>
#include <sstream>
#include <utility>

// Of the runtime of blocks, whose objects are none of the other one's.
extern "C" void* _Block_copy(const void* block);
extern "C" void _Block_release(const void* block);

namespace {

vantle::StandInAppKit* appKit = nullptr;

// What objects hold: the classes are declared without a place for it.
struct Held {
  std::map<std::string, vantle::Retained<NSObject>> objects;
  std::map<std::string, id> others; // not retained
  std::map<std::string, long long> numbers;
  SEL action = nullptr;
  unsigned char* plane = nullptr;
};
auto& held = *new std::map<const void*, Held>; // to the end: objects of the program's own are never gone

Held& of(id object) { return held[object]; }
id objectOf(id object, const char* name) { return of(object).objects[name].get(); }
void setObject(id object, const char* name, id value) {
  of(object).objects[name] = vantle::Retained<NSObject>(value);
}

std::vector<NSStatusItem*> items; // the bar keeps none of them
std::vector<std::pair<vantle::Retained<NSObject>, void (^)(NSEvent*)>> monitors;
bool isInMonitor = false;
std::vector<NSGraphicsContext*> contexts;
NSGraphicsContext* currentContext = nil;
std::map<std::pair<AEEventClass, AEEventID>, std::pair<id, SEL>> handlers;
NSEvent* currentEvent = nil;
std::map<const void*, vantle::Retained<NSWindow>> windows;

std::string textFor(id text) { return vantle::textOf(text).value_or("nil"); }

void note(const std::string& call) { appKit->calls.push_back(call); }

} // namespace

NSAppearanceName const NSAppearanceNameAqua = @"NSAppearanceNameAqua";
NSAppearanceName const NSAppearanceNameDarkAqua = @"NSAppearanceNameDarkAqua";
NSColorSpaceName const NSDeviceRGBColorSpace = @"NSDeviceRGBColorSpace";

@implementation UTType
@end
extern "C" void setApplicationBundleType(void* type);

size_t malloc_zone_pressure_relief(malloc_zone_t* zone, size_t goal) {
  if (zone == nullptr && goal == 0) ++appKit->reliefs;
  return 0;
}

#define FORGETS                                                                                              \
  -(void)dealloc {                                                                                           \
    held.extract(self);                                                                                      \
    [super dealloc];                                                                                         \
  }
#define OBJECT(type, name, setter)                                                                           \
  -(type)name {                                                                                              \
    return static_cast<type>(objectOf(self, #name));                                                         \
  }                                                                                                          \
  -(void)setter : (type)value {                                                                              \
    setObject(self, #name, value);                                                                           \
  }
#define NUMBER(type, name, setter)                                                                           \
  -(type)name {                                                                                              \
    return static_cast<type>(of(self).numbers[#name]);                                                       \
  }                                                                                                          \
  -(void)setter : (type)value {                                                                              \
    of(self).numbers[#name] = static_cast<long long>(value);                                                 \
  }
#define UNRETAINED(type, name, setter)                                                                       \
  -(type)name {                                                                                              \
    return of(self).others[#name];                                                                           \
  }                                                                                                          \
  -(void)setter : (type)value {                                                                              \
    of(self).others[#name] = value;                                                                          \
  }

@implementation NSAppearance
+ (NSAppearance*)appearanceNamed:(NSAppearanceName)name {
  NSAppearance* const made = [[[NSAppearance alloc] init] autorelease];
  setObject(made, "name", name);
  return made;
}
// The nearest of them, as for one of high contrast.
- (NSAppearanceName)bestMatchFromAppearancesWithNames:(NSArray*)names {
  const bool isDark = textFor(objectOf(self, "name")).find("Dark") != std::string::npos;
  NSString* const wanted = isDark ? NSAppearanceNameDarkAqua : NSAppearanceNameAqua;
  for (id name in names) {
    if ([name isEqual:wanted]) return name;
  }
  return nil;
}
FORGETS
@end

@implementation NSApplication (Windows)
- (NSArray*)windows {
  return [NSArray array];
}
- (BOOL)isActive {
  return appKit->isActive;
}
- (BOOL)isHidden {
  return appKit->isHidden;
}
- (NSEvent*)currentEvent {
  return currentEvent;
}
- (NSAppearance*)appearance {
  return objectOf(self, "appearance");
}
- (void)setAppearance:(NSAppearance*)appearance {
  note("appearance " + textFor(objectOf(appearance, "name")));
  [self willChangeValueForKey:@"effectiveAppearance"];
  setObject(self, "appearance", appearance);
  [self didChangeValueForKey:@"effectiveAppearance"];
}
- (NSAppearance*)effectiveAppearance {
  id const own = objectOf(self, "appearance");
  return own != nil ? own : objectOf(self, "system's");
}
- (void)activateIgnoringOtherApps:(BOOL)ignoring {
  note(ignoring ? "activate" : "activate if allowed");
  appKit->isActive = true;
}
- (void)hide:(id)sender {
  (void)sender;
  note("hide");
  appKit->isActive = false;
  appKit->isHidden = true;
}
- (void)unhideWithoutActivation {
  note("unhide");
  appKit->isHidden = false;
}
+ (BOOL)automaticallyNotifiesObserversForKey:(NSString*)key {
  (void)key;
  return NO;
}
@end

@implementation NSEvent
NUMBER(NSEventType, type, setType)
NUMBER(NSEventModifierFlags, modifierFlags, setModifierFlags)
+ (id)addGlobalMonitorForEventsMatchingMask:(NSEventMask)mask handler:(void (^)(NSEvent*))handler {
  NSObject* const monitor = [[[NSObject alloc] init] autorelease];
  of(monitor).numbers["mask"] = static_cast<long long>(mask);
  monitors.emplace_back(vantle::Retained<NSObject>(monitor), reinterpret_cast<void (^)(NSEvent*)>(_Block_copy(
                                                                 reinterpret_cast<const void*>(handler))));
  return monitor;
}
+ (void)removeMonitor:(id)monitor {
  if (isInMonitor) note("removed within its own call");
  const auto found = std::find_if(monitors.begin(), monitors.end(),
                                  [&](const auto& each) { return each.first.get() == monitor; });
  if (found == monitors.end()) return note("removed what is no monitor");
  held.extract(monitor);
  _Block_release(reinterpret_cast<const void*>(found->second));
  monitors.erase(found);
}
FORGETS
@end

@implementation NSScreen
+ (NSArray*)screens {
  NSMutableArray* const all = [NSMutableArray array];
  for (std::size_t at = 0; at < appKit->screens.size(); ++at) {
    NSScreen* const screen = [[[NSScreen alloc] init] autorelease];
    of(screen).numbers["at"] = static_cast<long long>(at);
    [all addObject:screen];
  }
  return all;
}
- (NSRect)frame {
  return appKit->screens[static_cast<std::size_t>(of(self).numbers["at"])];
}
FORGETS
@end

@implementation NSWindow
OBJECT(NSView*, contentView, setContentView)
NUMBER(NSWindowLevel, level, setLevel)
NUMBER(NSWindowCollectionBehavior, collectionBehavior, setCollectionBehavior)
NUMBER(BOOL, hidesOnDeactivate, setHidesOnDeactivate)
- (NSRect)convertRectToScreen:(NSRect)rect {
  return NSMakeRect(rect.origin.x + appKit->buttonWindow.x, rect.origin.y + appKit->buttonWindow.y,
                    rect.size.width, rect.size.height);
}
FORGETS
@end

@implementation NSView
OBJECT(NSArray*, subviews, setSubviews)
- (NSWindow*)window {
  if (!appKit->buttonHasWindow) return nil;
  if (objectOf(self, "window") == nil) setObject(self, "window", [[[NSWindow alloc] init] autorelease]);
  return objectOf(self, "window");
}
- (NSRect)bounds {
  return NSMakeRect(0, 0, appKit->button.size.width, appKit->button.size.height);
}
- (void)setBounds:(NSRect)bounds {
  (void)bounds;
}
- (NSRect)convertRect:(NSRect)rect toView:(NSView*)view {
  if (view != nil) note("converted to another view");
  return NSMakeRect(rect.origin.x + appKit->button.origin.x, rect.origin.y + appKit->button.origin.y,
                    rect.size.width, rect.size.height);
}
FORGETS
@end

@implementation NSStatusBarButton
OBJECT(NSString*, title, setTitle)
OBJECT(NSImage*, image, setImage)
OBJECT(NSString*, toolTip, setToolTip)
UNRETAINED(id, target, setTarget)
- (SEL)action {
  return of(self).action;
}
- (void)setAction:(SEL)action {
  of(self).action = action;
}
- (NSInteger)sendActionOn:(NSEventMask)mask {
  of(self).numbers["mask"] = static_cast<long long>(mask);
  return 0;
}
- (void)send {
  [[self target] performSelector:[self action] withObject:self];
}
// With a menu that opens, and stays open until the person is done with it.
- (void)performClick:(id)sender {
  (void)sender;
  NSMenu* const menu = [appKit->item() menu];
  if (menu == nil) return [self send];
  note("menu opens");
  if (appKit->menuIsOpen) appKit->menuIsOpen(menu);
  NSMenuItem* const chosen = objectOf(menu, "chosen");
  if (appKit->closesBeforeChoice) [[menu delegate] menuDidClose:menu];
  [[chosen target] performSelector:of(chosen).action withObject:chosen];
  if (!appKit->closesBeforeChoice) [[menu delegate] menuDidClose:menu];
  setObject(menu, "chosen", nil);
}
@end

@implementation NSStatusItem
OBJECT(NSMenu*, menu, setMenu)
- (NSStatusBarButton*)button {
  if (objectOf(self, "button") == nil)
    setObject(self, "button", [[[NSStatusBarButton alloc] init] autorelease]);
  return objectOf(self, "button");
}
- (void)dealloc {
  std::erase(items, self);
  held.extract(self);
  [super dealloc];
}
@end

@implementation NSStatusBar
+ (NSStatusBar*)systemStatusBar {
  static NSStatusBar* const shared = [[NSStatusBar alloc] init];
  return shared;
}
- (NSStatusItem*)statusItemWithLength:(CGFloat)length {
  note("item of length " + std::to_string(static_cast<int>(length)));
  NSStatusItem* const made = [[[NSStatusItem alloc] init] autorelease];
  items.push_back(made);
  return made;
}
- (void)removeStatusItem:(NSStatusItem*)item {
  note("item removed");
  std::erase(items, item);
}
@end

@implementation NSMenuItem
OBJECT(NSString*, title, setTitle)
NUMBER(NSControlStateValue, state, setState)
NUMBER(NSInteger, tag, setTag)
NUMBER(BOOL, isEnabled, setEnabled)
NUMBER(BOOL, isHidden, setHidden)
UNRETAINED(id, target, setTarget)
+ (NSMenuItem*)separatorItem {
  NSMenuItem* const line = [[[NSMenuItem alloc] initWithTitle:@"" action:nullptr
                                                keyEquivalent:@""] autorelease];
  of(line).numbers["separator"] = 1;
  return line;
}
- (BOOL)isSeparatorItem {
  return of(self).numbers["separator"] == 1;
}
- (instancetype)initWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)key {
  self = [super init];
  if ([key length] != 0) note("a key for a line");
  [self setTitle:title];
  of(self).action = action;
  return self;
}
FORGETS
@end

@implementation NSMenu
UNRETAINED(id<NSMenuDelegate>, delegate, setDelegate)
- (NSMutableArray*)lines {
  if (objectOf(self, "lines") == nil) setObject(self, "lines", [NSMutableArray array]);
  return objectOf(self, "lines");
}
- (BOOL)autoenablesItems {
  return of(self).numbers["manual"] == 0; // as long as nobody says otherwise
}
- (void)setAutoenablesItems:(BOOL)automatic {
  of(self).numbers["manual"] = automatic ? 0 : 1;
}
- (void)addItem:(NSMenuItem*)item {
  [[self lines] addObject:item];
}
- (NSMenuItem*)itemAtIndex:(NSInteger)index {
  return [[self lines] objectAtIndex:static_cast<NSUInteger>(index)];
}
- (void)removeAllItems {
  note("lines removed");
  setObject(self, "lines", nil);
}
FORGETS
@end

@implementation NSImage
+ (NSImage*)imageWithSystemSymbolName:(NSString*)name accessibilityDescription:(NSString*)description {
  if (![name isEqual:@"bolt"] && ![name isEqual:@"bolt.fill"]) return nil;
  NSImage* const made = [[[NSImage alloc] init] autorelease];
  setObject(made, "symbol", name);
  setObject(made, "description", description);
  return made;
}
- (void)setTemplate:(BOOL)isTemplate {
  of(self).numbers["template"] = isTemplate;
}
- (NSString*)description {
  const std::string text = textFor(objectOf(self, "symbol")) + ", " + textFor(objectOf(self, "description")) +
                           (of(self).numbers["template"] == YES ? ", in the bar's colour" : "");
  return vantle::stringOf(text);
}
// The system counts from below, and bitmaps are stored from above.
- (void)drawInRect:(NSRect)place
          fromRect:(NSRect)part
         operation:(NSCompositingOperation)operation
          fraction:(CGFloat)opacity {
  if (part.size.width != 0 || operation != NSCompositingOperationSourceOver || opacity != 1)
    note("drawn oddly");
  if (currentContext == nil) return note("drawn nowhere");
  Held& bitmap = of(objectOf(currentContext, "bitmap"));
  const long long wide = bitmap.numbers["wide"];
  const long long high = bitmap.numbers["high"];
  if (place.origin.x != 0 || place.origin.y != 0 || place.size.width != static_cast<CGFloat>(wide) ||
      place.size.height != static_cast<CGFloat>(high))
    note("drawn in another place");
  for (long long y = 0; y < high; ++y) {
    auto* bytes = bitmap.plane + y * bitmap.numbers["row"];
    for (long long x = 0; x < wide; ++x, bytes += 4) {
      const bool isUpper = y < high / 2;
      bytes[0] = isUpper ? 255 : 0;
      bytes[1] = isUpper ? 0 : 128; // multiplied with the opacity
      bytes[2] = 0;
      bytes[3] = isUpper ? 255 : 128;
    }
  }
}
FORGETS
@end

@implementation NSBitmapImageRep
- (instancetype)initWithBitmapDataPlanes:(unsigned char**)planes
                              pixelsWide:(NSInteger)width
                              pixelsHigh:(NSInteger)height
                           bitsPerSample:(NSInteger)bits
                         samplesPerPixel:(NSInteger)samples
                                hasAlpha:(BOOL)alpha
                                isPlanar:(BOOL)planar
                          colorSpaceName:(NSColorSpaceName)colorSpace
                             bytesPerRow:(NSInteger)rowBytes
                            bitsPerPixel:(NSInteger)pixelBits {
  self = [super init];
  const bool isSound = bits == 8 && samples == 4 && alpha && !planar && pixelBits == 32 &&
                       rowBytes >= 4 * width && colorSpace == NSDeviceRGBColorSpace;
  if (!isSound) note("a bitmap that there cannot be");
  auto& numbers = of(self).numbers;
  of(self).plane = planes[0];
  numbers["wide"] = width;
  numbers["high"] = height;
  numbers["row"] = rowBytes;
  return self;
}
FORGETS
@end

@implementation NSGraphicsContext
+ (NSGraphicsContext*)graphicsContextWithBitmapImageRep:(NSBitmapImageRep*)bitmap {
  if (!appKit->canDraw) return nil;
  NSGraphicsContext* const made = [[[NSGraphicsContext alloc] init] autorelease];
  setObject(made, "bitmap", bitmap);
  return made;
}
+ (void)saveGraphicsState {
  contexts.push_back(currentContext);
  ++appKit->savedStates;
}
+ (void)restoreGraphicsState {
  currentContext = contexts.back();
  contexts.pop_back();
  --appKit->savedStates;
}
+ (void)setCurrentContext:(NSGraphicsContext*)context {
  currentContext = context;
}
- (void)flushGraphics {
  note("flush");
}
FORGETS
@end

@implementation NSWorkspace (Windows)
- (NSImage*)iconForFile:(NSString*)path {
  note("icon for file " + textFor(path));
  return [[[NSImage alloc] init] autorelease];
}
- (NSImage*)iconForContentType:(UTType*)type {
  note(type == UTTypeApplicationBundle ? "icon for any app" : "icon for something else");
  return [[[NSImage alloc] init] autorelease];
}
@end

@implementation NSOpenPanel
OBJECT(NSArray*, allowedContentTypes, setAllowedContentTypes)
OBJECT(NSURL*, directoryURL, setDirectoryURL)
OBJECT(NSString*, prompt, setPrompt)
NUMBER(BOOL, allowsMultipleSelection, setAllowsMultipleSelection)
+ (NSOpenPanel*)openPanel {
  NSOpenPanel* const made = [[[NSOpenPanel alloc] init] autorelease];
  [made setAllowsMultipleSelection:YES]; // whatever the last one had
  return made;
}
- (NSURL*)URL {
  return appKit->chosenPath == nil ? nil : [NSURL fileURLWithPath:appKit->chosenPath];
}
- (NSModalResponse)runModal {
  NSArray* const types = [self allowedContentTypes];
  const bool isForApps = [types count] == 1 && [types objectAtIndex:0] == UTTypeApplicationBundle;
  note("dialog for " + std::string(isForApps ? "apps" : "anything") + " in " +
       textFor([[self directoryURL] path]) + ", to " + textFor([self prompt]) +
       ([self allowsMultipleSelection] ? ", several" : ""));
  const NSModalResponse given = appKit->answer ? appKit->answer() : 0;
  return of(self).numbers["cancelled"] != 0 ? 0 : given;
}
- (void)cancel:(id)sender {
  (void)sender;
  note("dialog cancelled");
  of(self).numbers["cancelled"] = appKit->cancelsInTime ? 1 : 0;
}
FORGETS
@end

// It keeps nobody who answers.
@implementation NSAppleEventManager (Windows)
+ (NSAppleEventManager*)sharedAppleEventManager {
  static NSAppleEventManager* const shared = [[NSAppleEventManager alloc] init];
  return shared;
}
- (void)setEventHandler:(id)handler
            andSelector:(SEL)selector
          forEventClass:(AEEventClass)eventClass
             andEventID:(AEEventID)eventID {
  handlers[{eventClass, eventID}] = {handler, selector};
}
- (void)removeEventHandlerForEventClass:(AEEventClass)eventClass andEventID:(AEEventID)eventID {
  handlers.erase({eventClass, eventID});
}
@end

namespace vantle {

namespace {

constexpr AEEventClass coreEvents = 'aevt';
constexpr AEEventID openedAgain = 'rapp';

} // namespace

// Windows of the toolkit on this system have none; here they have one all the same.
NSWindow* nativeWindow(QWindow& window) { return appKit->windowOf(&window); }

StandInAppKit::StandInAppKit() {
  invariant(appKit == nullptr, "two of them");
  appKit = this;
  static UTType* const type = [[UTType alloc] init];
  setApplicationBundleType(type);
  becomeDrawnIn(NSAppearanceNameAqua);
  calls.clear();
}

StandInAppKit::~StandInAppKit() {
  [[NSApplication sharedApplication] setAppearance:nil];
  windows.clear();
  handlers.clear();
  appKit = nullptr;
}

std::vector<std::string> StandInAppKit::callsOf(const std::string& beginning) const {
  std::vector<std::string> found;
  for (const std::string& call : calls) {
    if (call.starts_with(beginning)) found.push_back(call);
  }
  return found;
}

// Of the program's own object, the system's appearance, and the windows that were asked for.
int StandInAppKit::objects() const {
  const auto isKept = [](const auto& each) {
    const id object = static_cast<id>(const_cast<void*>(each.first));
    const id app = [NSApplication sharedApplication];
    const bool isWindow = std::any_of(windows.begin(), windows.end(),
                                      [&](const auto& window) { return window.second.get() == object; });
    return object == nil || object == app || object == objectOf(app, "system's") ||
           object == objectOf(app, "appearance") || isWindow;
  };
  return static_cast<int>(held.size()) - static_cast<int>(std::count_if(held.begin(), held.end(), isKept));
}

void StandInAppKit::becomeDrawnIn(NSString* appearance) {
  @autoreleasepool {
    NSApplication* const app = [NSApplication sharedApplication];
    [app willChangeValueForKey:@"effectiveAppearance"];
    setObject(app, "system's", [NSAppearance appearanceNamed:appearance]);
    [app didChangeValueForKey:@"effectiveAppearance"];
  }
}

void StandInAppKit::finishLaunching() { handlers[{coreEvents, openedAgain}] = {nil, nullptr}; }

bool StandInAppKit::openAgain() {
  @autoreleasepool {
    const auto found = handlers.find({coreEvents, openedAgain});
    if (found == handlers.end() || found->second.first == nil) return false;
    [found->second.first performSelector:found->second.second withObject:nil withObject:nil];
    return true;
  }
}

NSStatusItem* StandInAppKit::item() const { return items.size() == 1 ? items.front() : nil; }

void StandInAppKit::press(NSEventType type, NSEventModifierFlags modifiers) const {
  @autoreleasepool {
    NSStatusBarButton* const pressed = [item() button];
    if ((static_cast<NSEventMask>(of(pressed).numbers["mask"]) & (1ULL << type)) == 0) return;
    NSEvent* const event = [[[NSEvent alloc] init] autorelease];
    of(event).numbers["type"] = static_cast<long long>(type);
    of(event).numbers["modifierFlags"] = static_cast<long long>(modifiers);
    currentEvent = event;
    [[pressed target] performSelector:[pressed action] withObject:pressed];
    currentEvent = nil;
  }
}

void StandInAppKit::pressWithoutEvent() const {
  @autoreleasepool {
    NSStatusBarButton* const pressed = [item() button];
    [[pressed target] performSelector:[pressed action] withObject:pressed];
  }
}

QStringList StandInAppKit::lines() const {
  QStringList shown;
  @autoreleasepool {
    NSMenu* const menu = [item() menu];
    for (NSUInteger at = 0; at < [static_cast<NSArray*>(objectOf(menu, "lines")) count]; ++at) {
      NSMenuItem* const line = [menu itemAtIndex:static_cast<NSInteger>(at)];
      if ([line isHidden]) continue;
      const QString title = QString::fromStdString(textFor([line title]));
      const bool isGrey = ![line isEnabled] && ![line isSeparatorItem] && ![menu autoenablesItems];
      const QString text = isGrey ? "[" + title + "]" : title;
      shown.append([line state] == NSControlStateValueOn ? text + " (on)" : text);
    }
  }
  return shown;
}

void StandInAppKit::chooseLine(NSInteger line) const {
  NSMenu* const menu = [item() menu];
  setObject(menu, "chosen", [menu itemAtIndex:line]);
}

NSWindow* StandInAppKit::windowOf(const void* window) {
  auto& found = windows[window];
  if (found.get() == nil) {
    found = Retained<NSWindow>::taking([[NSWindow alloc] init]);
    [found.get() setHidesOnDeactivate:YES];
  }
  return found.get();
}

bool StandInAppKit::canBeSeen(NSWindow* window) const { return isActive || ![window hidesOnDeactivate]; }

NSEventMask StandInAppKit::monitored() const {
  NSEventMask all = 0;
  for (const auto& [monitor, handler] : monitors)
    all |= static_cast<NSEventMask>(of(monitor.get()).numbers["mask"]);
  return all;
}

void StandInAppKit::pressElsewhere() const {
  @autoreleasepool {
    isInMonitor = true;
    for (const auto& [monitor, handler] : monitors) handler(nil);
    isInMonitor = false;
  }
}

} // namespace vantle
