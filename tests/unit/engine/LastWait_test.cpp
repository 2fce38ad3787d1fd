// SPDX-License-Identifier: MIT
// How long the program waits for its last changes.
#include "engine/LastWait.h"

#include <gtest/gtest.h>
#include <vector>

namespace vantle {

namespace {

// Owes what it is told, one number for each wait.
class OwingBand final : public BackgroundBand {
 public:
  explicit OwingBand(std::vector<std::size_t> afterEachWait) : m_after(std::move(afterEachWait)) {}

  bool enterBackgroundBand(Pid /*pid*/) override { return false; }
  bool leaveBackgroundBand(Pid /*pid*/) override { return true; }
  std::optional<bool> isInBackgroundBand(Pid /*pid*/) const override { return false; }
  bool settle(std::chrono::milliseconds limit) override {
    waited += limit;
    if (waits < m_after.size()) m_owed = m_after[waits++];
    return m_owed == 0 && !isBeyondHelp;
  }
  std::size_t owed() const override { return m_owed; }

  std::chrono::milliseconds waited{};
  std::size_t waits = 0;
  bool isBeyondHelp = false;

 private:
  std::vector<std::size_t> m_after;
  std::size_t m_owed = 1000;
};

TEST(LastWait, SaysNothingWhenAllIsBackAtOnce) {
  OwingBand band({0});
  EXPECT_TRUE(waitUntilAllIsBack(band, [](std::size_t) { FAIL(); }));
}

TEST(LastWait, LastsAsLongAsItGetsLess) {
  std::vector<std::size_t> slowly;
  for (std::size_t left = 40; left > 0; --left) slowly.insert(slowly.end(), 15, left);
  slowly.push_back(0);
  OwingBand band(slowly);
  std::vector<std::size_t> told;
  EXPECT_TRUE(waitUntilAllIsBack(band, [&told](std::size_t left) { told.push_back(left); }));
  EXPECT_EQ(band.waits, slowly.size());
  slowly.pop_back();
  EXPECT_EQ(told, slowly);
}

TEST(LastWait, EndsWhenNothingMovesAnyMore) {
  OwingBand band({7, 6});
  EXPECT_FALSE(waitUntilAllIsBack(band, [](std::size_t) {}));
  EXPECT_GE(band.waited, std::chrono::seconds(20));
  EXPECT_LE(band.waited, std::chrono::seconds(30));
}

// Whoever comes after those that were given back is no progress.
TEST(LastWait, EndsWhenThereAreMoreAgainAndAgain) {
  std::vector<std::size_t> restless;
  for (int count = 0; count < 1000; ++count) restless.push_back(count % 2 == 0 ? 1 : 2);
  OwingBand band(restless);
  EXPECT_FALSE(waitUntilAllIsBack(band, [](std::size_t) {}));
  EXPECT_LE(band.waited, std::chrono::seconds(30));
}

TEST(LastWait, EndsWhenWaitingIsOfNoUse) {
  OwingBand band({0});
  band.isBeyondHelp = true;
  EXPECT_FALSE(waitUntilAllIsBack(band, [](std::size_t) { FAIL(); }));
  EXPECT_EQ(band.waits, 1U);
}

} // namespace

} // namespace vantle
