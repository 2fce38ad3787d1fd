// SPDX-License-Identifier: MIT
#include "base/Published.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace vantle {
namespace {

using testing::ElementsAre;

class Owner {
 public:
  Published<int, Owner> field{7};
  void assign(int value) { field.assign(value); }
};

class PublishedTest : public testing::Test {
 protected:
  Owner owner;
  std::vector<std::string> heard;

  Observers<>::Callback note(const std::string& who) {
    return [this, who] { heard.push_back(who + " " + std::to_string(owner.field.get())); };
  }
};

TEST_F(PublishedTest, ObserversHearOfEveryAssignmentInTheOrderOfRegistration) {
  const auto first = owner.field.observe(note("first"));
  const auto second = owner.field.observe(note("second"));
  owner.assign(8);
  owner.assign(8);
  EXPECT_THAT(heard, ElementsAre("first 8", "second 8", "first 8", "second 8"));
}

TEST_F(PublishedTest, AnEndedRegistrationHearsNothingMore) {
  auto registration = owner.field.observe(note("gone"));
  registration.reset();
  owner.assign(8);
  EXPECT_THAT(heard, ElementsAre());
}

TEST_F(PublishedTest, AnObserverMayEndItsOwnRegistrationWhileItIsCalled) {
  std::unique_ptr<Registration> own;
  own = owner.field.observe([&] {
    heard.emplace_back("once");
    own.reset();
  });
  owner.assign(8);
  owner.assign(9);
  EXPECT_THAT(heard, ElementsAre("once"));
}

TEST_F(PublishedTest, AnObserverThatAnotherOneEndedIsNotCalledAnyMore) {
  std::unique_ptr<Registration> second;
  const auto first = owner.field.observe([&] { second.reset(); });
  second = owner.field.observe(note("second"));
  owner.assign(8);
  EXPECT_THAT(heard, ElementsAre());
}

TEST_F(PublishedTest, AnObserverRegisteredMeanwhileHearsOfTheNextChangeOnly) {
  std::unique_ptr<Registration> late;
  const auto first = owner.field.observe([&] {
    if (!late) late = owner.field.observe(note("late"));
  });
  owner.assign(8);
  EXPECT_THAT(heard, ElementsAre());
  owner.assign(9);
  EXPECT_THAT(heard, ElementsAre("late 9"));
}

TEST(PublishedLifetime, ARegistrationMayOutliveTheField) {
  std::unique_ptr<Registration> registration;
  {
    Owner owner;
    registration = owner.field.observe([] {});
  }
  registration.reset();
}

} // namespace
} // namespace vantle
