#include "Client/Protocol/ImageReply.h"

#include <CameraHubClient/Errors.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>

namespace CameraHub {

namespace {

[[noreturn]] void refuse(const std::string& complaint) { throw ProtocolError("what answers is no hub: " + complaint); }

/// Cuts a line off, without its CR LF.
std::string_view takeLine(std::string_view& rest) {
    const std::size_t end = rest.find("\r\n");
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(rest.size(), line.size() + 2));
    return line;
}

/// What stands behind a colon may have blanks around it, and capitals in names mean nothing.
std::optional<std::string_view> valueOf(std::string_view line, std::string_view lowerCaseName) {
    const auto isSame = [](char letter, char lower) {
        return letter == lower || (letter >= 'A' && letter <= 'Z' && letter - 'A' + 'a' == lower);
    };
    const std::size_t colon = line.find(':');
    const std::string_view name = line.substr(0, colon);
    if (colon == std::string_view::npos ||
        !std::equal(name.begin(), name.end(), lowerCaseName.begin(), lowerCaseName.end(), isSame))
        return std::nullopt;
    std::string_view value = line.substr(colon + 1);
    value.remove_prefix(std::min(value.size(), value.find_first_not_of(" \t")));
    return value.substr(0, value.find_last_not_of(" \t") + 1);
}

std::size_t lengthIn(std::string_view digits) {
    std::size_t length = 0;
    const char* const end = digits.data() + digits.size();
    const auto [behind, error] = std::from_chars(digits.data(), end, length);
    if (error != std::errc() || behind != end || length > longestImage)
        refuse("the length of an image is not one of at most " + std::to_string(longestImage) + " bytes");
    return length;
}

void checkStatus(std::string_view line) {
    if (line == "HTTP/1.1 404 Image does not exist")
        throw ImageGone("the hub no longer has the image, or never had it");
    if (line != "HTTP/1.1 200 OK")
        refuse("the status of an image is neither that of one nor of none");
}

} // namespace

std::size_t imageSizeIn(std::string_view head) {
    checkStatus(takeLine(head));
    std::optional<std::size_t> length;
    bool isPng = false;
    while (!head.empty()) {
        const std::string_view line = takeLine(head);
        if (valueOf(line, "transfer-encoding"))
            refuse("an image comes with a transfer encoding");
        if (const auto type = valueOf(line, "content-type"))
            isPng = *type == "image/png";
        const auto digits = valueOf(line, "content-length");
        if (digits && length)
            refuse("an image has two lengths");
        if (digits)
            length = lengthIn(*digits);
    }
    if (!length || !isPng)
        refuse("a reply has no PNG file with its length");
    return *length;
}

std::vector<std::uint8_t> pngFrom(std::string_view bytes) {
    constexpr std::string_view signature = "\x89PNG\r\n\x1a\n";
    if (bytes.substr(0, signature.size()) != signature)
        refuse("an image does not begin like a PNG file");
    return {bytes.begin(), bytes.end()};
}

} // namespace CameraHub
