#pragma once

#include "Services/CameraHubWeb/Http/TokenCheck.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace CameraHubWeb {

/// Who has logged in, for as long as this program runs. One thread at a time.
class Sessions {
public:
    using Time = std::chrono::steady_clock::time_point;

    static constexpr std::chrono::hours lifetime{24 * 30};
    static constexpr std::size_t most = 1000; ///< One more, and the oldest ends.

    /// Returns its id, 64 hexadecimal digits that cannot be guessed. Throws std::runtime_error where the system has no
    /// random bytes.
    std::string begin(Time now);

    bool has(std::string_view id, Time now) const;

    void end(std::string_view id);

private:
    // By digests: how long a search takes tells nothing of the ids.
    std::map<Digest, Time> _ends;
};

/// How many wrong tokens came from each address. One thread at a time.
class WrongTokens {
public:
    using Time = std::chrono::steady_clock::time_point;

    static constexpr int most = 10;
    static constexpr std::chrono::seconds period{60};
    static constexpr std::size_t mostAddresses = 4096; ///< One more, and the oldest is forgotten.

    void add(const std::string& address, Time now);

    /// Zero, or until when no more are looked at, rounded up.
    std::chrono::seconds waitFor(const std::string& address, Time now) const;

private:
    struct Count {
        int wrong = 0;
        Time since;
    };

    void makeRoom(Time now);

    std::map<std::string, Count> _counts;
};

} // namespace CameraHubWeb
