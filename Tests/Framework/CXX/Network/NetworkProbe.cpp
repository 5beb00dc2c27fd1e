// Serves until it is ended. Prints the port that it listens on. The argument says what it serves:
//   http        "/id" answers with the connection's number, "/throw" raises
//   tcp         every message raises
//   tcp-integer every message raises what is no standard exception
//   tcp-nothing there is no handler for messages

#include "Framework/CXX/Network/EpollDispatcher.h"
#include "Framework/CXX/Network/HttpRequest.h"
#include "Framework/CXX/Network/HttpResponse.h"
#include "Framework/CXX/Network/HttpServer.h"
#include "Framework/CXX/Network/TCPServer.h"

#include <sys/prctl.h>

#include <QCoreApplication>
#include <csignal>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>

namespace {

void announce(quint16 port) { std::cout << port << std::endl; }

void answerWithId(HttpRequest* request, HttpResponse* response) {
    const std::string id = std::to_string(request->clientId());
    response->setContentLength(id.size());
    response->sendHeaders();
    response->write(id);
    response->finish();
}

[[noreturn]] std::string raiseError(const std::string& message) { throw std::runtime_error("no answer to " + message); }

[[noreturn]] std::string raiseInteger(const std::string&) { throw 42; }

} // namespace

int main(int argc, char** argv) {
    prctl(PR_SET_PDEATHSIG, SIGKILL); // goes down with the tests, however they end: some requests make it spin for good
    QCoreApplication::setEventDispatcher(new EpollDispatcher);
    QCoreApplication application(argc, argv);
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "http") {
        auto* const server = new HttpServer(0, &application);
        server->addRoute("/id", answerWithId);
        server->addRoute("/throw", [](HttpRequest* request, HttpResponse*) { raiseError(request->path); });
        announce(server->serverPort());
    } else {
        const std::map<std::string, MessageHandler> handlers = {
            {"tcp", raiseError}, {"tcp-integer", raiseInteger}, {"tcp-nothing", nullptr}};
        announce((new TCPServer(0, &application, handlers.at(mode)))->serverPort());
    }
    return QCoreApplication::exec();
}
