// ClientProbe HOST MESSAGE-PORT IMAGE-PORT: a client for tests from outside. Each line of its input is a call, with an
// argument behind a blank where it takes one; one line of its output tells the result, or the class and the text of the
// error.

#include <CameraHubClient/CameraHubClient.h>
#include <cxxabi.h>

#include <iostream>
#include <sstream>
#include <string>
#include <typeinfo>

using namespace CameraHub;

namespace {

std::string textOf(const std::vector<Camera>& cameras) {
    std::ostringstream text;
    for (const Camera& camera : cameras)
        text << camera.uid << "|" << camera.make << "|" << camera.model << "|" << camera.resolution.width << "|"
             << camera.resolution.height << "|" << camera.shortestExposure.count() << "|"
             << camera.longestExposure.count() << ";";
    return text.str();
}

std::string textOf(const Capture& capture) {
    return (capture.exposure ? std::to_string(capture.exposure->count()) : "unset") + " " + capture.imageId;
}

/// Its bytes as hexadecimal digits.
std::string textOf(const std::vector<std::uint8_t>& png) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : png) {
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
    }
    return text;
}

std::string textOf(const Still& still) {
    return textOf(still.capture) + (still.wasTakenTwice ? " twice " : " once ") + textOf(still.png);
}

std::string resultOf(CameraHubClient& client, const std::string& call, const std::string& argument) {
    if (call == "version")
        return client.version();
    if (call == "discover")
        return textOf(client.discover());
    if (call == "capture")
        return textOf(client.capture({argument, std::chrono::milliseconds(20)}));
    if (call == "capture-longest")
        return textOf(client.capture({argument, Percent(100)}));
    if (call == "fetch")
        return textOf(client.fetch(argument));
    if (call == "still")
        return textOf(client.takeStill({argument, std::chrono::milliseconds(20)}));
    if (call == "redirect")
        client.redirectDiagnostics(argument);
    return "done";
}

std::string classOf(const std::exception& error) {
    char* const name = abi::__cxa_demangle(typeid(error).name(), nullptr, nullptr, nullptr);
    const std::string text = name;
    std::free(name);
    return text.substr(text.rfind(':') + 1);
}

std::uint16_t portOf(const char* text) { return static_cast<std::uint16_t>(std::stoi(text)); }

} // namespace

int main(int, char** arguments) {
    CameraHubClient client({arguments[1], portOf(arguments[2]), portOf(arguments[3])});
    for (std::string line; std::getline(std::cin, line);) {
        const std::size_t blank = line.find(' ');
        try {
            std::cout << resultOf(client, line.substr(0, blank),
                                  blank == std::string::npos ? "" : line.substr(blank + 1));
        } catch (const std::exception& error) {
            std::cout << classOf(error) << ": " << error.what();
        }
        std::cout << std::endl;
    }
}
