// SPDX-License-Identifier: MIT
#include "tests/unit/cocoa/FoundationDomains.h"

#import "platform/darwin/cocoa/Values.h"

#import <Foundation/Foundation.h>
#include <cstddef>

// No other string of the free Foundation takes such a thing in.
@interface HalfPairString : NSString
@end
@implementation HalfPairString
- (NSUInteger)length {
  return 3;
}
- (unichar)characterAtIndex:(NSUInteger)index {
  const unichar units[] = {'a', 0xD83C, 'z'};
  return units[index];
}
@end

namespace vantle {

namespace {

NSString* text(const std::string& bytes) { return [NSString stringWithUTF8String:bytes.c_str()]; }

void put(const std::string& domain, const std::string& key, id object) {
  @autoreleasepool {
    NSUserDefaults* const defaults = [NSUserDefaults standardUserDefaults];
    NSMutableDictionary* const all = [NSMutableDictionary dictionary];
    [all addEntriesFromDictionary:[defaults persistentDomainForName:text(domain)]];
    [all setObject:object forKey:text(key)];
    [defaults setPersistentDomain:all forName:text(domain)];
  }
}

} // namespace

std::string ownDomain() {
  @autoreleasepool {
    NSString* const identifier = [[NSBundle mainBundle] bundleIdentifier];
    return [identifier != nil ? identifier : [[NSProcessInfo processInfo] processName] UTF8String];
  }
}

void clearDomain(const std::string& domain) {
  @autoreleasepool {
    [[NSUserDefaults standardUserDefaults] setPersistentDomain:[NSDictionary dictionary]
                                                       forName:text(domain)];
  }
}

void putNumber(const std::string& domain, const std::string& key, double number) {
  @autoreleasepool {
    put(domain, key, [NSNumber numberWithDouble:number]);
  }
}

void putOdd(const std::string& domain, const std::string& key) {
  @autoreleasepool {
    id object = [NSDictionary dictionaryWithObject:@"a" forKey:@"b"];
    if (key == "data") object = [NSData dataWithBytes:"abc" length:3];
    if (key == "mixed") object = [NSArray arrayWithObjects:@"a", [NSNumber numberWithInt:1], nil];
    if (key == "distant") object = [NSDate dateWithTimeIntervalSince1970:1e18];
    put(domain, key, object);
  }
}

std::string oddIn(const std::string& domain, const std::string& key) {
  @autoreleasepool {
    NSDictionary* const all = [[NSUserDefaults standardUserDefaults] persistentDomainForName:text(domain)];
    return [[[all objectForKey:text(key)] description] UTF8String];
  }
}

std::optional<std::string> textOfHalfPair() {
  @autoreleasepool {
    return textOf([[[HalfPairString alloc] init] autorelease]);
  }
}

} // namespace vantle
