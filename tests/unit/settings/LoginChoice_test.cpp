// SPDX-License-Identifier: MIT
#include "settings/model/LoginChoice.h"

#include <gtest/gtest.h>
#include <string>

namespace vantle {

namespace {

// A system that may refuse, and writes down what it was asked for.
class FakeLoginItem final : public LoginItem {
 public:
  bool enabled = false;
  bool refuses = false;
  bool contradictsItself = false; // refuses, and reports the other state each time
  std::string asked;

  bool isEnabled() const override { return enabled; }
  bool registerItem() override { return take(true); }
  bool unregisterItem() override { return take(false); }

 private:
  bool take(bool on) {
    asked += on ? '+' : '-';
    if (contradictsItself) enabled = !on;
    if (refuses || contradictsItself) return false;
    enabled = on;
    return true;
  }
};

TEST(LoginChoice, OpensInTheStateOfTheSystem) {
  FakeLoginItem item;
  item.enabled = true;
  LoginChoice choice(item);
  EXPECT_TRUE(choice.openAtLogin.get());
  item.enabled = false;
  choice.reload();
  EXPECT_FALSE(choice.openAtLogin.get());
  EXPECT_EQ(item.asked, "");
}

TEST(LoginChoice, AsksTheSystemOncePerChange) {
  FakeLoginItem item;
  LoginChoice choice(item);
  choice.set(true);
  choice.set(true);
  EXPECT_TRUE(item.enabled);
  choice.set(false);
  EXPECT_FALSE(item.enabled);
  EXPECT_EQ(item.asked, "+-");
}

TEST(LoginChoice, FailedRegistrationGoesBackToOffAndAsksForThat) {
  FakeLoginItem item;
  item.refuses = true;
  LoginChoice choice(item);
  choice.set(true);
  EXPECT_FALSE(choice.openAtLogin.get());
  EXPECT_EQ(item.asked, "+-");
}

TEST(LoginChoice, FailedUnregistrationGoesBackToOn) {
  FakeLoginItem item;
  item.enabled = true;
  item.refuses = true;
  LoginChoice choice(item);
  choice.set(false);
  EXPECT_TRUE(choice.openAtLogin.get());
  EXPECT_EQ(item.asked, "-+");
}

TEST(LoginChoice, SystemThatContradictsItselfIsNotAskedForEver) {
  FakeLoginItem item;
  item.contradictsItself = true;
  LoginChoice choice(item);
  choice.set(true);
  EXPECT_EQ(item.asked, "+-");
  EXPECT_EQ(choice.openAtLogin.get(), item.enabled);
}

} // namespace

} // namespace vantle
