#include "Services/CameraHubWeb/TokenFile.h"

#include "Framework/CXX/Common/RegularFile.h"

#include <algorithm>
#include <stdexcept>

namespace CameraHubWeb {
namespace {

constexpr std::size_t shortest = 16;
constexpr std::size_t longest = 1024;
constexpr std::size_t mostBytes = 65536;

bool isPrintable(char c) { return c > ' ' && c < 0x7F; }

} // namespace

std::string readToken(const std::string& file) {
    const Halden::FileReading reading = Halden::readRegularFile(file, mostBytes);
    if (reading.error != 0)
        throw std::runtime_error("the token file " + file + " cannot be read: " + reading.reason);
    std::string token = reading.bytes.substr(0, reading.bytes.find('\n'));
    if (token.ends_with('\r'))
        token.pop_back();
    if (token.size() < shortest || token.size() > longest || !std::ranges::all_of(token, isPrintable))
        throw std::runtime_error("the first line of the token file " + file +
                                 " is to be 16 to 1024 characters of ASCII without blanks, such as those of: openssl "
                                 "rand -hex 16");
    return token;
}

} // namespace CameraHubWeb
