// A USB camera for the kernel's own drivers, on the kernel's USB/IP host controller (module vhci-hcd). It takes
// commands from the standard input and tells on the standard output what happens to it: see Script.h.

#include "Tests/RealDrivers/UsbCamera/Camera.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <exception>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace UsbCamera;

constexpr const char* usage = "Usage: UsbCamera [port=N] [maker=TEXT] [product=TEXT] [serial=TEXT] "
                              "[formats=yuyv,mjpeg] [sizes=640x480,...] [rate=N] [latency=FRAMES] [exposure=MIN-MAX]\n";

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, ',');)
        parts.push_back(part);
    return parts;
}

unsigned numberOf(const std::string& text) { return static_cast<unsigned>(std::stoul(text)); }

struct Arguments {
    CameraModel model;
    unsigned port = 0;

    void take(const std::string& argument) {
        const auto equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        const std::string value = equals == std::string::npos ? "" : argument.substr(equals + 1);
        if (name == "port")
            port = numberOf(value);
        else if (name == "serial")
            model.serial = value;
        else if (name == "maker")
            model.maker = value;
        else if (name == "product")
            model.product = value;
        else if (name == "rate")
            model.rate = numberOf(value);
        else if (name == "latency")
            model.latency = numberOf(value);
        else if (name == "formats")
            takeFormats(value);
        else if (name == "sizes")
            takeSizes(value);
        else if (name == "exposure")
            takeExposure(value);
        else
            throw std::invalid_argument(argument);
    }

private:
    void takeFormats(const std::string& value) {
        model.formats.clear();
        for (const std::string& name : split(value))
            model.formats.push_back(name == "mjpeg" ? Format::Mjpeg : Format::Yuyv);
    }

    void takeSizes(const std::string& value) {
        model.sizes.clear();
        for (const std::string& size : split(value))
            model.sizes.push_back({numberOf(size), numberOf(size.substr(size.find('x') + 1))});
    }

    void takeExposure(const std::string& value) {
        model.exposureMin = numberOf(value);
        model.exposureMax = numberOf(value.substr(value.find('-') + 1));
    }
};

/// The lines of the standard input, without waiting for one.
class Commands {
public:
    /// To be called when there is something to read. The end of the input is the command "end".
    void readInto(Script& script) {
        std::array<char, 512> buffer{};
        const ssize_t count = read(STDIN_FILENO, buffer.data(), buffer.size());
        if (count <= 0)
            return script.command("end");
        _text.append(buffer.data(), static_cast<std::size_t>(count));
        for (auto end = _text.find('\n'); end != std::string::npos; end = _text.find('\n')) {
            script.command(_text.substr(0, end));
            _text.erase(0, end + 1);
        }
    }

private:
    std::string _text;
};

void run(const Arguments& arguments) {
    Script script;
    Commands commands;
    std::unique_ptr<Camera> camera = std::make_unique<Camera>(arguments.model, arguments.port, script);
    while (!script.hasEnded()) {
        const auto wait = camera ? camera->takeFrames() : std::chrono::milliseconds(-1);
        std::array<pollfd, 2> inputs{pollfd{STDIN_FILENO, POLLIN, 0},
                                     pollfd{camera ? camera->socket() : -1, POLLIN, 0}};
        poll(inputs.data(), inputs.size(), static_cast<int>(wait.count()));
        if (inputs[0].revents != 0)
            commands.readInto(script);
        if (inputs[1].revents != 0 && !camera->serve())
            throw std::runtime_error("the kernel has let go of the camera");
        if (script.isUnplugged() && camera) {
            camera.reset();
            script.happened("unplugged");
        }
        if (!script.isUnplugged() && !camera)
            camera = std::make_unique<Camera>(arguments.model, arguments.port, script);
    }
}

} // namespace

int main(int argc, char* argv[]) {
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    try {
        Arguments arguments;
        for (int i = 1; i < argc; ++i)
            arguments.take(argv[i]);
        run(arguments);
    } catch (const std::invalid_argument& error) {
        std::fprintf(stderr, "%s\n%s", error.what(), usage);
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
