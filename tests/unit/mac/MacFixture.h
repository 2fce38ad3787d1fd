// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/QtEventLoop.h"
#import "tests/unit/mac/StandInAppKit.h"

#include <QCoreApplication>
#include <QEvent>
#include <gtest/gtest.h>

namespace vantle {

using Calls = std::vector<std::string>;

// What is due now has been done.
inline void turn() {
  for (int times = 0; times < 5; ++times) QCoreApplication::processEvents();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// Of the desktop what is under test, on stand-ins for the system's classes.
class MacTest : public testing::Test {
 protected:
  MacTest() = default;
  ~MacTest() override {
    turn();
    [m_pool release];
    EXPECT_EQ(appKit.objects(), 0) << "not released";
  }
  MacTest(const MacTest&) = delete;
  MacTest& operator=(const MacTest&) = delete;

  StandInAppKit appKit;
  QtEventLoop loop;

 private:
  NSAutoreleasePool* m_pool = [[NSAutoreleasePool alloc] init];
};

} // namespace vantle
