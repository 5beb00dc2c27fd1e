#include "Platform/Shared/DeviceInformationValue.h"
#include "Platform/Simulated/Scenario/ScenarioReader.h"
#include "Platform/Simulated/Watcher.h"
#include "Platform/Simulated/World/Simulation.h"
#include "Tests/Support/Growth.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

using namespace Platform::Simulated;

namespace {

std::string repeated(std::size_t bytes, const std::function<std::string(std::size_t)>& part) {
    std::string text;
    for (std::size_t i = 0; text.size() < bytes; ++i)
        text += (i == 0 ? "" : ",") + part(i);
    return text;
}

std::string groups(std::size_t bytes, const std::string& name = "group") {
    return R"({"groups": [)" +
           repeated(bytes, [&](std::size_t i) { return R"({"id": ")" + name + std::to_string(i) + R"("})"; }) + "]}";
}

/// One group, whose device has as many properties; each has that value.
std::string properties(std::size_t bytes, const std::string& value) {
    return R"({"groups": [{"id": "g", "watched": {"id": "d", "properties": {)" +
           repeated(bytes,
                    [&](std::size_t i) { return R"("property)" + std::to_string(i) + R"(": ")" + value + '"'; }) +
           "}}}]}";
}

struct Shape {
    const char* name;
    std::string (*text)(std::size_t bytes);
};

class ScenarioGrowthTest : public testing::TestWithParam<Shape> {};

const Shape shapes[] = {
    {"Groups", [](std::size_t bytes) { return groups(bytes); }},
    {"Properties", [](std::size_t bytes) { return properties(bytes, ""); }},
    {"Cameras",
     [](std::size_t bytes) {
         return R"({"cameras": {)" +
                repeated(bytes, [](std::size_t i) { return R"("camera)" + std::to_string(i) + R"(": {})"; }) + "}}";
     }},
    {"Nodes",
     [](std::size_t bytes) {
         return R"({"containers": [)" +
                repeated(bytes, [](std::size_t i) { return R"({"id": "node)" + std::to_string(i) + R"("})"; }) + "]}";
     }},
    {"UnknownMembers",
     [](std::size_t bytes) {
         return "{" + repeated(bytes, [](std::size_t i) { return R"("unknown)" + std::to_string(i) + R"(": 0)"; }) +
                "}";
     }},
    {"OneMemberAgainAndAgain",
     [](std::size_t bytes) { return "{" + repeated(bytes, [](std::size_t) { return R"("groups": [])"; }) + "}"; }},
    {"Brackets", [](std::size_t bytes) { return std::string(bytes, '['); }},
    {"WrongTokens", [](std::size_t bytes) { return R"({"groups": [)" + std::string(bytes, '?'); }},
    {"LineEnds", [](std::size_t bytes) { return std::string(bytes, '\n') + "?"; }},
    {"OneLongText",
     [](std::size_t bytes) {
         return R"({"journal": ")" + repeated(bytes, [](std::size_t) { return R"(\u00e4)"; }) + "?";
     }},
    {"OneLongNumber", [](std::size_t bytes) { return R"({"groups": )" + std::string(bytes, '9') + "}"; }},
};

TEST_P(ScenarioGrowthTest, ReadingTakesTimeInProportionToTheFile) {
    EXPECT_LT(growth([](std::size_t bytes) -> std::function<void()> {
                  return [text = GetParam().text(bytes)] {
                      try {
                          readScenario(text, "/scenario.json");
                      } catch (const winrt::hresult_error&) {
                          // most of them are no scenarios
                      }
                  };
              }),
              linearGrowth);
}

INSTANTIATE_TEST_SUITE_P(Shapes, ScenarioGrowthTest, testing::ValuesIn(shapes),
                         [](const auto& shape) { return std::string(shape.param.name); });

/// The time from one scenario to the next and back, both of that many bytes, for a watcher that reports it.
double growthOfChange(const std::function<std::pair<std::string, std::string>(std::size_t)>& textsOf) {
    return growth([&](std::size_t bytes) -> std::function<void()> {
        const auto texts = textsOf(bytes);
        const auto simulation = std::make_shared<Simulation>();
        const auto watcher = std::make_shared<Watcher>(simulation);
        watcher->Start();
        const auto one = std::make_shared<Scenario>(readScenario(texts.first, "/scenario.json"));
        const auto other = std::make_shared<Scenario>(readScenario(texts.second, "/scenario.json"));
        return [simulation, watcher, one, other] {
            simulation->takeOver(*one);
            simulation->takeOver(*other);
        };
    });
}

TEST(ScenarioChangeGrowthTest, ManyGroupsThatComeAndGoTakeTimeInProportion) {
    EXPECT_LT(growthOfChange([](std::size_t bytes) { return std::pair(groups(bytes), groups(bytes, "other")); }),
              linearGrowth);
}

TEST(ScenarioChangeGrowthTest, ManyPropertiesThatChangeTakeTimeInProportion) {
    EXPECT_LT(
        growthOfChange([](std::size_t bytes) { return std::pair(properties(bytes, "a"), properties(bytes, "b")); }),
        linearGrowth);
}

TEST(ScenarioChangeGrowthTest, ManyPropertiesOfAnUpdateAreTakenOverInProportion) {
    EXPECT_LT(growth([](std::size_t bytes) -> std::function<void()> {
                  const auto device = readScenario(properties(bytes, "a"), "/scenario.json").groups.front().watched;
                  return [device] {
                      Platform::Shared::DeviceInformationValue value(device);
                      value.Update(
                          std::make_shared<Platform::Shared::DeviceInformationUpdateValue>(u"d", device.properties));
                  };
              }),
              linearGrowth);
}

} // namespace
