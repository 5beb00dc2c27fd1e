#include "Framework/CXX/Common/TextConversion.h"

#include <utf8.h>

namespace Halden {

std::string toUtf8(std::u16string_view text) {
    try {
        return utf8::utf16to8(text);
    } catch (const utf8::exception&) {
        return {};
    }
}

std::u16string toUtf16(std::string_view text) {
    try {
        return utf8::utf8to16(text);
    } catch (const utf8::exception&) {
        return {};
    }
}

} // namespace Halden
