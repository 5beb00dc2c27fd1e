#include "Services/CameraHubWeb/Stills/StillStore.h"

#include <sys/random.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace CameraHubWeb {

void StillStore::add(std::shared_ptr<const KeptStill> still) {
    std::list<std::shared_ptr<const KeptStill>> dropped; // megabytes that need no lock to be freed
    const std::lock_guard lock(_mutex);
    _bytesHeld += still->png->size();
    _stills.push_front(std::move(still));
    while (_stills.size() > 1 && (_stills.size() > _count || _bytesHeld > _bytes)) {
        _bytesHeld -= _stills.back()->png->size();
        dropped.splice(dropped.begin(), _stills, std::prev(_stills.end()));
    }
}

std::shared_ptr<const KeptStill> StillStore::find(std::string_view id) const {
    const std::lock_guard lock(_mutex);
    const auto found =
        std::find_if(_stills.begin(), _stills.end(), [id](const auto& still) { return still->id == id; });
    return found == _stills.end() ? nullptr : *found;
}

std::vector<std::shared_ptr<const KeptStill>> StillStore::all() const {
    const std::lock_guard lock(_mutex);
    return {_stills.begin(), _stills.end()};
}

std::size_t StillStore::bytes() const {
    const std::lock_guard lock(_mutex);
    return _bytesHeld;
}

std::string newStillId() {
    std::array<std::uint8_t, 16> random{}; // few enough to come whole, or not at all
    ssize_t got = 0;
    do
        got = getrandom(random.data(), random.size(), 0);
    while (got < 0 && errno == EINTR);
    if (got != static_cast<ssize_t>(random.size()))
        throw std::runtime_error("the system gives no random numbers: " + std::generic_category().message(errno));
    constexpr std::string_view digits = "0123456789abcdef";
    std::string id;
    for (const std::uint8_t byte : random) {
        id += digits[byte >> 4U];
        id += digits[byte & 15U];
    }
    return id;
}

} // namespace CameraHubWeb
