#include "Framework/CXX/Network/HttpResponse.h"

#include "Framework/CXX/Network/HttpClient.h"

#include <sstream>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view lineEnd = "\r\n";

const std::map<int, std::string> statusTexts = {
    // clang-format off
    {100, "Continue"},
    {101, "Switching Protocols"},
    {200, "OK"},
    {201, "Created"},
    {202, "Accepted"},
    {203, "Non-Authoritative Information"},
    {204, "No Content"},
    {205, "Reset Content"},
    {206, "Partial Content"},
    {300, "Multiple Choices"},
    {301, "Moved Permanently"},
    {302, "Found"},
    {303, "See Other"},
    {304, "Not Modified"},
    {305, "Use Proxy"},
    {307, "Temporary Redirect"},
    {308, "Resume Incomplete"},
    {400, "Bad Request"},
    {401, "Unauthorized"},
    {402, "Payment Required"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {406, "Not Acceptable"},
    {407, "Proxy Authentication Required"},
    {408, "Request Time-out"},
    {409, "Conflict"},
    {410, "Gone"},
    {411, "Length Required"},
    {412, "Precondition Failed"},
    {413, "Request Entity Too Large"},
    {414, "Request-URI Too Large"},
    {415, "Unsupported Media Type"},
    {416, "Requested range not satisfiable"},
    {417, "Expectation Failed"},
    {418, "I'm a teapot"},
    {426, "Upgrade Required"},
    {428, "Precondition Required"},
    {429, "Too Many Requests"},
    {500, "Internal Server Error"},
    {501, "Not Implemented"},
    {502, "Bad Gateway"},
    {503, "Service Unavailable"},
    {504, "Gateway Time-out"},
    {505, "HTTP Version not supported "},
    {506, "Variant Also Negotiates"},
    {510, "Not Extended"},
    // clang-format on
};

} // namespace

HttpResponse::HttpResponse(HttpClient* owner) : client(owner) {}

void HttpResponse::setStatus(int code) { status = code; }

void HttpResponse::setStatusText(const char* text) { statusText = text ? text : ""; }

void HttpResponse::setContentType(const char* type) { contentType = type; }

void HttpResponse::setContentLength(uint64_t length) {
    contentLength = length;
    hasContentLength = true;
}

void HttpResponse::setHeader(const char* name, const char* value) { headers[name] = value; }

void HttpResponse::sendHeaders() {
    if (statusText.empty())
        statusText = statusTextFor(status);
    headers["Content-Type"] = contentType;
    if (hasContentLength) {
        headers["Content-Length"] = std::to_string(contentLength);
    } else {
        headers["Transfer-Encoding"] = "chunked";
        chunked = true;
    }

    std::ostringstream head;
    head << "HTTP/1.1 " << std::to_string(status) << ' ' << statusText << "\r\n";
    for (const auto& [name, value] : headers)
        head << name << ": " << value << "\r\n";
    head << "\r\n";
    const std::string text = head.str();
    client->write(text.data(), static_cast<int>(text.size()));
    headersSent = true;
}

void HttpResponse::write(const char* data, int size) {
    beginChunk(size);
    if (!chunked || size > 0)
        client->write(data, size);
    endChunk();
}

void HttpResponse::write(const unsigned char* data, int size) { write(reinterpret_cast<const char*>(data), size); }

void HttpResponse::write(const std::string& data) { write(data.data(), static_cast<int>(data.size())); }

void HttpResponse::write(SharedBytes bytes) {
    beginChunk(static_cast<int>(bytes->size()));
    client->write(std::move(bytes));
    endChunk();
}

void HttpResponse::beginChunk(int size) {
    if (!chunked)
        return;
    static constexpr std::string_view digits = "0123456789ABCDEF";

    char header[] = "00000000\r\n";
    char* const headerEnd = header + sizeof header - 1;
    char* firstDigit = headerEnd - lineEnd.size();
    unsigned rest = size > 0 ? static_cast<unsigned>(size) : 0;
    do {
        *--firstDigit = digits[rest % 16];
        rest /= 16;
    } while (rest != 0);

    client->write(firstDigit, static_cast<int>(headerEnd - firstDigit));
}

void HttpResponse::endChunk() {
    if (chunked)
        client->write(lineEnd.data(), static_cast<int>(lineEnd.size()));
}

void HttpResponse::finish() {
    if (!headersSent)
        sendHeaders();
    if (chunked) {
        static constexpr std::string_view endOfBody = "0\r\n\r\n";
        client->write(endOfBody.data(), static_cast<int>(endOfBody.size()));
    }
    open = false;
    client->responseFinished();
}

void HttpResponse::sendError(int code, const char* text) {
    setStatus(code);
    setStatusText(text);
    contentType = "text/html";
    sendHeaders();
    const std::string title = std::to_string(status) + ' ' + statusText;
    write("<html><title>" + title + "</title><body><h1>" + title + "</h1></body></html>");
    finish();
}

std::string HttpResponse::statusTextFor(int code) {
    const auto text = statusTexts.find(code);
    return text == statusTexts.end() ? std::string() : text->second;
}
