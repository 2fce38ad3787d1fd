// SPDX-License-Identifier: MIT
// What is called of Foundation and of the runtime below it, from their documentation. For the check without a
// Mac; the tests on another system have the free Foundation in its place.
#pragma once
#include <stddef.h>
#include <stdint.h>

#if defined(__arm64__)
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif
#define YES __objc_yes
#define NO __objc_no
typedef long NSInteger;
typedef unsigned long NSUInteger;
typedef double NSTimeInterval;
#define nil nullptr
#ifdef __cplusplus
#define FOUNDATION_EXPORT extern "C"
#else
#define FOUNDATION_EXPORT extern
#endif

@class NSArray, NSDictionary, NSError, NSString, NSURL;

__attribute__((objc_root_class))
@interface NSObject {
  Class isa;
}
+ (instancetype)alloc;
+ (Class)class;
- (instancetype)init;
- (instancetype)retain;
- (oneway void)release;
- (instancetype)autorelease;
- (void)dealloc;
- (BOOL)isEqual:(id)other;
- (BOOL)isKindOfClass:(Class)kind;
@end

typedef struct {
  unsigned long state;
  id* itemsPtr;
  unsigned long* mutationsPtr;
  unsigned long extra[5];
} NSFastEnumerationState;

typedef unsigned short unichar;
typedef struct {
  NSUInteger location;
  NSUInteger length;
} NSRange;
static inline NSRange NSMakeRange(NSUInteger location, NSUInteger length) {
  NSRange range = {location, length};
  return range;
}

typedef NSUInteger NSStringEncoding;
enum { NSUTF8StringEncoding = 4 };

typedef NSUInteger NSSearchPathDirectory;
typedef NSUInteger NSSearchPathDomainMask;
enum { NSApplicationSupportDirectory = 14, NSAllApplicationsDirectory = 100 };
enum { NSUserDomainMask = 1, NSAllDomainsMask = 0x0ffff };

@interface NSString : NSObject
- (instancetype)initWithBytes:(const void*)bytes
                       length:(NSUInteger)length
                     encoding:(NSStringEncoding)encoding;
@property(readonly) NSUInteger length;
- (void)getCharacters:(unichar*)buffer range:(NSRange)range;
@end
@interface NSConstantString : NSString
@end
@interface NSDate : NSObject
+ (instancetype)dateWithTimeIntervalSince1970:(NSTimeInterval)seconds;
@property(readonly) NSTimeInterval timeIntervalSince1970;
@end
@interface NSNumber : NSObject
+ (NSNumber*)numberWithBool:(BOOL)value;
@property(readonly) double doubleValue;
@property(readonly) long long longLongValue;
@end
@interface NSArray : NSObject
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id*)objects
                                    count:(NSUInteger)count;
@end
@interface NSMutableArray : NSArray
+ (instancetype)array;
- (void)addObject:(id)object;
@end
@interface NSDictionary : NSObject
@property(readonly) NSUInteger count;
- (id)objectForKey:(id)key;
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id*)objects
                                    count:(NSUInteger)count;
@end
__attribute__((objc_exception)) // whose type the library has
@interface NSException : NSObject
@end
@interface NSURL : NSObject
@property(readonly, copy) NSString* path;
@end
@interface NSBundle : NSObject
@property(class, readonly, strong) NSBundle* mainBundle;
@property(readonly, copy) NSString* bundleIdentifier;
+ (instancetype)bundleWithPath:(NSString*)path;
- (id)objectForInfoDictionaryKey:(NSString*)key;
@end
@interface NSFileManager : NSObject
@property(class, readonly, strong) NSFileManager* defaultManager;
- (NSArray*)contentsOfDirectoryAtPath:(NSString*)path error:(NSError**)error;
- (NSString*)displayNameAtPath:(NSString*)path;
- (BOOL)fileExistsAtPath:(NSString*)path isDirectory:(BOOL*)isDirectory;
@end
@interface NSNotification : NSObject
@property(readonly, copy) NSDictionary* userInfo;
@end
@interface NSNotificationCenter : NSObject
- (void)addObserver:(id)observer selector:(SEL)selector name:(NSString*)name object:(id)object;
- (void)removeObserver:(id)observer;
@end
typedef uint64_t NSActivityOptions;
enum : NSActivityOptions { NSActivityUserInitiatedAllowingIdleSystemSleep = 0x00FFFFFF & ~(1 << 20) };
@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
@property(readonly, copy) NSString* processName;
- (id)beginActivityWithOptions:(NSActivityOptions)options reason:(NSString*)reason; // to be kept
- (void)endActivity:(id)activity;
@end
@interface NSUserDefaults : NSObject
@property(class, readonly, strong) NSUserDefaults* standardUserDefaults;
- (id)objectForKey:(NSString*)key;
- (NSDictionary*)persistentDomainForName:(NSString*)name;
- (void)removeObjectForKey:(NSString*)key;
- (void)setObject:(id)object forKey:(NSString*)key;
@end

FOUNDATION_EXPORT NSString* NSHomeDirectory(void);
FOUNDATION_EXPORT NSArray* NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory directory,
                                                               NSSearchPathDomainMask domains,
                                                               BOOL expandTilde);

#import <Foundation/Windows.h>
