// SPDX-License-Identifier: MIT
// What the calls of the windows were written for: on a Mac held to the system's own headers, elsewhere to the
// declarations that stand in for them. Where the two differ, this does not compile, and nothing has run.
#import <AppKit/AppKit.h>
#import <UniformTypeIdentifiers/UniformTypeIdentifiers.h>
#include <cstddef>
#include <malloc/malloc.h>
#include <type_traits>

namespace vantle {

namespace {

template <class Result, class Wanted> constexpr bool gives = std::is_convertible_v<Result, Wanted>;

template <class Kind> Kind* any() { return nullptr; }

// Coordinates.
static_assert(std::is_same_v<CGFloat, double>);
static_assert(sizeof(NSRect) == 32);
static_assert(offsetof(NSRect, size) == 16);

// Events.
static_assert(NSEventTypeRightMouseUp == 4);
static_assert(NSEventTypeOtherMouseUp == 26);
static_assert(NSEventMaskLeftMouseDown == 1ULL << 1);
static_assert(NSEventMaskLeftMouseUp == 1ULL << 2);
static_assert(NSEventMaskRightMouseDown == 1ULL << 3);
static_assert(NSEventMaskRightMouseUp == 1ULL << 4);
static_assert(NSEventMaskOtherMouseDown == 1ULL << 25);
static_assert(NSEventMaskOtherMouseUp == 1ULL << 26);
static_assert(NSEventModifierFlagControl == 1U << 18);
static_assert(
    gives<decltype([NSEvent addGlobalMonitorForEventsMatchingMask:0
                                                          handler:static_cast<void (^)(NSEvent*)>(nil)]),
          id>);

// The program.
static_assert(gives<decltype([NSApplication sharedApplication]), NSApplication*>);
static_assert(gives<decltype([any<NSApplication>() isActive]), bool>);
static_assert(gives<decltype([any<NSApplication>() isHidden]), bool>);
static_assert(gives<decltype([any<NSApplication>() effectiveAppearance]), NSAppearance*>);
static_assert(gives<decltype([any<NSAppearance>() bestMatchFromAppearancesWithNames:nil]), NSString*>);

// The menu bar.
static_assert(NSControlStateValueOff == 0);
static_assert(NSControlStateValueOn == 1);
static_assert(gives<decltype([[NSStatusBar systemStatusBar] statusItemWithLength:-2]), NSStatusItem*>);
static_assert(gives<decltype([any<NSStatusItem>() button]), NSStatusBarButton*>);
static_assert(gives<decltype([any<NSStatusBarButton>() window]), NSWindow*>);
static_assert(std::is_same_v<decltype([any<NSMenuItem>() tag]), NSInteger>);

// Windows.
static_assert(NSWindowCollectionBehaviorCanJoinAllSpaces == 1U << 0);
static_assert(NSWindowCollectionBehaviorFullScreenAuxiliary == 1U << 8);
static_assert(gives<decltype([any<NSWindow>() hidesOnDeactivate]), bool>);
static_assert(std::is_same_v<decltype([any<NSWindow>() convertRectToScreen:NSRect()]), NSRect>);
static_assert(std::is_same_v<decltype([any<NSView>() convertRect:NSRect() toView:nil]), NSRect>);
static_assert(std::is_same_v<decltype([any<NSScreen>() frame]), NSRect>);

// Pictures, and the dialog.
static_assert(NSCompositingOperationSourceOver == 2);
static_assert(
    gives<decltype([NSImage imageWithSystemSymbolName:nil accessibilityDescription:nil]), NSImage*>);
static_assert(gives<decltype([[NSWorkspace sharedWorkspace] iconForFile:nil]), NSImage*>);
static_assert(
    gives<decltype([[NSWorkspace sharedWorkspace] iconForContentType:UTTypeApplicationBundle]), NSImage*>);
static_assert(NSModalResponseOK == 1);
static_assert(std::is_same_v<decltype([[NSOpenPanel openPanel] runModal]), NSModalResponse>);
static_assert(gives<decltype([any<NSOpenPanel>() URL]), NSURL*>);

// What others ask for: four letters.
static_assert(sizeof(AEEventClass) == 4);
static_assert(sizeof(AEEventID) == 4);

// Memory.
static_assert(
    std::is_invocable_r_v<std::size_t, decltype(::malloc_zone_pressure_relief), std::nullptr_t, std::size_t>);

} // namespace

} // namespace vantle
