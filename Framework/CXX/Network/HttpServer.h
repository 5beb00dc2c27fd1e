#pragma once

#include "Framework/CXX/Network/HttpRoute.h"

#include <QString>
#include <QTcpServer>
#include <vector>

class HttpClient;

/// A small HTTP/1.1 server on every interface: gives each connection an HttpClient and dispatches requests
/// by their path. Main thread. A port that can't be had is not reported: nothing is accepted then.
class HttpServer : public QTcpServer {
    Q_OBJECT

public:
    /// Port 0 lets the system choose (see serverPort()).
    HttpServer(quint16 port, QObject* parent);

    /// Must not go before its connections have: they keep using it.
    ~HttpServer() override;

    /// A regular expression (ECMAScript) for the whole path. Raises std::regex_error for a bad one.
    void addRoute(QString pattern, RouteHandler handler);

    void addClient(HttpClient* client);
    void removeClient(HttpClient* client);

    /// Calls the handler of the first route, in order of registration, that matches; 404 if none does.
    void handleRequest(HttpRequest* request, HttpResponse* response);

    /// Closes every open connection.
    void closeClients();

protected:
    void incomingConnection(qintptr socketDescriptor) override;

private:
    std::vector<HttpRoute*> routes;
    std::vector<HttpClient*> clients;
};
