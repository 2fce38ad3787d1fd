// SPDX-License-Identifier: MIT
#include "update/Answer.h"

#include <gtest/gtest.h>

namespace vantle {

namespace {

const std::string host = "vantle.example";
const std::string page = "https://vantle.example/get";
const update::State unexpected = update::Failed{"The update server sent an unexpected answer."};

Answer answered(std::string body, int status = 200) { return {false, status, std::move(body)}; }
Answer feed(const std::string& version, const std::string& url = page) {
  return answered(R"({"version": ")" + version + R"(", "url": ")" + url + R"("})");
}

TEST(AnswerMeaning, NewerVersionIsAvailable) {
  EXPECT_EQ(meaningOf(feed("v1.10"), "1.9", host), (update::State{update::Available{"1.10", page}}));
  EXPECT_EQ(meaningOf(feed(" V3 "), "2.9", host), (update::State{update::Available{"3", page}}));
}

TEST(AnswerMeaning, HostOfThePageIsComparedInLowerCase) {
  const std::string loud = "https://VANTLE.EXAMPLE/get";
  EXPECT_EQ(meaningOf(feed("2", loud), "1", host), (update::State{update::Available{"2", loud}}));
}

TEST(AnswerMeaning, SameOrOlderVersionIsUpToDateWhateverThePage) {
  EXPECT_EQ(meaningOf(feed("1.2.0"), "1.2", host), update::State{update::UpToDate{}});
  EXPECT_EQ(meaningOf(feed("2.0-beta"), "2.0", host), update::State{update::UpToDate{}});
  EXPECT_EQ(meaningOf(feed("1", "ftp://elsewhere"), "1", host), update::State{update::UpToDate{}});
}

TEST(AnswerMeaning, BuildWithoutVersionFindsAnythingNewer) {
  EXPECT_EQ(meaningOf(feed("0.0.1"), "0", host), (update::State{update::Available{"0.0.1", page}}));
  EXPECT_EQ(meaningOf(feed("0.0"), "0", host), update::State{update::UpToDate{}});
}

TEST(AnswerMeaning, CurrentVersionIsNotTrimmed) {
  EXPECT_EQ(meaningOf(feed("1"), "v9", host), (update::State{update::Available{"1", page}}));
}

TEST(AnswerMeaning, PageElsewhereIsUnexpected) {
  for (const char* url : {"http://vantle.example/get", "HTTPS://vantle.example/get", "https://evil.example/",
                          "https://www.vantle.example/", "", "not an address"})
    EXPECT_EQ(meaningOf(feed("9", url), "1", host), unexpected) << url;
}

TEST(AnswerMeaning, OtherStatusIsUnexpectedEvenWithAGoodBody) {
  for (const int status : {201, 204, 206, 301, 304, 404, 500}) {
    Answer answer = feed("9");
    answer.status = status;
    EXPECT_EQ(meaningOf(answer, "1", host), unexpected) << status;
  }
  Answer notHttp = feed("9");
  notHttp.status.reset();
  EXPECT_EQ(meaningOf(notHttp, "1", host), unexpected);
}

TEST(AnswerMeaning, BodyThatIsNoFeedIsUnexpected) {
  for (const char* body :
       {"", " ", "null", "[]", "\"1\"", "{}", R"({"version": "9"})", R"({"url": "https://vantle.example/"})",
        R"({"version": 9, "url": "https://vantle.example/"})", R"({"version": "9", "url": null})",
        R"({"version": "9", "url": "https://vantle.example/"},)", R"({"version": "9", "url": "https://va)",
        "{\"version\": \"\xff\", \"url\": \"https://vantle.example/\"}", "<html>"})
    EXPECT_EQ(meaningOf(answered(body), "1", host), unexpected) << body;
  EXPECT_EQ(meaningOf(answered(std::string(1 << 20, '[')), "1", host), unexpected);
}

TEST(AnswerMeaning, OtherMembersAreIgnored) {
  const Answer answer = answered(R"({"a": [1, {}], "url": "https://vantle.example/get", "version": "9"})");
  EXPECT_EQ(meaningOf(answer, "1", host), (update::State{update::Available{"9", page}}));
}

TEST(AnswerMeaning, TransportFailureOutranksEverythingElse) {
  Answer answer = feed("9");
  answer.transportFailed = true;
  EXPECT_EQ(meaningOf(answer, "1", host),
            (update::State{update::Failed{"Couldn't reach the update server."}}));
}

} // namespace

} // namespace vantle
