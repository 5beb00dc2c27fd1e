#include "Framework/CXX/Diagnostics/VariableSubstitution.h"

#include "Tests/Support/Growth.h"
#include "Tests/Support/ScopedEnvironment.h"

#include <gtest/gtest.h>
#include <log4cxx/helpers/optionconverter.h>
#include <log4cxx/helpers/properties.h>

#include <functional>

namespace {

using Halden::LoggingSettings;
using log4cxx::helpers::OptionConverter;
using log4cxx::helpers::Properties;

std::string repeated(const std::string& text, int times) {
    std::string all;
    for (int time = 0; time < times; ++time)
        all += text;
    return all;
}

std::string replaced(const std::string& value, LoggingSettings others = {}) {
    others["value"] = value;
    return Halden::withVariablesReplaced(others).at("value");
}

TEST(VariableSubstitutionTest, DoesAsTheLibraryDoes) {
    const ScopedEnvironment folder("HUB_TEST_FOLDER", "/logs");
    const ScopedEnvironment missing("HUB_TEST_MISSING", std::nullopt);
    const LoggingSettings settings = {
        {"plain", "text"}, {"folder", "${HUB_TEST_FOLDER}/x"}, {"twice", "${folder}:${folder}"},
        {"empty", ""},     {"HUB_TEST_FOLDER", "overridden"},
    };
    Properties properties;
    for (const auto& [name, value] : settings)
        properties.setProperty(name, value);
    for (const std::string value : {"",
                                    "text",
                                    "$",
                                    "{}",
                                    "}",
                                    "$}",
                                    "$ {plain}",
                                    "${plain}",
                                    "<${plain}>",
                                    "${twice}",
                                    "${HUB_TEST_FOLDER}/a.log",
                                    "${HUB_TEST_MISSING}",
                                    "${empty}",
                                    "${}",
                                    "${ plain}",
                                    "${plain}}",
                                    "$${plain}",
                                    "${${plain}}",
                                    "${plain}${",
                                    "${",
                                    "a${plain",
                                    "${plain}$",
                                    "${user.dir}"})
        EXPECT_EQ(replaced(value, settings), OptionConverter::findAndSubst("value",
                                                                           [&]() -> Properties& {
                                                                               properties.setProperty("value", value);
                                                                               return properties;
                                                                           }()))
            << value;
}

TEST(VariableSubstitutionTest, TheEnvironmentsValuesHaveNoVariablesInThem) {
    const ScopedEnvironment folder("HUB_TEST_FOLDER", "/${HUB_TEST_FOLDER}/${x");
    EXPECT_EQ(replaced("${HUB_TEST_FOLDER}.log"), "/${HUB_TEST_FOLDER}/${x.log");
}

TEST(VariableSubstitutionTest, AValueThatRefersToItselfIsAnError) {
    EXPECT_THROW(replaced("${value}"), Halden::EndlessValue);
    EXPECT_THROW(replaced("${a}", {{"a", "${b}"}, {"b", "x${a}"}}), Halden::EndlessValue);
    EXPECT_THROW(replaced("${a}${", {{"a", "${value}"}}), Halden::EndlessValue);
}

TEST(VariableSubstitutionTest, AValueThatGrowsWithoutMeasureIsAnError) {
    for (const std::string end : {"", "x"}) {
        LoggingSettings doubling = {{"v60", end}};
        for (int link = 0; link < 60; ++link) {
            const std::string next = "${v" + std::to_string(link + 1) + "}";
            doubling["v" + std::to_string(link)] = next + next;
        }
        EXPECT_THROW(replaced("${v0}", doubling), Halden::EndlessValue);
    }
}

TEST(VariableSubstitutionTest, AChainOfSomeLengthIsNone) {
    LoggingSettings chain = {{"v50", "end"}};
    for (int link = 0; link < 50; ++link)
        chain["v" + std::to_string(link)] = "${v" + std::to_string(link + 1) + "}";
    EXPECT_EQ(replaced("${v0}", chain), "end");
}

LoggingSettings settingsOfSize(std::size_t bytes, const std::function<std::string(std::size_t)>& valueOf) {
    LoggingSettings settings;
    for (std::size_t size = 0; size < bytes;) {
        const std::string value = valueOf(settings.size());
        settings.emplace(std::to_string(settings.size()), value);
        size += value.size();
    }
    return settings;
}

TEST(VariableSubstitutionTest, TheTimeGrowsNoFasterThanTheSettings) {
    const std::map<std::string, std::function<std::string(std::size_t)>> shapes = {
        {"chains", [](std::size_t i) { return i % 90 == 0 ? "end" : "${" + std::to_string(i - 1) + "}"; }},
        {"many in a value", [](std::size_t i) { return i == 0 ? "x" : repeated("${0}", 20); }},
        {"opened only", [](std::size_t) { return "$" + repeated("{${", 10'000); }},
        {"dollars", [](std::size_t) { return repeated("$", 100); }},
        {"of nothing", [](std::size_t) { return repeated("${none}", 10); }},
    };
    testing::internal::CaptureStderr(); // the values that open only
    for (const auto& [name, valueOf] : shapes) {
        const double times = growth([&](std::size_t bytes) {
            return [settings = settingsOfSize(bytes, valueOf)] {
                try {
                    Halden::withVariablesReplaced(settings);
                } catch (const Halden::EndlessValue&) { // so be it, as long as it comes soon
                }
            };
        });
        EXPECT_LT(times, linearGrowth) << name;
    }
    testing::internal::GetCapturedStderr();
}

TEST(VariableSubstitutionTest, ALiteralValueIsWhatTheLibraryArrivesAt) {
    Properties properties;
    properties.setProperty(Halden::literalDollar, Halden::literalDollar);
    for (const std::string text : {"", "text", "${HOME}", "${", "$${$}{", "${${x}}", "$$", "{$}"})
        EXPECT_EQ(OptionConverter::substVars(Halden::asLiteralValue(text), properties), text);
}

} // namespace
