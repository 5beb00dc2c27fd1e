#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace CameraHubWeb {

/// A SHA-256.
using Digest = std::array<std::uint8_t, 32>;

Digest digestOf(std::string_view text);

/// Compares with a token in a time that does not tell how much of it was right.
class TokenCheck {
public:
    explicit TokenCheck(std::string_view token) : _digest(digestOf(token)) {}

    bool matches(std::string_view offered) const;

private:
    const Digest _digest;
};

/// What an Authorization header offers as a token: that of Bearer, or the password of Basic. None where it has neither.
std::optional<std::string> offeredToken(std::string_view authorization);

} // namespace CameraHubWeb
