#pragma once

#include <string>

/// The text that a crash record has of the exception being handled, of the families that the C++ library does not know:
/// the framework's own, and the platform's, with its code in decimal and in hexadecimal. UTF-8; empty for any other.
std::string describeUncaughtException();
