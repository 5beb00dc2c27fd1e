#include "Services/CameraHubWeb/Http/RequestDecoding.h"

#include <utf8.h>

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace CameraHubWeb {
namespace {

char decodedByte(std::string_view digits) {
    unsigned value = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, value, 16);
    if (digits.size() != 2 || error != std::errc{} || stop != end)
        throw std::invalid_argument("The address has a % that two hexadecimal digits do not follow.");
    return static_cast<char>(value);
}

std::string decodePercent(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] == '%') {
            decoded += decodedByte(text.substr(i + 1, 2));
            i += 2;
        } else
            decoded += text[i];
    if (decoded.find('\0') != std::string::npos || !isUtf8(decoded))
        throw std::invalid_argument("The address, percent-decoded, is not text in UTF-8.");
    return decoded;
}

std::string decodeFormText(std::string_view text) {
    std::string spaced(text);
    std::replace(spaced.begin(), spaced.end(), '+', ' ');
    return decodePercent(spaced);
}

/// Visible ASCII: everything else is percent-encoded; a fragment stays with the browser.
bool mayBeInTarget(char c) { return c > ' ' && c < '\x7f' && c != '#'; }

/// Calls with each part between the separators.
template <typename Use> void split(std::string_view text, char separator, const Use& use) {
    for (;;) {
        const auto end = text.find(separator);
        use(text.substr(0, end));
        if (end == std::string_view::npos)
            return;
        text.remove_prefix(end + 1);
    }
}

} // namespace

bool isUtf8(std::string_view text) { return utf8::is_valid(text.begin(), text.end()); }

std::map<std::string, std::string, std::less<>> decodeForm(std::string_view text) {
    std::map<std::string, std::string, std::less<>> form;
    split(text, '&', [&form](std::string_view pair) {
        if (pair.empty())
            return;
        const auto equals = pair.find('=');
        std::string name = decodeFormText(pair.substr(0, equals));
        std::string value = equals == std::string_view::npos ? std::string() : decodeFormText(pair.substr(equals + 1));
        if (!form.try_emplace(std::move(name), std::move(value)).second)
            throw std::invalid_argument("The same parameter comes more than once.");
    });
    return form;
}

DecodedTarget decodeTarget(std::string_view target) {
    if (!target.starts_with('/'))
        throw std::invalid_argument("The request's address does not begin with a slash.");
    if (!std::all_of(target.begin(), target.end(), mayBeInTarget))
        throw std::invalid_argument("The request's address has characters that must be percent-encoded.");
    DecodedTarget decoded;
    const auto question = target.find('?');
    const std::string_view path = target.substr(1, question == std::string_view::npos ? question : question - 1);
    if (!path.empty())
        split(path, '/', [&decoded](std::string_view part) { decoded.segments.push_back(decodePercent(part)); });
    if (question != std::string_view::npos)
        decoded.query = decodeForm(target.substr(question + 1));
    return decoded;
}

} // namespace CameraHubWeb
