// SPDX-License-Identifier: MIT
// Constants for whoever reads them, that can only be set here when the classes are there. The declarations
// say otherwise, so this source does without them.
extern "C" {
extern void* UTTypeApplicationBundle;
void* UTTypeApplicationBundle = nullptr;
void setApplicationBundleType(void* type);
void setApplicationBundleType(void* type) { UTTypeApplicationBundle = type; }
}
