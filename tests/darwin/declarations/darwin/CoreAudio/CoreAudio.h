// SPDX-License-Identifier: MIT
// What is called of CoreAudio, from its documentation; the numbers are four characters each, as that of open
// bindings gives them.
#pragma once
#include <stdint.h>

typedef int32_t OSStatus;
typedef uint32_t UInt32;
typedef UInt32 AudioObjectID;
typedef UInt32 AudioObjectPropertyElement;
typedef UInt32 AudioObjectPropertyScope;
typedef UInt32 AudioObjectPropertySelector;

struct AudioObjectPropertyAddress {
  AudioObjectPropertySelector mSelector;
  AudioObjectPropertyScope mScope;
  AudioObjectPropertyElement mElement;
};
typedef struct AudioObjectPropertyAddress AudioObjectPropertyAddress;

enum {
  kAudioObjectSystemObject = 1,
  kAudioObjectPropertyElementMain = 0,
  kAudioObjectPropertyScopeGlobal = 0x676c6f62,         // glob
  kAudioHardwarePropertyProcessObjectList = 0x70727323, // prs#
  kAudioProcessPropertyIsRunningOutput = 0x7069726f,    // piro
  kAudioProcessPropertyPID = 0x70706964                 // ppid
};

#ifdef __cplusplus
extern "C" {
#endif
OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierSize, const void* qualifier, UInt32* size, void* value);
OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        UInt32 qualifierSize, const void* qualifier, UInt32* size);
#ifdef __cplusplus
}
#endif
