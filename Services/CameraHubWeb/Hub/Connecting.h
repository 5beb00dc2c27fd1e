#pragma once

#include "Services/CameraHubWeb/Hub/HubTypes.h"

namespace CameraHubWeb {

/// How long to wait for a connection and for a reply.
CameraHub::Options optionsOf(const HubSettings& settings, const CameraHub::Cancellation& cancellation);

/// A connection to the hub; one that cannot be made in time is a ConnectionFailed as well.
CameraHub::CameraHubClient connectTo(const CameraHub::Address& address, const CameraHub::Options& options);

/// What the exception that is being handled, of the client library or the standard one, means for a still.
TakeFailure currentFailure();

} // namespace CameraHubWeb
