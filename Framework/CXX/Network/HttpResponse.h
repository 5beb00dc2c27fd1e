#pragma once

#include "Framework/CXX/Network/SharedBytes.h"

#include <cstdint>
#include <map>
#include <string>

class HttpClient;

/// Writes one response to the connection. Made and deleted by HttpClient with its request. Call the setters,
/// sendHeaders, any number of writes, finish; or sendError alone. Nothing is checked against that order.
/// Without a content length the body goes out in chunks, one for each write. Main thread.
class HttpResponse {
public:
    explicit HttpResponse(HttpClient* owner);

    void setStatus(int code);
    /// Null or an empty text stands for the usual text of the status.
    void setStatusText(const char* text);
    void setContentType(const char* type);
    void setContentLength(uint64_t length); ///< bytes
    void setHeader(const char* name, const char* value);

    void sendHeaders();

    /// Does not send the headers by itself. In chunks, a size of 0 or below ends the body for the reader.
    void write(const char* data, int size);
    void write(const unsigned char* data, int size);
    void write(const std::string& data);
    /// Not copied: held until they have gone to the client, or it is gone. Not null.
    void write(SharedBytes bytes);

    /// Ends the response; sends the headers first if they have not gone yet.
    void finish();

    /// A whole response with a small page as its body. The text may be null, as in setStatusText.
    void sendError(int code, const char* text);

    /// Empty for a code that has no usual text.
    static std::string statusTextFor(int code);

private:
    /// Around the bytes of a chunk, which the writer passes on; nothing where there are no chunks.
    void beginChunk(int size);
    void endChunk();

    HttpClient* client;
    int status = 200;
    std::string statusText;
    std::map<std::string, std::string> headers;
    std::string contentType = "text/html";
    uint64_t contentLength = 0; ///< means something with hasContentLength only
    bool headersSent = false;
    bool hasContentLength = false;
    [[maybe_unused]] bool open = true;
    bool chunked = false;
};
