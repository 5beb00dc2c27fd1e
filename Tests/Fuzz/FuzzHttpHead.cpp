// The head of a request: its first line and one header.

#include "Framework/CXX/Network/HttpRequest.h"
#include "Tests/Fuzz/FuzzTarget.h"

#include <algorithm>

void fuzz(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(text.find('\n'), size);
    HttpRequest request(nullptr);
    if (request.parseRequestLine(text.substr(0, end).c_str())) {
        require(request.url.starts_with(request.path), "the path is the front of the address");
        require(request.path.find('?') == std::string::npos, "the path ends before the query");
        require(request.query.size() <= request.url.size(), "decoding makes nothing longer");
    } else {
        require(request.path.empty() && request.query.empty(), "a broken line has no path and no query");
    }
    const std::size_t before = request.headers.size();
    const bool isHeader = request.parseHeaderLine(text.substr(end).c_str());
    require(request.headers.size() == before + (isHeader ? 1 : 0), "a line adds one header or none");
    request.contentLength();
    request.contentType();
}

std::vector<std::string> fuzzSeeds() {
    return {"GET /res/3F2504E0-4F89-41D3-9A0C-0305E82C3301?a=%41%25%342 HTTP/1.1\nContent-Length: 18446744073709551615",
            "POST / HTTP/1.0\r\nContent-Type:text/plain\r\n", "GET\n:", "  \n \t: "};
}
