// SPDX-License-Identifier: MIT
#pragma once

#import "platform/darwin/cocoa/Retained.h"

#include <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>

namespace vantle {

// A dictionary that a call in C has copied for whoever called, as Foundation's own, which it is. May be none.
inline Retained<NSDictionary> copied(CFDictionaryRef dictionary) {
  const void* const plain = dictionary;
  return Retained<NSDictionary>::taking(static_cast<NSDictionary*>(const_cast<void*>(plain)));
}

} // namespace vantle
