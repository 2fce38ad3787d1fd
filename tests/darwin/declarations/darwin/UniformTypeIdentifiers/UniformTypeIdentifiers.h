// SPDX-License-Identifier: MIT
// What is called of UniformTypeIdentifiers, from its documentation.
#pragma once
#import <Foundation/Foundation.h>

@interface UTType : NSObject
@end

FOUNDATION_EXPORT UTType* const UTTypeApplicationBundle;
