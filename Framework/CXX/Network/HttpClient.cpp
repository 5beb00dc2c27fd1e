#include "Framework/CXX/Network/HttpClient.h"

#include "Framework/CXX/Network/AcceptedSocket.h"
#include "Framework/CXX/Network/HttpRequest.h"
#include "Framework/CXX/Network/HttpResponse.h"
#include "Framework/CXX/Network/HttpServer.h"

#include <atomic>
#include <utility>

namespace {

int nextClientId() {
    static std::atomic<int> latestId{1};
    return ++latestId;
}

} // namespace

HttpClient::HttpClient(HttpServer* httpServer, qintptr socketDescriptor)
    : server(httpServer), socket(new AcceptedSocket(this)), clientId(nextClientId()) {
    connect(socket, SIGNAL(readyRead()), this, SLOT(readClient()));
    connect(socket, SIGNAL(disconnected()), this, SLOT(discardClient()));
    socket->setSocketDescriptor(socketDescriptor, QAbstractSocket::ConnectedState, QIODevice::ReadWrite);
    server->addClient(this);
}

HttpClient::~HttpClient() = default;

void HttpClient::write(const char* data, int size) { socket->write(data, size); }

void HttpClient::write(SharedBytes bytes) { socket->writeShared(std::move(bytes)); }

void HttpClient::responseFinished() { responseDone = true; }

void HttpClient::close() {
    socket->close();
    closing = true;
}

void HttpClient::setBodyHandler(uint64_t length, std::function<void(const char*, size_t)> handler) {
    hasBodyHandler = true;
    bodyLength = length;
    bodyHandler = std::move(handler);
}

void HttpClient::discardClient() {
    server->removeClient(this);
    socket->deleteLater();
    deleteLater();
}

void HttpClient::readClient() {
    while (step()) {
    }
}

/// One action of the state machine. False if it has to wait for input or for the response.
bool HttpClient::step() {
    switch (parseState) {
    case Reset:
        resetRequest();
        parseState = LineStart;
        return true;
    case LineStart:
    case CrAtLineStart:
    case InLine:
    case CrInLine:
    case Body:
        return readAndTakeByte();
    case HeadComplete:
        processHead();
        return true;
    case LineComplete:
        lines.emplace_back(lineBuffer.begin(), lineBuffer.end());
        lineBuffer.clear();
        parseState = LineStart;
        return true;
    case WaitingForResponse:
        if (responseDone)
            parseState = Reset;
        return responseDone;
    default: {
        // Stays for good, reading nothing. The access keeps the compiler from taking such a loop away.
        [[maybe_unused]] const int kept = static_cast<const volatile int&>(parseState);
        return true;
    }
    }
}

void HttpClient::resetRequest() {
    lineBuffer.clear();
    lines.clear();
    responseDone = false;
    hasBodyHandler = false;
    request.reset();
    response.reset();
}

bool HttpClient::readByte(char& byte) {
    if (readPosition == readEnd) {
        const qint64 available = socket->bytesAvailable();
        if (available == 0) {
            if (closing) {
                request.reset();
                response.reset();
            }
            return false;
        }
        readBuffer = socket->read(available);
        readPosition = readBuffer.data();
        readEnd = readPosition + readBuffer.size();
    }
    byte = *readPosition++;
    return true;
}

bool HttpClient::readAndTakeByte() {
    char byte = 0;
    if (!readByte(byte))
        return false;
    if (parseState == Body)
        takeBodyByte(byte);
    else
        takeHeadByte(byte);
    return true;
}

void HttpClient::takeHeadByte(char byte) {
    switch (parseState) {
    case LineStart:
    case InLine:
        if (byte == '\r') {
            parseState = parseState == LineStart ? CrAtLineStart : CrInLine;
            return;
        }
        break;
    case CrAtLineStart:
        if (byte == '\n') {
            parseState = HeadComplete;
            return;
        }
        break; // the CR is dropped, here only
    case CrInLine:
        if (byte == '\n') {
            parseState = LineComplete;
            return;
        }
        lineBuffer.push_back('\r');
        break;
    default:
        break;
    }
    lineBuffer.push_back(byte);
    parseState = InLine;
}

void HttpClient::takeBodyByte(char byte) {
    lineBuffer.push_back(byte);
    if (lineBuffer.size() == bodyLength) {
        if (hasBodyHandler)
            bodyHandler(lineBuffer.data(), lineBuffer.size());
        parseState = Reset;
    }
}

void HttpClient::processHead() {
    if (lines.empty()) {
        close(); // again and again: the state stays
        return;
    }
    parseHead();
    response = std::make_unique<HttpResponse>(this);
    parseState = stateBehindHead();
    responseDone = false;
    server->handleRequest(request.get(), response.get());
}

void HttpClient::parseHead() {
    request = std::make_unique<HttpRequest>(this);
    request->parseRequestLine(lines.front().c_str());
    for (const std::string& line : lines) // the request line too: a ":" in its URL makes an odd header
        request->parseHeaderLine(line.c_str());
}

int HttpClient::stateBehindHead() {
    if (request->headers.contains("Content-Length")) {
        bodyLength = request->contentLength();
        return bodyLength == 0 ? Reset : Body;
    }
    const auto coding = request->headers.find("Transfer-Encoding");
    if (coding == request->headers.end())
        return WaitingForResponse;
    return coding->second == "chunked" ? ChunkedBody : OtherTransferCoding;
}
