#include "Framework/CXX/System/RegistryFile.h"

#include "Tests/Support/Growth.h"
#include "Tests/Support/ScopedEnvironment.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <cstdint>
#include <map>
#include <string>

namespace {

using Halden::System::RegistryFile;
using Halden::System::RegistryKey;
using Halden::System::RegistryType;

const std::string exported = "Windows Registry Editor Version 5.00\r\n"
                             "\r\n"
                             "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Hub]\r\n"
                             "\"Wait\"=dword:00001388\r\n"
                             "\"Switch\"=hex:01,00,00,00\r\n"
                             "@=\"default\"\r\n"
                             "\r\n";

std::string withoutCarriageReturns(std::string text) {
    std::erase(text, '\r');
    return text;
}

std::string asUtf16(const std::string& ascii, bool lowByteFirst) {
    std::string bytes = lowByteFirst ? "\xFF\xFE" : "\xFE\xFF";
    for (const char letter : ascii)
        bytes += lowByteFirst ? std::string{letter, '\0'} : std::string{'\0', letter};
    return bytes;
}

// -1 stands for a missing key, -2 for a value that can't be read as a dword.
std::int64_t dwordIn(const RegistryFile& file, const std::string& name,
                     const std::string& path = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Hub") {
    const std::shared_ptr<const RegistryKey> key = file.openKey(path);
    if (!key)
        return -1;
    std::array<std::uint8_t, 4> bytes{};
    if (!key->read(name, RegistryType::Dword, bytes.data(), bytes.size()))
        return -2;
    return bytes[0] | bytes[1] << 8 | bytes[2] << 16 | std::int64_t{bytes[3]} << 24;
}

std::int64_t dwordIn(const std::string& bytes, const std::string& name) {
    return dwordIn(RegistryFile::parse(bytes), name);
}

std::string section(const std::string& lines) { return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Hub]\n" + lines; }

TEST(RegistryFileTest, ReadsAnExportInEveryEncoding) {
    for (const std::string& text : {exported, withoutCarriageReturns(exported)}) {
        EXPECT_EQ(dwordIn(text, "Wait"), 5000);
        EXPECT_EQ(dwordIn("\xEF\xBB\xBF" + text, "Wait"), 5000);
        EXPECT_EQ(dwordIn(asUtf16(text, true), "Wait"), 5000);
        EXPECT_EQ(dwordIn(asUtf16(text, false), "Wait"), 5000);
    }
}

TEST(RegistryFileTest, TheLastLineNeedsNoEnd) {
    EXPECT_EQ(dwordIn(section("\"Wait\"=dword:00000007"), "Wait"), 7);
    EXPECT_EQ(dwordIn(asUtf16(section("\"Wait\"=dword:00000007"), true), "Wait"), 7);
}

TEST(RegistryFileTest, NamesAreFoundWithoutRegardToCase) {
    const RegistryFile file = RegistryFile::parse(exported);
    EXPECT_EQ(dwordIn(file, "wAIT", "hkey_local_machine\\software\\HUB"), 5000);
    EXPECT_EQ(dwordIn(RegistryFile::parse("[hkey_LOCAL_machine\\software\\hub]\n\"WAIT\"=dword:1"), "Wait"), 1);
}

TEST(RegistryFileTest, TheDefaultValueHasTheEmptyName) {
    const auto key = RegistryFile::parse(exported).openKey("HKEY_LOCAL_MACHINE\\SOFTWARE\\Hub");
    ASSERT_TRUE(key);
    ASSERT_NE(key->find(""), nullptr);
    EXPECT_EQ(key->find("")->data.size(), 7U);
}

TEST(RegistryFileTest, QuotesAndBackslashesInNamesAreEscaped) {
    EXPECT_EQ(dwordIn(section(R"("a\"b\\c=d"=dword:00000003)"), "a\"b\\c=d"), 3);
}

TEST(RegistryFileTest, BytesGoOnBehindABackslash) {
    EXPECT_EQ(dwordIn(section("\"Wait\"=hex(4):d4,\\\r\n  07,00,\\\r\n  00\r\n\"Next\"=dword:1\r\n"), "Wait"), 2004);
    EXPECT_EQ(dwordIn(section("\"Wait\"=hex(4):d4,\\\n  07,00,\\\n  00\n\"Next\"=dword:1\n"), "Next"), 1);
}

TEST(RegistryFileTest, AContinuationEndsAtTheEndAndAtASection) {
    EXPECT_EQ(dwordIn(section("\"Wait\"=hex(4):05,\\"), "Wait"), -2);
    const std::string cut = section("\"A\"=hex:05,\\\n[HKEY_LOCAL_MACHINE\\Other]\n\"Wait\"=dword:1\n");
    EXPECT_EQ(dwordIn(cut, "Wait"), -2);
    EXPECT_EQ(dwordIn(RegistryFile::parse(cut), "Wait", "HKEY_LOCAL_MACHINE\\Other"), 1);
}

TEST(RegistryFileTest, CommentsAndEmptyLinesArePassedOver) {
    EXPECT_EQ(dwordIn(section("; \"Wait\"=dword:1\n\n  ;x\n\t\"Wait\" = dword:2 ; two\n"), "Wait"), 2);
}

TEST(RegistryFileTest, ASectionMayBeRepeatedAndTheLastValueCounts) {
    const std::string text = section("\"A\"=dword:1\n\"B\"=dword:1\n") + section("\"B\"=dword:2\n");
    EXPECT_EQ(dwordIn(text, "A"), 1);
    EXPECT_EQ(dwordIn(text, "B"), 2);
}

TEST(RegistryFileTest, AMinusDeletesAKeyWithAllBelowIt) {
    const RegistryFile file =
        RegistryFile::parse(section("\"A\"=dword:1\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Hub\\Sub]\n\"A\"=dword:1\n"
                                    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Hubs]\n\"A\"=dword:1\n"
                                    "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\HUB]\n\"A\"=dword:2\n"));
    EXPECT_EQ(dwordIn(file, "A"), -1);
    EXPECT_EQ(dwordIn(file, "A", "HKEY_LOCAL_MACHINE\\SOFTWARE\\Hub\\Sub"), -1);
    EXPECT_EQ(dwordIn(file, "A", "HKEY_LOCAL_MACHINE\\SOFTWARE\\Hubs"), 1);
}

TEST(RegistryFileTest, AMinusDeletesAValue) {
    EXPECT_EQ(dwordIn(section("\"A\"=dword:1\n\"B\"=dword:1\n\"A\"=-\n"), "A"), -2);
    EXPECT_EQ(dwordIn(section("\"A\"=dword:1\n\"B\"=dword:1\n\"A\"=-\n"), "B"), 1);
}

TEST(RegistryFileTest, BrokenLinesLeaveTheOthers) {
    const std::string text = section("\"A=dword:1\nWait=dword:1\n\"Wait\"\n\"Wait\"=\n=\n\"\\\n@\n\"Wait\"=dword:zz\n"
                                     "\"Good\"=dword:6\n\xC3\x28\xFF=\x80\n\"Wait\" dword:1\n");
    EXPECT_EQ(dwordIn(text, "Wait"), -2);
    EXPECT_EQ(dwordIn(text, "Good"), 6);
}

TEST(RegistryFileTest, AnUnreadableLineOverridesNothing) {
    EXPECT_EQ(dwordIn(section("\"A\"=dword:3\n\"A\"=dword:123456789\n"), "A"), 3);
}

TEST(RegistryFileTest, ValuesBehindABrokenSectionBelongNowhere) {
    EXPECT_EQ(dwordIn(section("\"A\"=dword:1\n[HKEY_LOCAL_MACHINE\\Other\n\"A\"=dword:2\n"), "A"), 1);
    EXPECT_EQ(dwordIn("\"A\"=dword:2\n" + section(""), "A"), -2);
}

TEST(RegistryFileTest, HalfAUnitAndALoneSurrogateHarmTheirLineOnly) {
    const std::string surrogate = "\xFF\xFE" + asUtf16(section("\"B\"=dword:2\n\"A"), true).substr(2) +
                                  std::string("\x00\xD8", 2) + asUtf16("\"=dword:1\n\"C\"=dword:3\n", true).substr(2);
    EXPECT_EQ(dwordIn(surrogate + "x", "B"), 2);
    EXPECT_EQ(dwordIn(surrogate + "x", "C"), 3);
}

TEST(RegistryFileTest, NoiseIsNoError) {
    for (const std::string& noise : {std::string(), std::string("\0", 1), std::string("\xFF\xFE"), std::string("\xFF"),
                                     std::string(1000, '['), std::string(1000, '"'), std::string(1000, '\\')}) {
        EXPECT_EQ(dwordIn(noise, "A"), -1);
        EXPECT_EQ(dwordIn(section("\"A\"=dword:1\n") + noise, "A"), 1);
    }
}

TEST(RegistryFileTest, DamageToAnyByteNeverReachesTheNextKey) {
    const std::string next = "\r\n\r\n[HKEY_LOCAL_MACHINE\\Next]\r\n\"Wait\"=dword:00000009\r\n";
    const std::string mark = "\xEF\xBB\xBF";
    for (const std::string& bytes : {mark + exported + next, asUtf16(exported + next, true)}) {
        const std::size_t end = bytes.find("Next") == std::string::npos ? 2 + 2 * exported.size() : 3 + exported.size();
        for (std::size_t at = mark.size(); at < end; ++at) {
            for (const char damage : {'\0', '"', '\\', '[', ']', '\n', '\xFF', '=', ';'}) {
                std::string damaged = bytes;
                damaged[at] = damage;
                EXPECT_EQ(dwordIn(RegistryFile::parse(damaged), "Wait", "HKEY_LOCAL_MACHINE\\Next"), 9)
                    << "byte " << at << " is " << static_cast<int>(damage);
            }
        }
    }
}

TEST(RegistryFileTest, AWrongTypeOrTooManyBytesAreNotRead) {
    EXPECT_EQ(dwordIn(section("\"A\"=hex:01,00,00,00\n"), "A"), -2);
    EXPECT_EQ(dwordIn(section("\"A\"=\"1\"\n"), "A"), -2);
    EXPECT_EQ(dwordIn(section("\"A\"=hex(4):01,00,00,00,00\n"), "A"), -2);
}

TEST(RegistryFileTest, FewerBytesFillTheLowEnd) {
    EXPECT_EQ(dwordIn(section("\"A\"=hex(4):01,02\n"), "A"), 0x201);
    EXPECT_EQ(dwordIn(section("\"A\"=hex(4):\n"), "A"), 0);
}

std::string repeatedUpTo(std::size_t bytes, const std::string& text) {
    std::string all;
    while (all.size() < bytes)
        all += text;
    return all;
}

TEST(RegistryFileTest, TheTimeGrowsAsTheFileDoes) {
    const std::map<std::string, std::string> beginningsAndRests = {
        {section("\"A\"=hex:"), "01,\\\n"},
        {section("\"A\"=hex:"), "\\\n"},
        {section("\"A\"=hex:"), "01,"},
        {section("\"A\"=hex:\\\n"), "\"A\"=hex:\\\n"},
        {section("\""), "\\\\"},
        {section("\"A\"=\""), "\\\""},
        {section("\"A\"=hex(4):0"), ";"},
        {"", "[-HKEY]\n"},
        {"", "[HKEY\\A]\n[-HKEY\\A]\n"},
        {"", "["},
        {"", "]"},
        {"[", "\\]"},
        {section(""), "\"A\"=-\n"},
        {"", "\n"},
        {"", "\r"},
        {"\xFF\xFE", "\xD8"},
    };
    for (const auto& [beginning, rest] : beginningsAndRests) {
        const double times = growth([&](std::size_t bytes) {
            return [text = beginning + repeatedUpTo(bytes, rest)] { RegistryFile::parse(text); };
        });
        EXPECT_LT(times, linearGrowth) << beginning << rest;
    }
}

TEST(RegistryFileTest, TheTimeGrowsAsTheLengthOfANameWhoseBytesGoOnDoes) {
    const double times = growth([](std::size_t bytes) {
        const std::string name = repeatedUpTo(bytes / 2, "n");
        return [text = section("\"" + name + "\"=hex:\\\n") + repeatedUpTo(bytes / 2, "\\\n")] {
            RegistryFile::parse(text);
        };
    });
    EXPECT_LT(times, linearGrowth);
}

TEST(RegistryFileTest, TheTimeGrowsAsTheNumberOfKeysAndOfDeletedOnesDoes) {
    const double times = growth([&](std::size_t bytes) {
        std::string text;
        for (int key = 0; text.size() < bytes; ++key)
            text += "[HKEY\\" + std::to_string(key) + "]\n[-HKEY\\x" + std::to_string(key) + "]\n";
        return [text] { RegistryFile::parse(text); };
    });
    EXPECT_LT(times, linearGrowth);
}

TEST(RegistryFileTest, WhatIsNoFileHasNoKeys) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo((folder.path() / "fifo").c_str(), 0600), 0);
    for (const std::filesystem::path& path : {folder.path() / "missing", folder.path(), folder.path() / "fifo",
                                              std::filesystem::path("/dev/zero"), std::filesystem::path()}) {
        EXPECT_EQ(dwordIn(RegistryFile::load(path), "A"), -1) << path;
    }
}

TEST(RegistryFileTest, AFileThatFailsWhileItIsReadHasNoKeys) {
    EXPECT_EQ(dwordIn(RegistryFile::load("/proc/self/mem"), "A"), -1); // there is no memory at its beginning
}

TEST(RegistryFileTest, AnOverlongFileHasNoKeys) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "registry.reg";
    writeFile(file, section("\"A\"=dword:1\n"));
    EXPECT_EQ(dwordIn(RegistryFile::load(file), "A"), 1);
    std::filesystem::resize_file(file, 16 * 1024 * 1024 + 1);
    EXPECT_EQ(dwordIn(RegistryFile::load(file), "A"), -1);
}

TEST(RegistryFileTest, IsWhereTheVariableSaysElseInEtc) {
    {
        const ScopedEnvironment variable("CAMERA_HUB_REGISTRY", "/some/file.reg");
        EXPECT_EQ(RegistryFile::defaultPath(), "/some/file.reg");
    }
    const ScopedEnvironment variable("CAMERA_HUB_REGISTRY", std::nullopt);
    EXPECT_EQ(RegistryFile::defaultPath(), "/etc/larkspur-windows-camera-hub/registry.reg");
}

} // namespace
