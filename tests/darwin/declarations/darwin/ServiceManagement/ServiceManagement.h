// SPDX-License-Identifier: MIT
// What is called of ServiceManagement, from the documentation of SMAppService.
#pragma once
#import <Foundation/Foundation.h>

typedef NSInteger SMAppServiceStatus;
enum {
  SMAppServiceStatusNotRegistered = 0,
  SMAppServiceStatusEnabled = 1,
  SMAppServiceStatusRequiresApproval = 2,
  SMAppServiceStatusNotFound = 3
};

@interface SMAppService : NSObject
@property(class, readonly) SMAppService* mainAppService;
@property(readonly) SMAppServiceStatus status;
- (BOOL)registerAndReturnError:(NSError**)error;
- (BOOL)unregisterAndReturnError:(NSError**)error;
@end
