#pragma once

#include "Platform/Interface/HresultError.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Platform::Simulated {

/// What a fault does to one call.
struct FaultHit {
    std::chrono::milliseconds delay{0};
    std::optional<winrt::hresult_error> error;

    void raise() const {
        if (error)
            throw winrt::hresult_error(*error);
    }
};

/// How one operation goes wrong, as the scenario says.
struct FaultRule {
    std::u16string message;
    winrt::hresult code = winrt::result::fail;
    std::int64_t after = 0;            // calls that pass untouched
    std::optional<std::int64_t> times; // calls that are hit; none: all that follow
    std::chrono::milliseconds delay{0};
    bool fails = true;
};

/// The faults of one place of a scenario with their counters, which begin anew with each scenario that
/// is read. Copies share the counters. Any thread.
class Faults {
public:
    void add(const std::string& operation, FaultRule rule);

    /// Counts a call of the operation; what is to happen to it.
    FaultHit take(std::string_view operation) const;

private:
    struct Counted;

    std::map<std::string, std::shared_ptr<Counted>, std::less<>> _rules; // by operation
};

} // namespace Platform::Simulated
