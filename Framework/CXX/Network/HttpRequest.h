#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <regex>
#include <string>

class HttpClient;

/// The head of one request. Made by HttpClient, which deletes it when the next request begins or the
/// connection ends; a handler must not keep it. Main thread.
class HttpRequest {
public:
    explicit HttpRequest(HttpClient* owner);

    /// Fills method to query. False if the line has fewer than three parts; path and query are empty then.
    bool parseRequestLine(const char* line);

    /// Adds one header; a repeated name keeps the last value. False if the line has no end of a name.
    bool parseHeaderLine(const char* line);

    /// The value of "Content-Type", made empty if it is missing.
    std::string& contentType();

    /// The value of "Content-Length"; 0 if it is missing or no decimal number of 64 bits; a negative one
    /// counts from 2^64 down, as streams read it.
    uint64_t contentLength() const;

    /// Asks for the body, which is passed on whole when it has arrived. No effect on a request without one.
    void setBodyHandler(std::function<void(const char*, size_t)> handler);

    /// Serial number of the connection.
    int clientId() const;

    std::string method;                         ///< case as sent
    std::string url;                            ///< as sent
    std::string version;                        ///< as sent
    std::string path;                           ///< up to the first "?", not decoded
    std::string query;                          ///< behind the first "?", percent-decoded
    std::map<std::string, std::string> headers; ///< names as sent, case-sensitive
    std::smatch matches;                        ///< of the route's pattern, over the characters of path
    bool hasBodyHandler = false;

private:
    HttpClient* client;
};
