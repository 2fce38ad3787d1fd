// SPDX-License-Identifier: MIT
#include "platform/darwin/power/OwnActivity.h"

#import "platform/darwin/cocoa/Retained.h"

#import <Foundation/Foundation.h>

namespace vantle {

namespace {

class OwnActivity final : public Registration {
 public:
  OwnActivity() {
    @autoreleasepool {
      id const token = [[NSProcessInfo processInfo]
          beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                            reason:@"Slowing apps down, and giving them their speed back at once"];
      m_token = Retained<NSObject>(token);
    }
  }
  ~OwnActivity() override {
    @autoreleasepool {
      [[NSProcessInfo processInfo] endActivity:m_token.get()];
    }
  }
  OwnActivity(const OwnActivity&) = delete;
  OwnActivity& operator=(const OwnActivity&) = delete;

 private:
  Retained<NSObject> m_token;
};

} // namespace

std::unique_ptr<Registration> stayAwakeToEvents() { return std::make_unique<OwnActivity>(); }

} // namespace vantle
