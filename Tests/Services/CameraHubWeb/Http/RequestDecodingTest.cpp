#include "Services/CameraHubWeb/Http/RequestDecoding.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using namespace CameraHubWeb;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

TEST(RequestDecodingTest, ThePathIsPartedBeforeItIsDecoded) {
    EXPECT_THAT(decodeTarget("/").segments, IsEmpty());
    EXPECT_THAT(decodeTarget("/a/b").segments, ElementsAre("a", "b"));
    EXPECT_THAT(decodeTarget("/a%2Fb/c%25d").segments, ElementsAre("a/b", "c%d"));
    EXPECT_THAT(decodeTarget("/K%C3%BCche/%f0%9f%93%b7").segments, ElementsAre("Küche", "📷"));
    EXPECT_THAT(decodeTarget("/a//b/").segments, ElementsAre("a", "", "b", ""));
    EXPECT_THAT(decodeTarget("/../a+b").segments, ElementsAre("..", "a+b"));
}

TEST(RequestDecodingTest, TheQueryIsDecodedAsFormsSendIt) {
    EXPECT_THAT(decodeTarget("/?").query, IsEmpty());
    EXPECT_THAT(decodeTarget("/a?x=1%2F4+s&download&y=a=b&&z=").query,
                ElementsAre(Pair("download", ""), Pair("x", "1/4 s"), Pair("y", "a=b"), Pair("z", "")));
    EXPECT_THAT(decodeTarget("/a?x=%26%3D%2B?/").query, ElementsAre(Pair("x", "&=+?/")));
    EXPECT_THAT(decodeTarget("/a?x=1").segments, ElementsAre("a"));
}

TEST(RequestDecodingTest, WhatCannotBeDecodedIsRefused) {
    for (const char* const target :
         {"",        "*",         "a",      "http://host/a", "host:443", "/%",      "/%4",        "/%zz",
          "/%+1",    "/%0",       "/a%00b", "/?a=%00",       "/%ff",     "/%c0%af", "/%ed%a0%80", "/%e2%82",
          "/?%ff=1", "/?a=1&a=2", "/?a&a",  "/?a&%61",       "/a#b",     "/a b",    "/a\tb",      "/K\xc3\xbc"})
        EXPECT_THROW(decodeTarget(target), std::invalid_argument) << target;
}

TEST(RequestDecodingTest, OnlyShortestFormsOfCharactersThatThereAreAreUtf8) {
    for (const char* const good : {"", "a", "\x7f", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf",
                                   "\xee\x80\x80", "\xef\xbf\xbf", "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf"})
        EXPECT_TRUE(isUtf8(good)) << testing::PrintToString(std::string(good));
    for (const char* const bad :
         {"\x80", "\xbf", "\xc0\x80", "\xc1\xbf", "\xc2", "\xc2 ", "\xe0\x9f\xbf", "\xe0\xa0", "\xe1\x80\xc0",
          "\xed\xa0\x80", "\xf0\x8f\xbf\xbf", "\xf0\x90\x80", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xff"})
        EXPECT_FALSE(isUtf8(bad)) << testing::PrintToString(std::string(bad));
}

} // namespace
