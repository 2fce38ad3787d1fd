// SPDX-License-Identifier: MIT
// What the program's windows call of Foundation besides, from its documentation. Foundation.h has it in.
#pragma once

typedef double CGFloat;
struct CGPoint {
  CGFloat x;
  CGFloat y;
};
struct CGSize {
  CGFloat width;
  CGFloat height;
};
struct CGRect {
  struct CGPoint origin;
  struct CGSize size;
};
typedef struct CGPoint NSPoint;
typedef struct CGSize NSSize;
typedef struct CGRect NSRect;
FOUNDATION_EXPORT const NSRect NSZeroRect;
static inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
  NSRect rect = {{x, y}, {width, height}};
  return rect;
}

@interface NSArray (Windows)
+ (instancetype)arrayWithObject:(id)object;
+ (instancetype)arrayWithObjects:(id)first, ... __attribute__((sentinel(0, 1)));
@property(readonly) NSUInteger count;
- (id)objectAtIndex:(NSUInteger)index;
@end

@interface NSURL (Windows)
+ (NSURL*)fileURLWithPath:(NSString*)path;
@end

typedef NSUInteger NSKeyValueObservingOptions;
@interface NSObject (KeyValueObserving)
- (void)addObserver:(NSObject*)observer
         forKeyPath:(NSString*)path
            options:(NSKeyValueObservingOptions)options
            context:(void*)context;
- (void)removeObserver:(NSObject*)observer forKeyPath:(NSString*)path;
- (void)observeValueForKeyPath:(NSString*)path
                      ofObject:(id)object
                        change:(NSDictionary*)change
                       context:(void*)context;
@end

@interface NSAppleEventDescriptor : NSObject
@end
@interface NSAppleEventManager : NSObject
@end
