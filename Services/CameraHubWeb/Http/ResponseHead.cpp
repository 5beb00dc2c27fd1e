#include "Services/CameraHubWeb/Http/ResponseHead.h"

#include <algorithm>
#include <array>
#include <boost/beast/core/string.hpp>
#include <boost/beast/http/status.hpp>
#include <cstdio>
#include <ctime>
#include <string_view>

namespace CameraHubWeb {
namespace {

/// As RFC 9110 has it, in no locale.
std::string dateNow() {
    static constexpr std::array<const char*, 7> days{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr std::array<const char*, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%s, %02d %s %04d %02d:%02d:%02d GMT",
                  days.at(static_cast<std::size_t>(utc.tm_wday)), utc.tm_mday,
                  months.at(static_cast<std::size_t>(utc.tm_mon)), utc.tm_year + 1900, utc.tm_hour, utc.tm_min,
                  utc.tm_sec);
    return text.data();
}

void addHeader(std::string& head, std::string_view name, std::string_view value) {
    head.append(name).append(": ");
    for (const char c : value)
        head += static_cast<unsigned char>(c) < ' ' || c == '\x7f' ? ' ' : c;
    head += "\r\n";
}

bool has(const HttpResponse& response, std::string_view name) {
    return std::any_of(response.headers.begin(), response.headers.end(), [name](const auto& header) {
        return boost::beast::iequals(header.first, boost::beast::string_view(name.data(), name.size()));
    });
}

std::string statusLine(int status) {
    const auto reason = boost::beast::http::obsolete_reason(static_cast<boost::beast::http::status>(status));
    return "HTTP/1.1 " + std::to_string(status) + " " + std::string(reason) + "\r\n";
}

} // namespace

HeaderList securityHeaders(bool isTls) {
    HeaderList headers{
        {"Content-Security-Policy",
         "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob:; connect-src 'self'; "
         "manifest-src 'self'; form-action 'self'; base-uri 'none'; frame-ancestors 'none'"},
        {"X-Content-Type-Options", "nosniff"},
        {"X-Frame-Options", "DENY"},
        {"Referrer-Policy", "no-referrer"},
        {"Cross-Origin-Resource-Policy", "same-origin"},
        {"Cross-Origin-Opener-Policy", "same-origin"},
        {"Permissions-Policy", "camera=(), microphone=(), geolocation=()"},
    };
    if (isTls)
        headers.emplace_back("Strict-Transport-Security", "max-age=31536000");
    return headers;
}

std::string responseHead(const HttpResponse& response, const HeaderList& common, const Framing& framing) {
    std::string head = statusLine(response.status);
    addHeader(head, "Date", dateNow());
    for (const auto& [name, value] : response.headers)
        addHeader(head, name, value);
    for (const auto& [name, value] : common)
        if (!has(response, name))
            addHeader(head, name, value);
    if (framing.length)
        addHeader(head, "Content-Length", std::to_string(*framing.length));
    if (framing.isChunked)
        addHeader(head, "Transfer-Encoding", "chunked");
    if (!framing.connection.empty())
        addHeader(head, "Connection", framing.connection);
    return head + "\r\n";
}

} // namespace CameraHubWeb
