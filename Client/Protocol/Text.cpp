#include "Client/Protocol/Text.h"

#include <utf8.h>

#include <algorithm>

namespace CameraHub {

namespace {

bool isControl(char character) { return static_cast<unsigned char>(character) < 0x20 || character == 0x7F; }

bool isHexDigit(char character) {
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f') ||
           (character >= 'A' && character <= 'F');
}

} // namespace

bool isUtf8(std::string_view text) { return utf8::is_valid(text.begin(), text.end()); }

std::string inOneLine(std::string text) {
    std::replace_if(text.begin(), text.end(), isControl, ' ');
    return text;
}

bool isImageId(std::string_view text) {
    constexpr std::string_view form = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    const auto fits = [](char character, char wanted) {
        return wanted == 'x' ? isHexDigit(character) : character == wanted;
    };
    return std::equal(text.begin(), text.end(), form.begin(), form.end(), fits);
}

} // namespace CameraHub
