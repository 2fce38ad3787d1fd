// SPDX-License-Identifier: MIT
#include "platform/linux/band/ThreadMark.h"

namespace vantle {

namespace {

constexpr unsigned classShift = 13; // IOPRIO_CLASS_SHIFT of the kernel
constexpr unsigned idleClass = 3;   // IOPRIO_CLASS_IDLE
constexpr unsigned patternShift = 9;
constexpr unsigned inBand = (idleClass << (classShift - patternShift)) | 0b1011U;
constexpr unsigned leaving = (idleClass << (classShift - patternShift)) | 0b1101U;
constexpr unsigned largestLevel = 7;

} // namespace

std::optional<ThreadMark> ThreadMark::decode(int ioPriority) {
  const auto bits = static_cast<unsigned>(ioPriority);
  const unsigned header = bits >> patternShift;
  const unsigned schedulingClass = (bits >> 2U) & 3U;
  constexpr auto last = static_cast<unsigned>(SchedulingClass::wasBatch);
  if ((header != inBand && header != leaving) || schedulingClass > last) return std::nullopt;
  ThreadMark mark;
  mark.isLeaving = header == leaving;
  mark.ioClass = (bits >> 7U) & 3U;
  mark.ioLevel = (bits >> 4U) & 7U;
  mark.schedulingClass = static_cast<SchedulingClass>(schedulingClass);
  mark.affinityNarrowed = (bits & 2U) != 0;
  mark.sessionLowered = (bits & 1U) != 0;
  return mark;
}

std::optional<ThreadMark> ThreadMark::remembering(int ioPriority) {
  const auto bits = static_cast<unsigned>(ioPriority);
  const unsigned level = bits & ((1U << classShift) - 1);
  if (bits >> classShift > idleClass || level > largestLevel) return std::nullopt;
  ThreadMark mark;
  mark.ioClass = static_cast<std::uint8_t>(bits >> classShift);
  mark.ioLevel = static_cast<std::uint8_t>(level);
  return mark;
}

int ThreadMark::encode() const {
  unsigned bits = (isLeaving ? leaving : inBand) << patternShift;
  bits |= static_cast<unsigned>(ioClass) << 7U;
  bits |= static_cast<unsigned>(ioLevel) << 4U;
  bits |= static_cast<unsigned>(schedulingClass) << 2U;
  bits |= affinityNarrowed ? 2U : 0U;
  bits |= sessionLowered ? 1U : 0U;
  return static_cast<int>(bits);
}

int ThreadMark::originalIoPriority() const {
  return static_cast<int>((static_cast<unsigned>(ioClass) << classShift) | ioLevel);
}

} // namespace vantle
