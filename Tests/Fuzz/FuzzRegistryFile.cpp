// The registry file: UTF-8 or UTF-16, from whatever program has written it.

#include "Framework/CXX/System/RegistryFile.h"
#include "Tests/Fuzz/FuzzTarget.h"

#include <array>

void fuzz(const std::uint8_t* data, std::size_t size) {
    using namespace Halden::System;
    const auto file = RegistryFile::parse({reinterpret_cast<const char*>(data), size});
    const auto key = file.openKey("HKEY_LOCAL_MACHINE\\SOFTWARE\\Larkspur");
    if (!key)
        return;
    std::array<std::uint8_t, 6> value{1, 2, 3, 4, 5, 6};
    const bool isThere = key->read("Value", RegistryType::Dword, value.data(), 4);
    require(value[4] == 5 && value[5] == 6, "nothing is written behind the room that there is");
    require(isThere || value == std::array<std::uint8_t, 6>{1, 2, 3, 4, 5, 6},
            "a value that is not read changes nothing");
    key->find("");
}

std::vector<std::string> fuzzSeeds() {
    const std::string text = "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Larkspur]\r\n"
                             "\"Value\"=dword:00001388\r\n\"Other\"=hex(b):01,00,\\\r\n  00,ff\r\n@=\"te\\\\xt\"\r\n"
                             "; comment\r\n\"Value\"=-\r\n[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Gone]\r\n";
    std::string wide = "\xFF\xFE";
    for (const char c : text)
        wide += {c, '\0'};
    return {text, "\xEF\xBB\xBF" + text, wide};
}
