// SPDX-License-Identifier: MIT
#include "platform/darwin/power/IokitPowerAssertions.h"

#import "platform/darwin/cocoa/CoreFoundation.h"
#import "platform/darwin/cocoa/Values.h"

#include <IOKit/pwr_mgt/IOPMLib.h>
#include <chrono>
#include <limits>
#include <utility>

namespace vantle {

namespace {

constexpr std::chrono::milliseconds longestAnswer{200};

Retained<NSDictionary> assertionsByProcess() {
  CFDictionaryRef copy = nullptr;
  const IOReturn status = ::IOPMCopyAssertionsByProcess(&copy);
  auto dictionary = copied(copy);
  return status == 0 ? dictionary : Retained<NSDictionary>();
}

std::optional<Pid> pidOf(id key) {
  NSNumber* const number = asKind<NSNumber>(key);
  if (number == nil) return std::nullopt;
  const long long value = [number longLongValue];
  if (value < firstAppPid || value > std::numeric_limits<Pid>::max()) return std::nullopt;
  return static_cast<Pid>(value);
}

} // namespace

std::vector<PowerAssertions::Assertion> IokitPowerAssertions::assertions() {
  const auto answer = m_wait.answer(longestAnswer, assertionsByProcess);
  std::vector<Assertion> held;
  if (!answer) return held;
  @autoreleasepool {
    NSDictionary* const all = asKind<NSDictionary>(answer->get());
    for (id key in all) {
      const std::optional<Pid> pid = pidOf(key);
      if (!pid) continue;
      for (id one in asKind<NSArray>([all objectForKey:key])) {
        std::optional<std::string> type = textOf([asKind<NSDictionary>(one) objectForKey:@"AssertType"]);
        if (type) held.push_back({*pid, std::move(*type)});
      }
    }
  }
  return held;
}

} // namespace vantle
