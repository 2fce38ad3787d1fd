// SPDX-License-Identifier: MIT
#pragma once

#import <Foundation/Foundation.h>
#include <optional>
#include <string>
#include <string_view>

namespace vantle {

// The text of a string; absent for anything else, nil included. A string of the system may hold what is no
// text: half of a pair of code units becomes one U+FFFD.
std::optional<std::string> textOf(id object);

// A string of any bytes, for as long as the pool around the caller; never nil.
NSString* stringOf(std::string_view bytes);

// The same object, when it is of that kind; nil for any other. What the system hands out in a collection is
// as its documentation says, or as another version has it.
template <class Kind> Kind* asKind(id object) {
  return [object isKindOfClass:[Kind class]] ? static_cast<Kind*>(object) : nil;
}

} // namespace vantle
