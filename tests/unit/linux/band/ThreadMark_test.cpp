// SPDX-License-Identifier: MIT
#include "platform/linux/band/ThreadMark.h"

#include <gtest/gtest.h>

namespace vantle {

namespace {

constexpr int ioPriorityOf(int ioClass, int level) { return (ioClass << 13) | level; }

TEST(ThreadMark, RemembersEveryIoPriority) {
  for (int ioClass = 0; ioClass <= 3; ++ioClass) {
    for (int level = 0; level <= 7; ++level) {
      const auto mark = ThreadMark::remembering(ioPriorityOf(ioClass, level));
      ASSERT_TRUE(mark);
      EXPECT_EQ(mark->originalIoPriority(), ioPriorityOf(ioClass, level));
    }
  }
}

TEST(ThreadMark, EverythingSurvivesTheKernelsBits) {
  for (unsigned bits = 0; bits < 1024; ++bits) {
    if ((bits >> 2U & 3U) == 3U) continue; // no class
    ThreadMark mark;
    mark.isLeaving = bits >= 512;
    mark.sessionLowered = (bits & 1U) != 0;
    mark.affinityNarrowed = (bits & 2U) != 0;
    mark.schedulingClass = static_cast<ThreadMark::SchedulingClass>((bits >> 2U) & 3U);
    mark.ioLevel = (bits >> 4U) & 7U;
    mark.ioClass = (bits >> 7U) & 3U;
    EXPECT_EQ(ThreadMark::decode(mark.encode()), mark);
    EXPECT_EQ(mark.encode() >> 13, 3) << "not the idle class";
  }
}

TEST(ThreadMark, IsNotWhatOthersSet) {
  for (int ioClass = 0; ioClass <= 3; ++ioClass) {
    // Levels, and the hints that the kernel defines: up to 7, shifted by 3.
    for (int data = 0; data < 64; ++data) EXPECT_FALSE(ThreadMark::decode(ioPriorityOf(ioClass, data)));
  }
  EXPECT_FALSE(ThreadMark::decode(ioPriorityOf(3, 0x1fff)));
  EXPECT_FALSE(ThreadMark::decode(ThreadMark{}.encode() | 3 << 2)) << "no scheduling class";
  EXPECT_FALSE(ThreadMark::decode(ThreadMark{}.encode() & ~(1 << 13))) << "best effort";
  EXPECT_FALSE(ThreadMark::decode(-1));
}

TEST(ThreadMark, RefusesWhatItCannotRemember) {
  EXPECT_FALSE(ThreadMark::remembering(ioPriorityOf(2, 8)));
  EXPECT_FALSE(ThreadMark::remembering(ioPriorityOf(4, 0)));
  EXPECT_FALSE(ThreadMark::remembering(ThreadMark{}.encode()));
}

} // namespace

} // namespace vantle
