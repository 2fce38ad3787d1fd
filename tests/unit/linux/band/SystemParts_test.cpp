// SPDX-License-Identifier: MIT
#include "platform/linux/band/SystemParts.h"

#include <gtest/gtest.h>

namespace vantle {

namespace {

TEST(SystemParts, AreKnownByTheNamesThatTheKernelKeeps) {
  for (const char* name : {"(sd-pam)", "Hyprland", "at-spi2-registr", "lxqt-session", "sddm-helper",
                           "systemd", "xdg-permission-", "xmonad-x86_64-l"}) {
    EXPECT_TRUE(isSystemPart(name)) << name;
  }
}

TEST(SystemParts, NothingElseIsOne) {
  for (const char* name : {"", " ", "helper", "session", "sddm-", "sddm- helper", "permission-", "firefox"}) {
    EXPECT_FALSE(isSystemPart(name)) << name;
  }
}

} // namespace

} // namespace vantle
