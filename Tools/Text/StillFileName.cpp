#include "Tools/Text/StillFileName.h"

#include "Tools/Text/CameraChoice.h"
#include "Tools/Text/TerminalText.h"
#include "Tools/Text/TimeText.h"

namespace CommandLine {
namespace {

constexpr int longestName = 60; // columns, so that the whole stays far below what file systems allow

bool isPlain(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '.' ||
           static_cast<unsigned char>(c) >= 0x80;
}

/// Without a point at its beginning, which would hide the file.
std::string plainName(const std::string& name) {
    std::string plain;
    for (const char c : name)
        if (isPlain(c) && !(plain.empty() && c == '.'))
            plain += c;
        else if (!plain.empty() && !plain.ends_with('-'))
            plain += '-';
    if (plain.ends_with('-'))
        plain.pop_back();
    return plain.empty() ? "camera" : shortened(printable(plain), longestName);
}

} // namespace

std::string stillFileName(const CameraHub::Camera& camera, std::chrono::system_clock::time_point time) {
    return plainName(cameraName(camera)) + "_" + utcText(time, "%Y-%m-%dT%H-%M-%S");
}

} // namespace CommandLine
