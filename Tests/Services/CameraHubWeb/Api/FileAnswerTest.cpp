#include "Services/CameraHubWeb/Api/FileAnswer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CameraHubWeb {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Pair;

const std::vector<std::uint8_t> tenBytes{0, 1, 2, 3, 4, 5, 6, 7, 8, 9};

FileAnswer file() {
    return {std::make_shared<const std::vector<std::uint8_t>>(tenBytes), "image/png", "tag", "immutable", ""};
}

HttpRequest get(std::map<std::string, std::string, std::less<>> headers = {}) {
    HttpRequest request;
    request.method = "GET";
    request.headers = std::move(headers);
    return request;
}

std::optional<std::string> header(const HttpResponse& response, const std::string& name) {
    for (const auto& [key, value] : response.headers)
        if (key == name)
            return value;
    return std::nullopt;
}

TEST(FileAnswerTest, AllOfTheFileIsSentWithItsTag) {
    const HttpResponse response = answerWithFile(get(), file());
    EXPECT_EQ(response.status, 200);
    EXPECT_EQ(*response.body, tenBytes);
    EXPECT_EQ(response.offset, 0U);
    EXPECT_EQ(response.length, tenBytes.size());
    EXPECT_EQ(header(response, "ETag"), "\"tag\"");
    EXPECT_EQ(header(response, "Content-Type"), "image/png");
    EXPECT_EQ(header(response, "Cache-Control"), "immutable");
    EXPECT_EQ(header(response, "Accept-Ranges"), "bytes");
    EXPECT_EQ(header(response, "Content-Disposition"), std::nullopt);
}

TEST(FileAnswerTest, AClientThatHasTheFileGetsNoBody) {
    for (const char* const tags : {"\"tag\"", "W/\"tag\"", "\"other\", \"tag\"", "*", "\"other\" ,W/\"tag\""}) {
        const HttpResponse response = answerWithFile(get({{"if-none-match", tags}}), file());
        EXPECT_EQ(response.status, 304) << tags;
        EXPECT_EQ(response.body, nullptr) << tags;
        EXPECT_EQ(header(response, "ETag"), "\"tag\"") << tags;
    }
}

TEST(FileAnswerTest, AClientThatHasAnotherFileGetsThisOne) {
    for (const char* const tags : {"\"other\"", "tag", "", ",", "\"tag", "\"tagg\""})
        EXPECT_EQ(answerWithFile(get({{"if-none-match", tags}}), file()).status, 200) << tags;
}

struct RangeCase {
    const char* asked;
    std::size_t offset;
    std::size_t length;
    const char* told;
};

TEST(FileAnswerTest, OneRangeIsSentAlone) {
    for (const RangeCase& range :
         {RangeCase{"bytes=0-0", 0, 1, "bytes 0-0/10"}, RangeCase{"bytes=2-4", 2, 3, "bytes 2-4/10"},
          RangeCase{"bytes=7-", 7, 3, "bytes 7-9/10"}, RangeCase{"bytes=-4", 6, 4, "bytes 6-9/10"},
          RangeCase{"bytes=-99", 0, 10, "bytes 0-9/10"},
          RangeCase{"bytes=5-99999999999999999999999999", 5, 5, "bytes 5-9/10"}}) {
        const HttpResponse response = answerWithFile(get({{"range", range.asked}}), file());
        EXPECT_EQ(response.status, 206) << range.asked;
        EXPECT_EQ(response.offset, range.offset) << range.asked;
        EXPECT_EQ(response.length, range.length) << range.asked;
        EXPECT_EQ(header(response, "Content-Range"), range.told) << range.asked;
    }
}

TEST(FileAnswerTest, ARangeOutsideOfTheFileIsRefusedWithItsLength) {
    for (const char* const range : {"bytes=10-", "bytes=10-20", "bytes=99999999999999999999-", "bytes=-0"}) {
        const HttpResponse response = answerWithFile(get({{"range", range}}), file());
        EXPECT_EQ(response.status, 416) << range;
        EXPECT_EQ(header(response, "Content-Range"), "bytes */10") << range;
        EXPECT_EQ(header(response, "Content-Type"), "application/problem+json") << range;
    }
}

TEST(FileAnswerTest, WhatIsNoSingleRangeGetsAllOfTheFile) {
    for (const char* const range :
         {"bytes=4-2", "bytes=0-1,3-4", "lines=0-1", "bytes=", "bytes=-", "bytes=a-b", "bytes=1-b"})
        EXPECT_EQ(answerWithFile(get({{"range", range}}), file()).status, 200) << range;
}

TEST(FileAnswerTest, ARangeOfAnotherFileGetsAllOfThisOne) {
    EXPECT_EQ(answerWithFile(get({{"range", "bytes=0-1"}, {"if-range", "\"other\""}}), file()).status, 200);
    EXPECT_EQ(answerWithFile(get({{"range", "bytes=0-1"}, {"if-range", "\"tag\""}}), file()).status, 206);
}

TEST(FileAnswerTest, AskingForTheHeadAloneGetsNoRange) {
    HttpRequest request = get({{"range", "bytes=0-1"}});
    request.method = "HEAD";
    EXPECT_EQ(answerWithFile(request, file()).status, 200);
}

TEST(FileAnswerTest, AFileToSaveHasItsName) {
    FileAnswer saved = file();
    saved.saveAs = "Desk_2026.png";
    EXPECT_EQ(header(answerWithFile(get(), saved), "Content-Disposition"), "attachment; filename=\"Desk_2026.png\"");
}

TEST(FileAnswerTest, ANameThatIsNotPlainIsTwoNames) {
    EXPECT_EQ(contentDisposition("inline", "Ger\xC3\xA4t \"1\"\r\n.png"),
              "inline; filename=\"Ger--t -1---.png\"; filename*=UTF-8''Ger%C3%A4t%20%221%22%0D%0A.png");
}

} // namespace
} // namespace CameraHubWeb
