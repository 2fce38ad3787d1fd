// SPDX-License-Identifier: MIT
// The one type of CoreFoundation that is met here; its documentation says that it is NSDictionary as well.
#pragma once

typedef const struct __CFDictionary* CFDictionaryRef;
