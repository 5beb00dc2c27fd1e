#pragma once

#include "Platform/Interface/HresultError.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

/// What the operation raises; fails the test if it raises nothing.
template <typename Operation> winrt::hresult_error errorOf(Operation operation) {
    try {
        operation();
    } catch (const winrt::hresult_error& error) {
        return error;
    }
    ADD_FAILURE() << "no platform error was raised";
    return {winrt::result::ok, u""};
}

/// The code and text that a call raises: "CODE text", the code in hexadecimal; "nothing raised" without. The text must
/// be ASCII.
template <typename Call> std::string raisedBy(const Call& call) {
    try {
        call();
    } catch (const winrt::hresult_error& error) {
        char code[16];
        std::snprintf(code, sizeof code, "%08X ", static_cast<unsigned>(error.code()));
        return code + std::string(error.message().begin(), error.message().end());
    }
    return "nothing raised";
}
