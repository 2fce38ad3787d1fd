// SPDX-License-Identifier: MIT
#include "base/Json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string writtenAgain(const char* bytes) {
  const std::optional<Json> value = Json::parse(bytes);
  return value ? value->text() : "absent";
}

TEST(JsonText, IsWhatWasRead) {
  for (const char* text : {"null", "true", "false", "0", "-1", "1.5", "\"a\"", "[]", "{}",
                           "18446744073709551615", "-9223372036854775808", "[1,[2,{\"b\":null,\"a\":[]}]]"}) {
    EXPECT_EQ(writtenAgain(text), text);
  }
  EXPECT_EQ(writtenAgain(R"({"z":1,"a":2})"), R"({"z":1,"a":2})") << "in the order in which it was written";
  EXPECT_EQ(writtenAgain(R"({"a":1,"b":2,"a":3})"), R"({"a":3,"b":2})") << "the later counts";
}

TEST(JsonText, IsAbsentForEverythingElse) {
  for (const char* text : {"", " ", "{", "[1,]", "{\"a\"}", "nul", "1 2", "\"\xFF\"", "[1] x"}) {
    EXPECT_EQ(writtenAgain(text), "absent") << text;
  }
}

TEST(JsonText, MayBeNestedToALimit) {
  const auto nested = [](int depth) {
    const auto levels = static_cast<std::size_t>(depth);
    return std::string(levels, '[') + std::string(levels, ']');
  };
  EXPECT_TRUE(Json::parse(nested(Json::deepestNesting)).has_value());
  EXPECT_FALSE(Json::parse(nested(Json::deepestNesting + 2)).has_value());
  EXPECT_FALSE(Json::parse(nested(100'000)).has_value());
}

TEST(JsonText, IsCleanedOfWhatIsNoText) { EXPECT_EQ(Json("a\xFFz").text(), "\"a\xEF\xBF\xBDz\""); }

TEST(JsonText, CanBeIndented) {
  EXPECT_EQ(Json(Json::Object{{"a", Json::Array{true}}}).text(2), "{\n  \"a\": [\n    true\n  ]\n}");
}

TEST(JsonNumbers, AreReadAsFarAsTheyFit) {
  const Json largest = *Json::parse("18446744073709551615");
  EXPECT_EQ(largest.asUnsigned(), std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(largest.asInteger(), std::nullopt);
  const Json negative = *Json::parse("-1");
  EXPECT_EQ(negative.asUnsigned(), std::nullopt);
  EXPECT_EQ(negative.asInteger(), -1);
  EXPECT_EQ(Json::parse("7")->asInteger(), 7);
  EXPECT_EQ(Json(std::int64_t{7}).asUnsigned(), 7U);
  EXPECT_EQ(Json::parse("1.0")->asInteger(), std::nullopt);
  EXPECT_EQ(Json::parse("\"1\"")->asInteger(), std::nullopt);
}

TEST(JsonMembers, AreAbsentWhenTheyAreOfAnotherKind) {
  const Json record = *Json::parse(R"({"text":"t","number":5,"list":["x"],"none":null})");
  EXPECT_EQ(record.textAt("text"), "t");
  EXPECT_EQ(record.unsignedAt("number"), 5U);
  EXPECT_EQ(record.integerAt("number"), 5);
  EXPECT_THAT(record.arrayAt("list"), ElementsAre(Json("x")));
  for (const char* key : {"none", "number", "list", "missing"}) EXPECT_EQ(record.textAt(key), std::nullopt);
  for (const char* key : {"none", "text", "missing"}) EXPECT_EQ(record.unsignedAt(key), std::nullopt);
  EXPECT_THAT(record.arrayAt("text"), IsEmpty());
  EXPECT_EQ(Json("no object").find("text"), nullptr);
  EXPECT_EQ(Json(Json::Array{"text"}).textAt("text"), std::nullopt);
}

TEST(JsonMembers, CanBeSetAndErased) {
  Json record = Json::Object{};
  record.set("a", "1");
  record.set("b", true);
  record.set("a", "2");
  EXPECT_EQ(record.text(), R"({"a":"2","b":true})");
  record.erase("a");
  record.erase("missing");
  EXPECT_EQ(record.text(), R"({"b":true})");
}

} // namespace
} // namespace vantle
