#include "Framework/CXX/Common/TextConversion.h"

#include <utf8.h>

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
    std::u16string whole(text);
    for (std::size_t i = 0; i < whole.size(); ++i)
        if (isLeadSurrogate(whole[i]) && i + 1 < whole.size() && isTrailSurrogate(whole[i + 1]))
            ++i; // a pair
        else if (isLeadSurrogate(whole[i]) || isTrailSurrogate(whole[i]))
            whole[i] = u'\uFFFD';
    return toUtf8(whole);
}

std::u16string toUtf16(std::string_view text) {
    try {
        return utf8::utf8to16(text);
    } catch (const utf8::exception&) {
        return {};
    }
}

} // namespace Halden
