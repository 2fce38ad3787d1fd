// SPDX-License-Identifier: MIT
#include "platform/darwin/audio/CoreAudioActivity.h"

#include "platform/darwin/process/SystemValue.h"

#include <CoreAudio/CoreAudio.h>
#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string_view>
#include <vector>

namespace vantle {

namespace {

constexpr std::chrono::milliseconds longestAnswer{200};
constexpr int firstMajor = 14;
constexpr int firstMinor = 2;

AudioObjectPropertyAddress addressOf(AudioObjectPropertySelector selector) {
  return {selector, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMain};
}

// In bytes.
UInt32 sizeOfProcessObjects() {
  const AudioObjectPropertyAddress address = addressOf(kAudioHardwarePropertyProcessObjectList);
  UInt32 size = 0;
  if (::AudioObjectGetPropertyDataSize(kAudioObjectSystemObject, &address, 0, nullptr, &size) != 0) return 0;
  return size;
}

std::vector<AudioObjectID> processObjects() {
  const AudioObjectPropertyAddress address = addressOf(kAudioHardwarePropertyProcessObjectList);
  UInt32 size = sizeOfProcessObjects();
  std::vector<AudioObjectID> objects(size / sizeof(AudioObjectID));
  if (objects.empty()) return {};
  size = static_cast<UInt32>(objects.size() * sizeof(AudioObjectID));
  if (::AudioObjectGetPropertyData(kAudioObjectSystemObject, &address, 0, nullptr, &size, objects.data()) !=
      0) {
    return {};
  }
  objects.resize(std::min(objects.size(), size / sizeof(AudioObjectID))); // some may have gone meanwhile
  return objects;
}

// Absent for an object that has gone, and for a value of another size.
template <class Value>
std::optional<Value> valueOf(AudioObjectID object, AudioObjectPropertySelector selector) {
  const AudioObjectPropertyAddress address = addressOf(selector);
  Value value{};
  UInt32 size = sizeof value;
  const OSStatus status = ::AudioObjectGetPropertyData(object, &address, 0, nullptr, &size, &value);
  if (status != 0 || size != sizeof value) return std::nullopt;
  return value;
}

std::set<Pid> heardProcesses() {
  std::set<Pid> heard;
  for (const AudioObjectID object : processObjects()) {
    if (valueOf<UInt32>(object, kAudioProcessPropertyIsRunningOutput) != 1U) continue;
    const std::optional<Pid> pid = valueOf<Pid>(object, kAudioProcessPropertyPID);
    if (pid && *pid >= 1) heard.insert(*pid);
  }
  return heard;
}

} // namespace

bool CoreAudioActivity::isAvailable() const {
  const std::string version = systemText("kern.osproductversion").value_or(""); // "14.5", "15.0.1"
  const char* const end = version.data() + version.size();
  int major = 0;
  int minor = 0;
  const auto [dot, error] = std::from_chars(version.data(), end, major);
  if (error != std::errc{}) return false;
  if (dot != end) std::from_chars(dot + 1, end, minor);
  return major > firstMajor || (major == firstMajor && minor >= firstMinor);
}

// A program's first question connects it to the server and loads what that has been extended with, which may
// take longer than a question may: in the first Boost, music would stutter. It costs the memory of the
// connection that much sooner. A question that comes meanwhile waits for it within the library, and is not
// one too many here.
void CoreAudioActivity::askAhead() const {
  if (isAvailable()) BoundedWait(1).answer(std::chrono::milliseconds(0), sizeOfProcessObjects);
}

std::set<Pid> CoreAudioActivity::runningOutput() {
  return m_wait.answer(longestAnswer, heardProcesses).value_or(std::set<Pid>{});
}

} // namespace vantle
