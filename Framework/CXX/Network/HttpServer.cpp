#include "Framework/CXX/Network/HttpServer.h"

#include "Framework/CXX/Network/Acceptor.h"
#include "Framework/CXX/Network/HttpClient.h"
#include "Framework/CXX/Network/HttpResponse.h"

#include <QHostAddress>
#include <utility>

HttpServer::HttpServer(quint16 port, QObject* parent) : QTcpServer(parent) {
    listen(QHostAddress::Any, port);
    new Acceptor(this, [this](qintptr connection) { incomingConnection(connection); });
}

// The routes are not freed: what their handlers hold stays alive to the end of the process.
HttpServer::~HttpServer() { close(); }

void HttpServer::addRoute(QString pattern, RouteHandler handler) {
    routes.push_back(new HttpRoute(pattern.toStdString(), std::move(handler)));
}

void HttpServer::incomingConnection(qintptr socketDescriptor) { new HttpClient(this, socketDescriptor); }

void HttpServer::addClient(HttpClient* client) { clients.push_back(client); }

void HttpServer::removeClient(HttpClient* client) { std::erase(clients, client); }

void HttpServer::handleRequest(HttpRequest* request, HttpResponse* response) {
    for (const HttpRoute* const route : routes) {
        if (route->accepts(*request)) {
            route->handler(request, response);
            return;
        }
    }
    response->sendError(404, nullptr);
}

void HttpServer::closeClients() {
    const std::vector<HttpClient*> open = clients; // closing takes the connection off the list
    for (HttpClient* const client : open)
        client->close();
}
