#include "Services/CameraHubWeb/Http/Sessions.h"

#include <openssl/rand.h>

#include <algorithm>
#include <array>
#include <stdexcept>

namespace CameraHubWeb {
namespace {

std::string randomId() {
    std::array<unsigned char, 32> bytes{};
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1)
        throw std::runtime_error("The system has no random bytes");
    std::string id;
    for (const unsigned char byte : bytes) {
        id += "0123456789abcdef"[byte >> 4U];
        id += "0123456789abcdef"[byte & 15U];
    }
    return id;
}

} // namespace

std::string Sessions::begin(Time now) {
    std::erase_if(_ends, [now](const auto& session) { return session.second <= now; });
    if (_ends.size() >= most)
        _ends.erase(std::min_element(_ends.begin(), _ends.end(),
                                     [](const auto& a, const auto& b) { return a.second < b.second; }));
    std::string id = randomId();
    _ends[digestOf(id)] = now + lifetime;
    return id;
}

bool Sessions::has(std::string_view id, Time now) const {
    const auto found = _ends.find(digestOf(id));
    return found != _ends.end() && now < found->second;
}

void Sessions::end(std::string_view id) { _ends.erase(digestOf(id)); }

void WrongTokens::add(const std::string& address, Time now) {
    if (!_counts.contains(address))
        makeRoom(now);
    Count& count = _counts[address];
    if (count.wrong == 0 || now - count.since >= period)
        count = {0, now};
    ++count.wrong;
}

void WrongTokens::makeRoom(Time now) {
    if (_counts.size() < mostAddresses)
        return;
    std::erase_if(_counts, [now](const auto& entry) { return now - entry.second.since >= period; });
    if (_counts.size() >= mostAddresses)
        _counts.erase(std::min_element(_counts.begin(), _counts.end(),
                                       [](const auto& a, const auto& b) { return a.second.since < b.second.since; }));
}

std::chrono::seconds WrongTokens::waitFor(const std::string& address, Time now) const {
    const auto found = _counts.find(address);
    if (found == _counts.end() || found->second.wrong < most)
        return std::chrono::seconds(0);
    return std::max(std::chrono::ceil<std::chrono::seconds>(found->second.since + period - now),
                    std::chrono::seconds(0));
}

} // namespace CameraHubWeb
