#pragma once

#include "Framework/CXX/Network/EpollDispatcher.h"

#include <QCoreApplication>
#include <string>

/// The application object that event loops need, for tests whose program has none of its own.
class TestApplication {
public:
    TestApplication() = default;

private:
    struct Dispatcher {
        Dispatcher() { QCoreApplication::setEventDispatcher(new EpollDispatcher); }
    };

    Dispatcher _dispatcher; // before the application, which takes it over
    int _argumentCount = 1;
    std::string _name = "Tests";
    char* _arguments[2] = {_name.data(), nullptr};
    QCoreApplication _application{_argumentCount, _arguments};
};
