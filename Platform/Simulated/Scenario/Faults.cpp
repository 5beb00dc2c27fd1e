#include "Platform/Simulated/Scenario/Faults.h"

#include <atomic>
#include <utility>

namespace Platform::Simulated {

struct Faults::Counted {
    FaultRule rule;
    std::atomic<std::int64_t> calls = 0;
};

void Faults::add(const std::string& operation, FaultRule rule) {
    const auto counted = std::make_shared<Counted>();
    counted->rule = std::move(rule);
    _rules[operation] = counted;
}

FaultHit Faults::take(std::string_view operation) const {
    const auto found = _rules.find(operation);
    if (found == _rules.end())
        return {};
    const FaultRule& rule = found->second->rule;
    const std::int64_t hits = found->second->calls.fetch_add(1) - rule.after; // before this call
    if (hits < 0 || (rule.times && hits >= *rule.times))
        return {};
    FaultHit hit{rule.delay, std::nullopt};
    if (rule.fails)
        hit.error.emplace(rule.code, rule.message);
    return hit;
}

} // namespace Platform::Simulated
