#pragma once

#include <QCoreApplication>
#include <string>

/// The application object that event loops need, for tests whose program has none of its own.
class TestApplication {
    int _argumentCount = 1;
    std::string _name = "Tests";
    char* _arguments[2] = {_name.data(), nullptr};
    QCoreApplication _application{_argumentCount, _arguments};
};
