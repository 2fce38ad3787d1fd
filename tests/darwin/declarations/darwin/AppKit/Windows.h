// SPDX-License-Identifier: MIT
// What the program's windows call of AppKit, from its documentation. AppKit.h has it in.
#pragma once

@class NSAppearance, NSEvent, NSImage, NSMenu, NSScreen, NSView, NSWindow, UTType;

// The program.
@interface NSApplication (Windows)
@property(readonly, getter=isActive) BOOL active;
@property(readonly, getter=isHidden) BOOL hidden;
@property(readonly, strong) NSEvent* currentEvent; // nil when none was handled yet
@property(strong) NSAppearance* appearance;        // nil for the system's
@property(readonly, strong) NSAppearance* effectiveAppearance;
@property(readonly, copy) NSArray* windows;
- (void)activateIgnoringOtherApps:(BOOL)ignoring;
- (void)hide:(id)sender;
- (void)unhideWithoutActivation;
@end

typedef NSString* NSAppearanceName;
FOUNDATION_EXPORT NSAppearanceName const NSAppearanceNameAqua;
FOUNDATION_EXPORT NSAppearanceName const NSAppearanceNameDarkAqua;
@interface NSAppearance : NSObject
+ (NSAppearance*)appearanceNamed:(NSAppearanceName)name;
- (NSAppearanceName)bestMatchFromAppearancesWithNames:(NSArray*)names;
@end

// Events.
typedef NSUInteger NSEventType;
typedef unsigned long long NSEventMask;
typedef NSUInteger NSEventModifierFlags;
enum {
  NSEventTypeLeftMouseDown = 1,
  NSEventTypeLeftMouseUp = 2,
  NSEventTypeRightMouseDown = 3,
  NSEventTypeRightMouseUp = 4,
  NSEventTypeOtherMouseDown = 25,
  NSEventTypeOtherMouseUp = 26
};
enum : NSEventMask {
  NSEventMaskLeftMouseDown = 1ULL << NSEventTypeLeftMouseDown,
  NSEventMaskLeftMouseUp = 1ULL << NSEventTypeLeftMouseUp,
  NSEventMaskRightMouseDown = 1ULL << NSEventTypeRightMouseDown,
  NSEventMaskRightMouseUp = 1ULL << NSEventTypeRightMouseUp,
  NSEventMaskOtherMouseDown = 1ULL << NSEventTypeOtherMouseDown,
  NSEventMaskOtherMouseUp = 1ULL << NSEventTypeOtherMouseUp
};
enum : NSEventModifierFlags { NSEventModifierFlagControl = 1UL << 18 };
@interface NSEvent : NSObject
@property(readonly) NSEventType type;
@property(readonly) NSEventModifierFlags modifierFlags;
+ (id)addGlobalMonitorForEventsMatchingMask:(NSEventMask)mask handler:(void (^)(NSEvent*))handler;
+ (void)removeMonitor:(id)monitor;
@end

// Screens and windows.
@interface NSScreen : NSObject
@property(class, readonly, copy) NSArray* screens; // the one with the menu bar first
@property(readonly) NSRect frame;
@end
typedef NSInteger NSWindowLevel;
enum : NSWindowLevel { NSStatusWindowLevel = 25 };
typedef NSUInteger NSWindowCollectionBehavior;
enum : NSWindowCollectionBehavior {
  NSWindowCollectionBehaviorCanJoinAllSpaces = 1UL << 0,
  NSWindowCollectionBehaviorFullScreenAuxiliary = 1UL << 8
};
@interface NSWindow : NSObject
@property NSWindowLevel level;
@property(strong) NSView* contentView;
@property NSWindowCollectionBehavior collectionBehavior;
@property BOOL hidesOnDeactivate; // off the screen while the program is not the active one; so panels are
- (NSRect)convertRectToScreen:(NSRect)rect;
@end
@interface NSView : NSObject
@property(readonly, assign) NSWindow* window; // nil for a view in none
@property NSRect bounds;
@property(copy) NSArray* subviews;
- (NSRect)convertRect:(NSRect)rect toView:(NSView*)view; // nil for the window's own coordinates
@end

// The menu bar.
typedef NSInteger NSControlStateValue;
static const NSControlStateValue NSControlStateValueOff = 0;
static const NSControlStateValue NSControlStateValueOn = 1;
@interface NSStatusBarButton : NSView
@property(copy) NSString* title;
@property(strong) NSImage* image;
@property(copy) NSString* toolTip;
@property(assign) id target;
@property SEL action;
- (NSInteger)sendActionOn:(NSEventMask)mask;
- (void)performClick:(id)sender;
@end
@interface NSStatusItem : NSObject
@property(readonly, strong) NSStatusBarButton* button;
@property(strong) NSMenu* menu;
@end
static const CGFloat NSSquareStatusItemLength = -2;
@interface NSStatusBar : NSObject
@property(class, readonly, strong) NSStatusBar* systemStatusBar;
- (NSStatusItem*)statusItemWithLength:(CGFloat)length;
- (void)removeStatusItem:(NSStatusItem*)item;
@end

@protocol NSMenuDelegate
@optional
- (void)menuDidClose:(NSMenu*)menu;
@end
@interface NSMenuItem : NSObject
@property(class, readonly, strong) NSMenuItem* separatorItem;
@property(readonly, getter=isSeparatorItem) BOOL separatorItem;
@property(copy) NSString* title;
@property NSControlStateValue state;
@property NSInteger tag;
@property(getter=isEnabled) BOOL enabled;
@property(getter=isHidden) BOOL hidden;
@property(assign) id target;
- (instancetype)initWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)key;
@end
@interface NSMenu : NSObject
@property(assign) id<NSMenuDelegate> delegate;
@property BOOL autoenablesItems;
- (void)addItem:(NSMenuItem*)item;
- (NSMenuItem*)itemAtIndex:(NSInteger)index;
- (void)removeAllItems;
@end

// Pictures.
typedef NSInteger NSCompositingOperation;
enum : NSCompositingOperation { NSCompositingOperationSourceOver = 2 };
@interface NSImage : NSObject
+ (NSImage*)imageWithSystemSymbolName:(NSString*)name accessibilityDescription:(NSString*)description;
- (void)setTemplate:(BOOL)isTemplate; // of a property whose name is a word of C++
- (void)drawInRect:(NSRect)place
          fromRect:(NSRect)part
         operation:(NSCompositingOperation)operation
          fraction:(CGFloat)opacity;
@end
typedef NSString* NSColorSpaceName;
FOUNDATION_EXPORT NSColorSpaceName const NSDeviceRGBColorSpace;
@interface NSBitmapImageRep : NSObject
- (instancetype)initWithBitmapDataPlanes:(unsigned char**)planes
                              pixelsWide:(NSInteger)width
                              pixelsHigh:(NSInteger)height
                           bitsPerSample:(NSInteger)bits
                         samplesPerPixel:(NSInteger)samples
                                hasAlpha:(BOOL)alpha
                                isPlanar:(BOOL)planar
                          colorSpaceName:(NSColorSpaceName)colorSpace
                             bytesPerRow:(NSInteger)rowBytes
                            bitsPerPixel:(NSInteger)pixelBits;
@end
@interface NSGraphicsContext : NSObject
+ (NSGraphicsContext*)graphicsContextWithBitmapImageRep:
    (NSBitmapImageRep*)bitmap; // nil when it cannot be drawn to
+ (void)saveGraphicsState;
+ (void)restoreGraphicsState;
+ (void)setCurrentContext:(NSGraphicsContext*)context;
- (void)flushGraphics;
@end
@interface NSWorkspace (Windows)
- (NSImage*)iconForFile:(NSString*)path;
- (NSImage*)iconForContentType:(UTType*)type;
@end

// Choosing a file.
typedef NSInteger NSModalResponse;
static const NSModalResponse NSModalResponseOK = 1;
@interface NSOpenPanel : NSObject
@property(copy) NSArray* allowedContentTypes;
@property(copy) NSURL* directoryURL;
@property BOOL allowsMultipleSelection;
@property(copy) NSString* prompt;
@property(readonly, copy) NSURL* URL;
+ (NSOpenPanel*)openPanel;
- (NSModalResponse)runModal;
- (void)cancel:(id)sender;
@end

// What others ask a program for. The class is Foundation's.
typedef uint32_t AEEventClass;
typedef uint32_t AEEventID;
@interface NSAppleEventManager (Windows)
+ (NSAppleEventManager*)sharedAppleEventManager;
- (void)setEventHandler:(id)handler
            andSelector:(SEL)selector
          forEventClass:(AEEventClass)eventClass
             andEventID:(AEEventID)eventID;
- (void)removeEventHandlerForEventClass:(AEEventClass)eventClass andEventID:(AEEventID)eventID;
@end
