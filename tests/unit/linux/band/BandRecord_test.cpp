// SPDX-License-Identifier: MIT
#include "platform/linux/band/BandRecord.h"

#include <gtest/gtest.h>
#include <limits>

namespace vantle {
namespace {

constexpr auto notSet = std::numeric_limits<std::uint64_t>::max();

struct Case {
  const char* what;
  const char* bytes;
  BandRecord record;
};

BandRecord unit(const char* name, const char* path, std::uint64_t weight) {
  return {.units = {{{name, path}, weight}}, .sessions = {}, .sets = {}};
}

BandRecord sessions(std::set<std::int64_t> numbers) {
  return {.units = {}, .sessions = std::move(numbers), .sets = {}};
}

BandRecord sets(const char* list) {
  return {.units = {}, .sessions = {}, .sets = {ProcessorSet::parse(list).value()}};
}

class ReadBandRecord : public testing::TestWithParam<Case> {};

TEST_P(ReadBandRecord, HoldsWhatCanBeUnderstood) {
  EXPECT_EQ(decodeBandRecord(GetParam().bytes, "b"), GetParam().record) << GetParam().bytes;
}

INSTANTIATE_TEST_SUITE_P(
    Table, ReadBandRecord,
    testing::Values(
        Case{"nothing", "", {}}, Case{"noJson", "{", {}}, Case{"noObject", R"(["boot"])", {}},
        Case{"noBoot", R"({"sessions":[1]})", {}}, Case{"anotherBoot", R"({"boot":"c","sessions":[1]})", {}},
        Case{"bootOfAnotherKind", R"({"boot":1,"sessions":[1]})", {}},
        Case{"empty", R"({"boot":"b","units":[],"sessions":[],"sets":[]})", {}},
        Case{"onlyBoot", R"({"boot":"b"})", {}},
        Case{"unit", R"({"boot":"b","units":[{"name":"a","path":"/a","weight":7}]})", unit("a", "/a", 7)},
        Case{"unitWithoutWeight",
             R"({"boot":"b","units":[{"name":"a","path":"/a","weight":18446744073709551615}]})",
             unit("a", "/a", notSet)},
        Case{"unitsThatLackSomething",
             R"({"boot":"b","units":[{"name":"a"},{"name":"a","path":"/a"},{"path":"/a","weight":1},7,null,
                 {"name":"a","path":"/a","weight":-1},{"name":"a","path":"/a","weight":1.5},
                 {"name":1,"path":"/a","weight":1},{"name":"z","path":"/z","weight":1}]})",
             unit("z", "/z", 1)},
        Case{"unitsOfAnotherKind", R"({"boot":"b","units":{"name":"a"},"sessions":[4]})", sessions({4})},
        Case{"sessions",
             R"({"boot":"b","sessions":[3,3,-2,"x",1.5,null,9223372036854775807,9223372036854775808]})",
             sessions({-2, 3, std::numeric_limits<std::int64_t>::max()})},
        Case{"sets", R"({"boot":"b","sets":["0-1,3","","x",7,"1-"]})", sets("0-1,3")}),
    [](const auto& one) { return std::string(one.param.what); });

TEST(WrittenBandRecord, IsReadAsItWas) {
  BandRecord record = unit("a.scope", "/x/a.scope", notSet);
  record.units.push_back({{"b.scope", "/x/b.scope"}, 100});
  record.sessions = {1, 2, 3};
  record.sets = {ProcessorSet::parse("0-3").value(), ProcessorSet::parse("1").value()};
  EXPECT_EQ(decodeBandRecord(encodeBandRecord(record, "b"), "b"), record);
  EXPECT_TRUE(decodeBandRecord(encodeBandRecord(record, "b"), "c").empty());
}

TEST(WrittenBandRecord, IsTextWhateverAUnitIsCalled) {
  const BandRecord read = decodeBandRecord(encodeBandRecord(unit("a\xFF.scope", "/\"\n", 1), "b"), "b");
  EXPECT_EQ(read, unit("a\xEF\xBF\xBD.scope", "/\"\n", 1));
}

} // namespace
} // namespace vantle
