// SPDX-License-Identifier: MIT
#import "platform/darwin/cocoa/Values.h"

#include "base/Utf8.h"

namespace vantle {

std::optional<std::string> textOf(id object) {
  NSString* const text = asKind<NSString>(object);
  if (text == nil) return std::nullopt;
  @autoreleasepool {
    NSData* const bytes = [text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
    if (bytes == nil) return std::nullopt;
    return cleanUtf8(std::string_view(static_cast<const char*>([bytes bytes]), [bytes length]));
  }
}

NSString* stringOf(std::string_view bytes) {
  const std::string text = cleanUtf8(bytes);
  NSString* const made = [[[NSString alloc] initWithBytes:text.data()
                                                   length:text.size()
                                                 encoding:NSUTF8StringEncoding] autorelease];
  return made != nil ? made : @"";
}

} // namespace vantle
