#include "Services/CameraHubWeb/Http/Sessions.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

using namespace CameraHubWeb;
using std::chrono::seconds;

namespace {

const Sessions::Time start;

TEST(SessionsTest, NoTwoAreAlike) {
    Sessions sessions;
    std::set<std::string> ids;
    for (int i = 0; i < 500; ++i)
        ids.insert(sessions.begin(start));
    EXPECT_EQ(ids.size(), 500U);
}

TEST(SessionsTest, OneTooManyEndsTheOldest) {
    Sessions sessions;
    std::vector<std::string> ids;
    for (std::size_t i = 0; i <= Sessions::most; ++i)
        ids.push_back(sessions.begin(start + seconds(i)));
    const Sessions::Time now = start + seconds(2000);
    EXPECT_FALSE(sessions.has(ids[0], now));
    EXPECT_TRUE(sessions.has(ids[1], now));
    EXPECT_TRUE(sessions.has(ids.back(), now));
}

TEST(SessionsTest, ThoseThatAreOverTakeNoRoom) {
    Sessions sessions;
    const std::string first = sessions.begin(start);
    for (std::size_t i = 1; i < Sessions::most; ++i)
        sessions.begin(start - Sessions::lifetime / 2);
    sessions.begin(start + Sessions::lifetime / 2);
    EXPECT_TRUE(sessions.has(first, start + Sessions::lifetime / 2));
}

TEST(SessionsTest, WrongTokensAreForgottenAfterTheirPeriod) {
    WrongTokens wrong;
    for (int i = 0; i < WrongTokens::most - 1; ++i)
        wrong.add("a", start);
    EXPECT_EQ(wrong.waitFor("a", start), seconds(0));
    wrong.add("a", start + WrongTokens::period); // the first of a new period
    EXPECT_EQ(wrong.waitFor("a", start + WrongTokens::period), seconds(0));
    for (int i = 1; i < WrongTokens::most; ++i)
        wrong.add("a", start + WrongTokens::period + std::chrono::milliseconds(500));
    EXPECT_EQ(wrong.waitFor("a", start + WrongTokens::period + std::chrono::milliseconds(500)), seconds(60));
    EXPECT_EQ(wrong.waitFor("a", start + 2 * WrongTokens::period), seconds(0));
}

TEST(SessionsTest, TheAddressesOfWrongTokensAreBounded) {
    WrongTokens wrong;
    for (int i = 0; i < WrongTokens::most; ++i)
        wrong.add("oldest", start);
    for (std::size_t i = 1; i < WrongTokens::mostAddresses; ++i)
        wrong.add(std::to_string(i), start + seconds(1));
    EXPECT_EQ(wrong.waitFor("oldest", start + seconds(2)), seconds(58));
    wrong.add("one more", start + seconds(2));
    EXPECT_EQ(wrong.waitFor("oldest", start + seconds(2)), seconds(0));
}

} // namespace
