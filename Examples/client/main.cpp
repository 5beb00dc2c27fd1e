// Lists the cameras of a Camera Hub, takes a still with the first one, and saves it as a PNG file. Ctrl-C ends it in
// order, also while it waits for the hub.
//
//     still HOST FILE

#include <CameraHubClient/CameraHubClient.h>

#include <csignal>
#include <fstream>
#include <iostream>

namespace {

// Made before there is a handler, which may do nothing but cancel.
const CameraHub::Cancellation interrupted;

void interrupt(int) { interrupted.cancel(); }

void printCameras(const std::vector<CameraHub::Camera>& cameras) {
    for (const CameraHub::Camera& camera : cameras)
        std::cout << camera.uid << ": " << camera.make << " " << camera.model << ", " << camera.resolution.width
                  << " x " << camera.resolution.height << ", " << camera.shortestExposure.count() << " to "
                  << camera.longestExposure.count() << " us\n";
}

void takeStill(CameraHub::CameraHubClient& hub, const std::string& camera, const char* file) {
    CameraHub::CaptureRequest request;
    request.camera = camera;
    request.exposure = std::chrono::milliseconds(20); // or CameraHub::Percent(50)
    request.settle = std::chrono::milliseconds(250);

    const CameraHub::Still still = hub.takeStill(request);
    if (still.capture.exposure)
        std::cout << "exposure: " << still.capture.exposure->count() << " us\n";
    else
        std::cout << "exposure: could not be set\n";
    if (still.wasTakenTwice)
        std::cout << "taken twice, as another program took a still as well\n";

    std::ofstream out(file, std::ios::binary);
    out.write(reinterpret_cast<const char*>(still.png.data()), static_cast<std::streamsize>(still.png.size()));
    if (!out.flush())
        throw std::runtime_error(std::string("cannot write ") + file);
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 3) {
        std::cerr << "Usage: still HOST FILE\n";
        return 2;
    }
    std::signal(SIGINT, interrupt);
    try {
        CameraHub::Options options;
        options.callTimeout = std::chrono::minutes(2);
        options.cancellation = interrupted;
        CameraHub::CameraHubClient hub({arguments[1]}, options);

        const std::vector<CameraHub::Camera> cameras = hub.discover();
        printCameras(cameras);
        if (cameras.empty())
            throw std::runtime_error("no camera; a hub that has just started needs a moment to find its cameras");
        takeStill(hub, cameras.front().uid, arguments[2]);
        return 0;
    } catch (const CameraHub::ConnectionFailed& error) {
        std::cerr << "still: is the hub running? " << error.what() << "\n";
    } catch (const std::exception& error) {
        std::cerr << "still: " << error.what() << "\n";
    }
    return 1;
}
