#pragma once

#include "Services/CameraHubWeb/Http/HttpMessage.h"

#include <string>

namespace CameraHubWeb {

/// Bytes that never change under their name, and how they are told to a client.
struct FileAnswer {
    SharedBytes bytes;
    std::string contentType;
    /// Without its quotation marks; another for other bytes.
    std::string tag;
    std::string cacheControl;
    /// Empty: it is to be shown, not saved.
    std::string saveAs;
};

/// The answer to a GET or HEAD, as RFC 9110 has it: 304 where the client has the bytes already (If-None-Match), one
/// range of them where it asks for that (Range, If-Range), 416 where that is not in them; all of them where it asks for
/// several ranges, or for what is none. Any thread.
HttpResponse answerWithFile(const HttpRequest& request, const FileAnswer& file);

/// A header's value that has the client name the file so: "attachment; filename=...". Any thread.
std::string contentDisposition(const std::string& kind, const std::string& fileName);

} // namespace CameraHubWeb
