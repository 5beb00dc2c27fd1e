#include "Framework/CXX/Common/TextConversion.h"

#include <utf8.h>

#include <iterator>

namespace Halden {

namespace {

bool isLeadSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isTrailSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

} // namespace

std::string toUtf8(std::u16string_view text) {
    try {
        return utf8::utf16to8(text);
    } catch (const utf8::exception&) {
        return {};
    }
}

std::string toUtf8WithReplacements(std::u16string_view text) {
    constexpr char32_t replacement = 0xFFFD;
    std::string result;
    while (!text.empty()) {
        const bool isPair = text.size() > 1 && isLeadSurrogate(text[0]) && isTrailSurrogate(text[1]);
        const std::u16string_view units = text.substr(0, isPair ? 2 : 1);
        const std::string bytes = toUtf8(units);
        if (bytes.empty())
            utf8::append(replacement, std::back_inserter(result));
        result += bytes;
        text.remove_prefix(units.size());
    }
    return result;
}

std::u16string toUtf16(std::string_view text) {
    try {
        return utf8::utf8to16(text);
    } catch (const utf8::exception&) {
        return {};
    }
}

} // namespace Halden
