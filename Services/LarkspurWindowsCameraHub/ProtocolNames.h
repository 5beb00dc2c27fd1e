#pragma once

/// The member names and method names of the protocol on the RPC port, each declared here once.
namespace ProtocolNames {

inline constexpr const char* base64 = "base64"; // reserved, without behaviour, as encoding and image are
inline constexpr const char* cameraCapture = "camera:capture";
inline constexpr const char* cameraDiscover = "camera:discover";
inline constexpr const char* cameraRedirectDiagnostics = "camera:redirectDiagnostics";
inline constexpr const char* cameraVersion = "camera:version";
inline constexpr const char* code = "code";
inline constexpr const char* encoding = "encoding";
inline constexpr const char* error = "error";
inline constexpr const char* exposureChangeDelayInMs = "exposureChangeDelayInMs";
inline constexpr const char* exposureInPercent = "exposureInPercent";
inline constexpr const char* exposureInUs = "exposureInUs";
inline constexpr const char* exposureMaxValueInUs = "exposureMaxValueInUs";
inline constexpr const char* exposureMinValueInUs = "exposureMinValueInUs";
inline constexpr const char* gainInPercent = "gainInPercent";
inline constexpr const char* id = "id";
inline constexpr const char* image = "image";
inline constexpr const char* jsonrpc = "jsonrpc";
inline constexpr const char* make = "make";
inline constexpr const char* message = "message";
inline constexpr const char* method = "method";
inline constexpr const char* model = "model";
inline constexpr const char* params = "params";
inline constexpr const char* path = "path";
inline constexpr const char* resid = "resid";
inline constexpr const char* resolutionX = "resolutionX";
inline constexpr const char* resolutionY = "resolutionY";
inline constexpr const char* result = "result";
inline constexpr const char* to = "to";
inline constexpr const char* uid = "uid";

inline constexpr const char* jsonrpcVersion = "2.0";

} // namespace ProtocolNames
