#include "Services/CameraHubWeb/Api/RequestReading.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace CameraHubWeb {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using testing::StartsWith;

HttpRequest query(std::map<std::string, std::string, std::less<>> parameters) {
    HttpRequest request;
    request.query = std::move(parameters);
    return request;
}

HttpRequest post(const std::string& body, const std::string& type = "application/json") {
    HttpRequest request;
    request.body = body;
    request.headers["content-type"] = type;
    return request;
}

/// The problem's kind and detail; empty where nothing was refused.
std::string refusal(const std::function<void()>& read) {
    try {
        read();
    } catch (const Refused& refused) {
        return refused.problem().kind + ": " + refused.problem().detail;
    }
    return "";
}

TEST(RequestReadingTest, AStillWithoutAnExposureHasFiftyMilliseconds) {
    const auto capture = readCaptureQuery(query({}), "desk");
    EXPECT_EQ(capture.camera, "desk");
    EXPECT_EQ(std::get<microseconds>(capture.exposure), milliseconds(50));
    EXPECT_EQ(capture.settle, milliseconds(250));
}

TEST(RequestReadingTest, AQueryHasAnExposureOrAPercent) {
    EXPECT_EQ(std::get<microseconds>(readCaptureQuery(query({{"exposure", "1/50s"}}), "desk").exposure),
              milliseconds(20));
    EXPECT_EQ(std::get<CameraHub::Percent>(readCaptureQuery(query({{"percent", "40"}}), "desk").exposure).value, 40);
    EXPECT_EQ(readCaptureQuery(query({{"settle", "2s"}}), "desk").settle, milliseconds(2000));
    EXPECT_THAT(refusal([] { readCaptureQuery(query({{"exposure", "20ms"}, {"percent", "40"}}), "desk"); }),
                StartsWith("invalid-request: A still has an exposure or a percent"));
}

TEST(RequestReadingTest, AValueOutsideOfItsRangeIsRefusedByItsName) {
    for (const char* const exposure : {"", "0", "0us", "-1ms", "20", "1e3us", "3000s", "nan", "20ms "})
        EXPECT_THAT(refusal([&] { readCaptureQuery(query({{"exposure", exposure}}), "desk"); }),
                    StartsWith("invalid-request: exposure is"))
            << exposure;
    for (const char* const percent : {"", "-1", "101", "4.5", "0x10", "99999999999999999999", "+5", " 5"})
        EXPECT_EQ(refusal([&] { readCaptureQuery(query({{"percent", percent}}), "desk"); }),
                  "invalid-request: percent is a number from 0 to 100.")
            << percent;
    for (const char* const settle : {"", "-250ms", "61s", "2min", "250"})
        EXPECT_THAT(refusal([&] { readCaptureQuery(query({{"settle", settle}}), "desk"); }),
                    StartsWith("invalid-request: settle is"))
            << settle;
    for (const char* const width : {"15", "8193", "-640", "6e2", ""})
        EXPECT_EQ(refusal([&] { readPictureQuery(query({{"width", width}})); }),
                  "invalid-request: width is a number from 16 to 8192.")
            << width;
    for (const char* const quality : {"0", "101"})
        EXPECT_EQ(refusal([&] { readPictureQuery(query({{"quality", quality}})); }),
                  "invalid-request: quality is a number from 1 to 100.")
            << quality;
    for (const char* const fps : {"0", "0.09", "31", "nan", "inf", "-1", "2fps"})
        EXPECT_EQ(refusal([&] { readFramesPerSecond(query({{"fps", fps}})); }),
                  "invalid-request: fps is a number from 0.1 to 30.")
            << fps;
}

TEST(RequestReadingTest, PicturesAreOfTheirOwnWidthAndOfQuality85) {
    EXPECT_EQ(readPictureQuery(query({})).width, std::nullopt);
    EXPECT_EQ(readPictureQuery(query({})).quality, 85);
    EXPECT_EQ(readPictureQuery(query({{"width", "640"}})).width, 640);
    EXPECT_EQ(readFramesPerSecond(query({})), 2);
    EXPECT_EQ(readFramesPerSecond(query({{"fps", "0.5"}})), 0.5);
}

TEST(RequestReadingTest, AParameterThatThereIsNotIsRefused) {
    EXPECT_EQ(refusal([] { checkParameters(query({{"exposre", "20ms"}}), {"exposure"}); }),
              "invalid-request: There is no such parameter: \"exposre\".");
    EXPECT_EQ(refusal([] { checkParameters(query({{"exposure", "20ms"}}), {"exposure"}); }), "");
}

TEST(RequestReadingTest, ABodyHasWhatAStillTakes) {
    const StillOrder order = readStillOrder(
        post(R"({"exposure": "20ms", "settle": "0", "ticket": "a-1"})", "Application/JSON; charset=utf-8"), "desk");
    EXPECT_EQ(order.capture.camera, "desk");
    EXPECT_EQ(std::get<microseconds>(order.capture.exposure), milliseconds(20));
    EXPECT_EQ(order.capture.settle, milliseconds(0));
    EXPECT_EQ(order.ticket, "a-1");
    EXPECT_EQ(std::get<CameraHub::Percent>(readStillOrder(post(R"({"percent": 0})"), "desk").capture.exposure).value,
              0);
}

TEST(RequestReadingTest, ABodyThatIsNoObjectIsRefused) {
    const std::string deep = R"({"exposure": )" + std::string(1000, '[') + std::string(1000, ']') + "}";
    for (const std::string& body :
         {std::string(), std::string("[]"), std::string("7"), std::string("null"), std::string("{"),
          std::string(R"({"exposure": "20ms"} x)"), std::string(R"({"exposure": "20ms", "exposure": "30ms"})"), deep})
        EXPECT_THAT(refusal([&] { readStillOrder(post(body), "desk"); }), StartsWith("invalid-request: The body is"))
            << body.substr(0, 40);
}

TEST(RequestReadingTest, ABodyThatGoesOnBehindANulIsRefused) {
    for (const std::string& end : {std::string(1, '\0'), std::string("\0{}", 3)})
        EXPECT_THAT(refusal([&] { readStillOrder(post(R"({"exposure": "20ms"})" + end), "desk"); }),
                    StartsWith("invalid-request: The body is a JSON object"));
}

TEST(RequestReadingTest, AMemberOfAnotherTypeIsRefusedByItsName) {
    for (const char* const value : {"20", "null", "true", "[\"20ms\"]", "{}"}) {
        EXPECT_EQ(refusal([&] { readStillOrder(post(std::string(R"({"exposure": )") + value + "}"), "desk"); }),
                  "invalid-request: exposure is a text in quotes.")
            << value;
        EXPECT_EQ(refusal([&] { readStillOrder(post(std::string(R"({"ticket": )") + value + "}"), "desk"); }),
                  "invalid-request: ticket is a text in quotes.")
            << value;
    }
    for (const char* const value : {"\"40\"", "null", "true", "40.5", "-1", "101", "1e30", "[40]"})
        EXPECT_EQ(refusal([&] { readStillOrder(post(std::string(R"({"percent": )") + value + "}"), "desk"); }),
                  "invalid-request: percent is a whole number from 0 to 100.")
            << value;
    EXPECT_EQ(refusal([] { readStillOrder(post(R"({"gainInPercent": []})"), "desk"); }),
              "invalid-request: There is no such member: \"gainInPercent\".");
}

TEST(RequestReadingTest, ATicketIsShortAndPlain) {
    for (const std::string& ticket : {std::string(), std::string(65, 'a'), std::string("a b"), std::string("\\u0000")})
        EXPECT_THAT(refusal([&] { readStillOrder(post(R"({"ticket": ")" + ticket + "\"}"), "desk"); }),
                    StartsWith("invalid-request: ticket is"))
            << ticket;
}

TEST(RequestReadingTest, ABodyThatDoesNotSayThatItIsJsonIsRefused) {
    for (const char* const type : {"", "text/plain", "application/x-www-form-urlencoded", "application/jsonp"})
        EXPECT_THAT(refusal([&] { readStillOrder(post("{}", type), "desk"); }), StartsWith("unsupported-media-type"))
            << type;
}

TEST(RequestReadingTest, NoCameraHasAnEmptyNameOrOneWithNul) {
    EXPECT_THAT(refusal([] { readCaptureQuery(query({}), ""); }), StartsWith("no-such-camera"));
    EXPECT_THAT(refusal([] { readCaptureQuery(query({}), std::string("a\0b", 3)); }), StartsWith("no-such-camera"));
}

} // namespace
} // namespace CameraHubWeb
