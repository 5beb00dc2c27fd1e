#include "Client/FetchImage.h"

#include "Client/Protocol/ImageReply.h"
#include "Client/Protocol/Requests.h"
#include "Client/Transport/Connection.h"

#include <CameraHubClient/Errors.h>

namespace CameraHub {

namespace {

constexpr std::string_view endOfHead = "\r\n\r\n";

/// Cuts the head off what is received, with its empty line.
std::string takeHead(Connection& connection, std::string& received, const Deadline& deadline) {
    std::size_t end = std::string::npos;
    while (end == std::string::npos) {
        if (received.size() > longestHead)
            throw ProtocolError("what answers is no hub: the head of a reply does not end");
        const std::size_t searched = received.size() < endOfHead.size() ? 0 : received.size() - endOfHead.size();
        connection.receive(received, deadline);
        end = received.find(endOfHead, searched);
    }
    std::string head = received.substr(0, end + endOfHead.size());
    received.erase(0, head.size());
    return head;
}

} // namespace

std::vector<std::uint8_t> fetchImage(const std::string& imageId, const Address& address, const Options& options) {
    const std::string request = imageRequest(address.host, address.imagePort, imageId);
    Connection connection(address.host, address.imagePort, Deadline(options.connectTimeout, options.cancellation));
    const Deadline deadline(options.callTimeout, options.cancellation);
    connection.send(request, deadline);
    std::string received;
    const std::size_t size = imageSizeIn(takeHead(connection, received, deadline));
    while (received.size() < size)
        connection.receive(received, deadline);
    return pngFrom(std::string_view(received).substr(0, size));
}

} // namespace CameraHub
