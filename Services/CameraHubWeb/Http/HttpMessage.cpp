#include "Services/CameraHubWeb/Http/HttpMessage.h"

namespace CameraHubWeb {

HttpResponse textResponse(int status, std::string_view contentType, std::string_view text) {
    HttpResponse response;
    response.status = status;
    response.headers.emplace_back("Content-Type", contentType);
    response.body = std::make_shared<const std::vector<std::uint8_t>>(text.begin(), text.end());
    response.length = text.size();
    return response;
}

} // namespace CameraHubWeb
