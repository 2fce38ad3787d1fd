// SPDX-License-Identifier: MIT
#include "platform/darwin/defaults/CocoaDefaults.h"

#import "platform/darwin/cocoa/Values.h"

#include <chrono>
#include <cmath>
#include <utility>

namespace vantle {

namespace {

// Of dates that a calendar can say, and that fit.
constexpr double latestDate = 1e11;

std::optional<UserDefaults::Value> valueOf(id object) {
  if (auto text = textOf(object)) return *text;
  if (NSNumber* const number = asKind<NSNumber>(object)) {
    const double value = [number doubleValue];
    if (value == 0.0 || value == 1.0) return value == 1.0;
    return {};
  }
  if (NSDate* const date = asKind<NSDate>(object)) {
    const double seconds = std::floor([date timeIntervalSince1970]);
    if (!(std::abs(seconds) < latestDate)) return {};
    return Date(std::chrono::seconds(static_cast<long long>(seconds)));
  }
  if (NSArray* const array = asKind<NSArray>(object)) {
    std::vector<std::string> texts;
    for (id one in array) {
      auto text = textOf(one);
      if (!text) return {};
      texts.push_back(std::move(*text));
    }
    return texts;
  }
  return {};
}

id objectOf(const UserDefaults::Value& value) {
  if (const auto* date = std::get_if<Date>(&value)) {
    const auto seconds = static_cast<double>(date->time_since_epoch().count());
    return [NSDate dateWithTimeIntervalSince1970:seconds];
  }
  if (const auto* truth = std::get_if<bool>(&value)) return [NSNumber numberWithBool:*truth ? YES : NO];
  if (const auto* text = std::get_if<std::string>(&value)) return stringOf(*text);
  NSMutableArray* const array = [NSMutableArray array];
  for (const std::string& text : std::get<std::vector<std::string>>(value)) [array addObject:stringOf(text)];
  return array;
}

NSUserDefaults* standard() { return [NSUserDefaults standardUserDefaults]; }

std::string ownDomain() {
  @autoreleasepool {
    const auto identifier = textOf([[NSBundle mainBundle] bundleIdentifier]);
    return identifier ? *identifier : textOf([[NSProcessInfo processInfo] processName]).value_or("");
  }
}

id stored(const std::string& domain, const std::string& key) {
  return [[standard() persistentDomainForName:stringOf(domain)] objectForKey:stringOf(key)];
}

} // namespace

CocoaDefaults::CocoaDefaults() : m_domain(ownDomain()), m_isOwn(true) {}

std::optional<UserDefaults::Value> CocoaDefaults::object(const std::string& key) const {
  @autoreleasepool {
    return valueOf(m_isOwn ? [standard() objectForKey:stringOf(key)] : stored(m_domain, key));
  }
}

bool CocoaDefaults::contains(const std::string& key) const {
  @autoreleasepool {
    return stored(m_domain, key) != nil;
  }
}

void CocoaDefaults::set(const std::string& key, Value value) {
  @autoreleasepool {
    if (m_isOwn) [standard() setObject:objectOf(value) forKey:stringOf(key)];
  }
}

void CocoaDefaults::remove(const std::string& key) {
  @autoreleasepool {
    if (m_isOwn) [standard() removeObjectForKey:stringOf(key)];
  }
}

std::unique_ptr<UserDefaults> CocoaDefaults::openSuite(const std::string& name) const {
  @autoreleasepool {
    if ([[standard() persistentDomainForName:stringOf(name)] count] == 0) return nullptr;
    return std::unique_ptr<UserDefaults>(new CocoaDefaults(name));
  }
}

bool CocoaDefaults::copyFrom(const UserDefaults& other, const std::string& key) {
  @autoreleasepool {
    id value = nil;
    if (const auto* alike = dynamic_cast<const CocoaDefaults*>(&other)) {
      value = stored(alike->m_domain, key);
    } else if (const std::optional<Value> typed = other.object(key)) {
      value = objectOf(*typed);
    }
    if (value == nil || !m_isOwn) return false;
    [standard() setObject:value forKey:stringOf(key)];
    return true;
  }
}

} // namespace vantle
