#include "Services/CameraHubWeb/Hub/Connecting.h"

#include <algorithm>
#include <exception>

namespace CameraHubWeb {

CameraHub::Options optionsOf(const HubSettings& settings, const CameraHub::Cancellation& cancellation) {
    constexpr std::chrono::milliseconds longestConnecting = std::chrono::seconds(5);
    return {std::min(settings.callTime, longestConnecting), settings.callTime, cancellation};
}

CameraHub::CameraHubClient connectTo(const CameraHub::Address& address, const CameraHub::Options& options) {
    try {
        return CameraHub::CameraHubClient(address, options);
    } catch (const CameraHub::TimedOut& error) {
        throw CameraHub::ConnectionFailed(error.what());
    }
}

TakeFailure currentFailure() {
    try {
        throw;
    } catch (const CameraHub::Cancelled&) {
        return {TakeFailureKind::Ended, "the program ends"};
    } catch (const CameraHub::CaptureRefused& error) {
        const bool isTold = error.code() == CameraHub::CaptureRefused::noImage;
        return {isTold ? TakeFailureKind::CameraFailed : TakeFailureKind::NoSuchCamera, error.what()};
    } catch (const CameraHub::MethodFailed& error) {
        return {TakeFailureKind::CameraFailed, error.what()};
    } catch (const CameraHub::ImageGone& error) {
        return {TakeFailureKind::CameraFailed, error.what()};
    } catch (const CameraHub::TimedOut& error) {
        return {TakeFailureKind::HubTimeout, error.what()};
    } catch (const CameraHub::ProtocolError& error) {
        return {TakeFailureKind::HubUnusable, error.what()};
    } catch (const CameraHub::MessageRejected& error) {
        return {TakeFailureKind::HubUnusable, error.what()};
    } catch (const CameraHub::Error& error) {
        return {TakeFailureKind::HubAway, error.what()};
    } catch (const std::exception& error) {
        return {TakeFailureKind::HubUnusable, error.what()};
    }
}

} // namespace CameraHubWeb
