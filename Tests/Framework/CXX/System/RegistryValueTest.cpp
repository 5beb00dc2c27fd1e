#include "Framework/CXX/System/RegistryValue.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Halden::System::parseRegistryValue;
using Halden::System::RegistryType;
using Bytes = std::vector<std::uint8_t>;

void expectValue(std::string_view text, RegistryType type, const Bytes& data) {
    const auto value = parseRegistryValue(text);
    ASSERT_TRUE(value.has_value()) << text;
    EXPECT_EQ(value->type, type) << text;
    EXPECT_EQ(value->data, data) << text;
}

TEST(RegistryValueTest, ADwordIsFourBytesLowByteFirst) {
    expectValue("dword:00001388", RegistryType::Dword, {0x88, 0x13, 0, 0});
    expectValue("dword:ffffffff", RegistryType::Dword, {0xFF, 0xFF, 0xFF, 0xFF});
    expectValue("DWORD:ABCDEF01", RegistryType::Dword, {0x01, 0xEF, 0xCD, 0xAB});
    expectValue("dword:5", RegistryType::Dword, {5, 0, 0, 0});
}

TEST(RegistryValueTest, HexIsBinary) {
    expectValue("hex:01,00,00,00", RegistryType::Binary, {1, 0, 0, 0});
    expectValue("hex:", RegistryType::Binary, {});
    expectValue("HEX:Aa,b", RegistryType::Binary, {0xAA, 0x0B});
    expectValue("hex: 01 , 02 ,", RegistryType::Binary, {1, 2});
}

TEST(RegistryValueTest, HexWithANumberHasThatType) {
    expectValue("hex(4):d4,07,00,00", RegistryType::Dword, {0xD4, 0x07, 0, 0});
    expectValue("hex(3):01", RegistryType::Binary, {1});
    expectValue("hex(b):01", static_cast<RegistryType>(11), {1});
    expectValue("hex(0):", RegistryType::None, {});
}

TEST(RegistryValueTest, AQuotedTextIsAString) {
    expectValue(R"("a\"b\\c")", RegistryType::String, {'a', '"', 'b', '\\', 'c'});
    expectValue(R"("")", RegistryType::String, {});
    expectValue(R"(";" ; comment)", RegistryType::String, {';'});
}

TEST(RegistryValueTest, ACommentMayFollow) {
    expectValue("dword:00000001 ; on", RegistryType::Dword, {1, 0, 0, 0});
    expectValue("hex:01,00;on", RegistryType::Binary, {1, 0});
}

TEST(RegistryValueTest, AnythingElseIsNone) {
    for (const char* const text : {"",           "dword",     "dword:",          "dword:x",
                                   "dword:0x10", "dword:-1",  "dword:000000001", "dword:00000001 2",
                                   "hex",        "hex:,",     "hex:01,,02",      "hex:001",
                                   "hex:0g",     "hex:01 02", "hex(4:01",        "hex():01",
                                   "hex(x):01",  "hex(4)01",  "\"open",          "\"a\" b",
                                   "str:a",      "1",         "hex:-1",          "hex:01,\\"}) {
        EXPECT_FALSE(parseRegistryValue(text).has_value()) << text;
    }
}

} // namespace
