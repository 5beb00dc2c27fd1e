// A scenario of simulated cameras: any text is a scenario or raises the platform's error.

#include "Platform/Interface/HresultError.h"
#include "Platform/Simulated/Scenario/ScenarioReader.h"
#include "Tests/Fuzz/FuzzTarget.h"

void fuzz(const std::uint8_t* data, std::size_t size) {
    try {
        Platform::Simulated::readScenario({reinterpret_cast<const char*>(data), size}, "/scenario/file.json");
    } catch (const winrt::hresult_error& error) {
        require(!error.message().empty(), "an error has a text");
    }
}

std::vector<std::string> fuzzSeeds() {
    return {R"({"journal": "calls.jsonl", "groups": [{"id": "g", "displayName": "Desk \u00e9", "watched": {"id": "d",)"
            R"( "name": "D"}, "sources": [{"id": "s", "device": {"id": "d", "name": "D"}, "profiles": [{"width": 64,)"
            R"( "height": 48}]}]}], "cameras": {"d": {"exposure": {"supported": true, "min": -13, "max": 0,)"
            R"( "step": 1.5, "value": -6}, "capture": {"delayMs": 100}}}})",
            R"({"groups": [], "cameras": {}})"};
}
