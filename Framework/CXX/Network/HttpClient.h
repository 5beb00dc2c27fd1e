#pragma once

#include "Framework/CXX/Network/SharedBytes.h"

#include <QByteArray>
#include <QObject>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class AcceptedSocket;
class HttpRequest;
class HttpResponse;
class HttpServer;

/// One HTTP connection: reads requests byte by byte, has the server answer each as soon as its head is
/// there, and collects the body, if any, afterwards. Requests are served one after the other; the connection
/// stays open until the peer ends it. Has no parent: it deletes itself when its socket disconnects.
/// Main thread. Whatever a handler throws leaves the event loop.
///
///     Reset -> LineStart -> InLine <-> CrInLine -> LineComplete -> LineStart
///              LineStart -> CrAtLineStart -> InLine
///                           CrAtLineStart -> HeadComplete -> Body -> Reset
///                                            HeadComplete -> WaitingForResponse -> Reset
///                                            HeadComplete -> Reset (a body of no bytes)
///                                            HeadComplete -> ChunkedBody, OtherTransferCoding
///
/// Those last two, and HeadComplete without any line, are never left: readClient then does not return.
class HttpClient : public QObject {
    Q_OBJECT

public:
    /// Takes the descriptor over and enters itself with the server, which must outlive it.
    HttpClient(HttpServer* httpServer, qintptr socketDescriptor);
    ~HttpClient() override;

    void write(const char* data, int size);
    void write(SharedBytes bytes);
    void responseFinished();
    void close();

    /// For the request being handled: pass the body of that many bytes on when it has arrived.
    void setBodyHandler(uint64_t length, std::function<void(const char*, size_t)> handler);

    /// Serial number of the connection; 2 for the process's first.
    int id() const { return clientId; }

private slots:
    void readClient();
    void discardClient();

private:
    enum ParseState {
        Reset = 0,
        LineStart = 1,
        CrAtLineStart = 4,
        InLine = 5,
        CrInLine = 6,
        HeadComplete = 7,
        LineComplete = 8,
        Body = 9,
        ChunkedBody = 10,
        OtherTransferCoding = 11,
        WaitingForResponse = 12,
    };

    bool step();
    void resetRequest();
    bool readByte(char& byte);
    bool readAndTakeByte();
    void takeHeadByte(char byte);
    void takeBodyByte(char byte);
    void processHead();
    void parseHead();
    int stateBehindHead();

    HttpServer* server;
    AcceptedSocket* socket;
    int parseState = Reset;
    std::vector<char> lineBuffer;   ///< the line in progress; in the body state, the body
    std::vector<std::string> lines; ///< of the head, without CR LF
    uint64_t bodyLength = 0;        ///< bytes
    std::function<void(const char*, size_t)> bodyHandler;
    bool hasBodyHandler = false;
    int clientId;
    std::unique_ptr<HttpRequest> request;
    std::unique_ptr<HttpResponse> response;
    bool responseDone = true;
    QByteArray readBuffer;
    char* readPosition = nullptr; ///< the unread range of readBuffer
    char* readEnd = nullptr;
    bool closing = false; ///< this side has closed the socket
};
