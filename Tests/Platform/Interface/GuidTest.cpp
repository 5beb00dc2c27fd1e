#include "Platform/Interface/Guid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <string_view>

using namespace Platform;

namespace {

TEST(GuidTest, TextIsLowerCaseInBraces) {
    const Guid guid{0x0F8FAD5B, 0xD9CB, 0x469F, {0xA1, 0x65, 0x70, 0x86, 0x77, 0x28, 0x95, 0x0E}};
    EXPECT_EQ(guidToText(guid), "{0f8fad5b-d9cb-469f-a165-70867728950e}");
    EXPECT_EQ(guidToText(Guid{}), "{00000000-0000-0000-0000-000000000000}");
}

TEST(GuidTest, TextIsReadInEitherCase) {
    const Guid guid{0x0F8FAD5B, 0xD9CB, 0x469F, {0xA1, 0x65, 0x70, 0x86, 0x77, 0x28, 0x95, 0x0E}};
    EXPECT_EQ(guidFromText("{0f8fad5b-d9cb-469f-a165-70867728950e}"), guid);
    EXPECT_EQ(guidFromText("{0F8FAD5B-D9CB-469f-a165-70867728950E}"), guid);
}

TEST(GuidTest, AnyOtherTextIsNone) {
    using namespace std::string_view_literals;
    for (const std::string_view text :
         {""sv, "{"sv, "{}"sv, "0f8fad5b-d9cb-469f-a165-70867728950e"sv, "(0f8fad5b-d9cb-469f-a165-70867728950e)"sv,
          "{0f8fad5b-d9cb-469f-a165-70867728950}"sv, "{0f8fad5b-d9cb-469f-a165-70867728950e0}"sv,
          "{0f8fad5b-d9cb-469f-a165-70867728950g}"sv, "{0f8fad5b_d9cb-469f-a165-70867728950e}"sv,
          "{0f8fad5b-d9cb-469f-a165-70867728950\0}"sv, " {0f8fad5b-d9cb-469f-a165-70867728950e}"sv,
          "{+f8fad5b-d9cb-469f-a165-70867728950e}"sv, "{0xfad5b0-d9cb-469f-a165-70867728950e}"sv})
        EXPECT_EQ(guidFromText(text), std::nullopt) << text;
}

/// True if the text has the form, in which 'x' stands for a lower-case hexadecimal digit and 'v' for 8, 9, a or b.
bool hasForm(std::string_view text, std::string_view form) {
    return std::equal(text.begin(), text.end(), form.begin(), form.end(), [](char seen, char wanted) {
        if (wanted == 'x')
            return std::string_view("0123456789abcdef").find(seen) != std::string_view::npos;
        if (wanted == 'v')
            return std::string_view("89ab").find(seen) != std::string_view::npos;
        return seen == wanted;
    });
}

TEST(GuidTest, NewOnesAreRandomVersionFour) {
    std::set<std::string> seen;
    for (int i = 0; i < 100; ++i) {
        const std::string text = guidToText(GuidHelper::CreateNewGuid());
        EXPECT_TRUE(hasForm(text, "{xxxxxxxx-xxxx-4xxx-vxxx-xxxxxxxxxxxx}")) << text;
        seen.insert(text);
    }
    EXPECT_EQ(seen.size(), 100U);
}

} // namespace
