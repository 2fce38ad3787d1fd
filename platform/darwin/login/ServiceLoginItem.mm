// SPDX-License-Identifier: MIT
#include "platform/darwin/login/ServiceLoginItem.h"

#include "platform/darwin/cocoa/OwnBundle.h"

#import <ServiceManagement/ServiceManagement.h>

namespace vantle {

namespace {

SMAppService* service() { return ownBundleIdentifier() ? [SMAppService mainAppService] : nil; }

} // namespace

bool ServiceLoginItem::isEnabled() const {
  @autoreleasepool {
    return [service() status] == SMAppServiceStatusEnabled;
  }
}

bool ServiceLoginItem::registerItem() {
  @autoreleasepool {
    NSError* error = nil;
    return [service() registerAndReturnError:&error];
  }
}

bool ServiceLoginItem::unregisterItem() {
  @autoreleasepool {
    NSError* error = nil;
    return [service() unregisterAndReturnError:&error];
  }
}

} // namespace vantle
