#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace Platform::Simulated {

/// Multiplies linear light by 2^stops and clips it. 0 leaves every sample as it is, and so does not-a-number; any other
/// value, infinite ones too, is allowed. Any thread.
class SceneExposure {
public:
    explicit SceneExposure(double stops);

    void apply(std::span<std::uint8_t> samples) const;

private:
    using Table = std::array<std::uint8_t, 256>;

    static Table tableOf(double stops);

    std::optional<Table> _table; // none that changes nothing
};

} // namespace Platform::Simulated
