#include "Services/CameraHubWeb/Http/HostNames.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>

namespace CameraHubWeb {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string inSmallLetters(std::string_view text) {
    std::string small(text);
    std::transform(small.begin(), small.end(), small.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return small;
}

bool isAddress(int family, const std::string& text) {
    std::array<unsigned char, sizeof(in6_addr)> bytes{};
    return inet_pton(family, text.c_str(), bytes.data()) == 1;
}

/// Without the port; none where what is behind the name is no port.
std::optional<std::string> withoutPort(std::string_view authority) {
    const auto bracket = authority.rfind(']');
    const auto colon = authority.find(':', bracket == std::string_view::npos ? 0 : bracket);
    if (colon == std::string_view::npos)
        return std::string(authority);
    const std::string_view port = authority.substr(colon + 1);
    if (!std::all_of(port.begin(), port.end(), isDigit))
        return std::nullopt;
    return std::string(authority.substr(0, colon));
}

std::string withoutSuffix(std::string text, std::string_view suffix) {
    if (text.ends_with(suffix))
        text.erase(text.size() - suffix.size());
    return text;
}

} // namespace

std::vector<std::string> machineNames() {
    std::array<char, 256> text{};
    if (gethostname(text.data(), text.size() - 1) != 0 || text[0] == '\0')
        return {};
    const std::string full = inSmallLetters(text.data());
    const std::string name = full.substr(0, full.find('.'));
    return {full, name, full + ".local", name + ".local"};
}

bool isHostOurs(std::string_view header, const std::vector<std::string>& names) {
    const std::optional<std::string> host = withoutPort(header);
    if (!host)
        return false;
    if (host->starts_with('[') && host->ends_with(']'))
        return isAddress(AF_INET6, host->substr(1, host->size() - 2));
    const std::string name = withoutSuffix(inSmallLetters(*host), ".");
    return name == "localhost" || isAddress(AF_INET, name) ||
           std::any_of(names.begin(), names.end(),
                       [&name](const std::string& ours) { return !name.empty() && inSmallLetters(ours) == name; });
}

bool isOriginOfHost(std::string_view origin, std::string_view host) {
    const auto end = origin.find("://");
    if (end == std::string_view::npos)
        return false;
    const std::string_view scheme = origin.substr(0, end);
    if (scheme != "https" && scheme != "http")
        return false;
    const std::string_view usualPort = scheme == "https" ? ":443" : ":80";
    return withoutSuffix(inSmallLetters(origin.substr(end + 3)), usualPort) ==
           withoutSuffix(inSmallLetters(host), usualPort);
}

} // namespace CameraHubWeb
