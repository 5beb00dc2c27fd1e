#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace CameraHubWeb {

/// A still that was taken and its picture. Never changes.
struct KeptStill {
    /// 32 hexadecimal digits that cannot be guessed.
    std::string id;
    std::string uid;
    /// The camera's name for people.
    std::string camera;
    std::chrono::system_clock::time_point takenAt;
    /// In pixels.
    int width = 0;
    int height = 0;
    /// The exposure that was asked for, or the per cent.
    std::variant<std::chrono::microseconds, int> asked;
    /// None where the camera could not tell.
    std::optional<std::chrono::microseconds> exposure;
    bool wasTakenTwice = false;
    /// With ".png" at its end; it sorts by camera and time.
    std::string fileName;
    std::chrono::microseconds queueTime{0};
    std::chrono::microseconds captureTime{0};
    std::chrono::microseconds fetchTime{0};
    std::shared_ptr<const std::vector<std::uint8_t>> png;
};

/// The latest stills, in memory. Any thread.
class StillStore {
public:
    /// Keeps at most so many, and at most so many bytes of them, but always the latest one.
    StillStore(std::size_t count, std::size_t bytes) : _count(count), _bytes(bytes) {}

    void add(std::shared_ptr<const KeptStill> still);

    /// Null where it is not kept any more.
    std::shared_ptr<const KeptStill> find(std::string_view id) const;

    /// The latest first.
    std::vector<std::shared_ptr<const KeptStill>> all() const;

    /// Of all pictures together.
    std::size_t bytes() const;

private:
    const std::size_t _count;
    const std::size_t _bytes;
    mutable std::mutex _mutex;
    std::list<std::shared_ptr<const KeptStill>> _stills; // the latest first
    std::size_t _bytesHeld = 0;
};

/// 128 bits from the system, as 32 hexadecimal digits. Throws std::runtime_error where it has none.
std::string newStillId();

} // namespace CameraHubWeb
